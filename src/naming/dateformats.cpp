#include "naming/dateformats.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

// The resource lives in a static library, so its registration must be pulled
// in by name or the linker drops it. Q_INIT_RESOURCE only works outside a
// namespace.
static void initDateFormatsResource() {
    Q_INIT_RESOURCE(dateformats);
}

namespace quillet {

namespace {

QStringList load() {
    initDateFormatsResource();
    QStringList formats;
    QFile file(QStringLiteral(":/naming/DateFormats.json"));
    if (file.open(QIODevice::ReadOnly)) {
        const QJsonArray array = QJsonDocument::fromJson(file.readAll()).array();
        for (const QJsonValue& value : array)
            if (value.isString() && !value.toString().isEmpty())
                formats.append(value.toString());
    }
    if (formats.isEmpty())
        formats.append(QStringLiteral("%Y:%m:%d %H:%M:%S"));
    return formats;
}

} // namespace

QStringList DateFormats::list() {
    static const QStringList formats = load();
    return formats;
}

} // namespace quillet
