#include "support/settingsstore.h"

#include <QMutex>

namespace quillet {

namespace {

QMutex overrideMutex;
QString overriddenPath;

} // namespace

void SettingsStore::overridePath(const QString& iniPath) {
    QMutexLocker lock(&overrideMutex);
    overriddenPath = iniPath;
}

std::unique_ptr<QSettings> SettingsStore::open() {
    QString path;
    {
        QMutexLocker lock(&overrideMutex);
        path = overriddenPath;
    }
    if (path.isEmpty())
        path = qEnvironmentVariable(EnvironmentVariable);
    if (!path.isEmpty())
        return std::make_unique<QSettings>(path, QSettings::IniFormat);
    return std::make_unique<QSettings>(QStringLiteral("Korvane"), QStringLiteral("Quillet"));
}

void SettingsStore::setValue(QSettings& store, const QString& key, const QVariant& value) {
    const int type = value.typeId();
    const bool emptyList = (type == QMetaType::QVariantList && value.toList().isEmpty()) ||
                           (type == QMetaType::QStringList && value.toStringList().isEmpty());
    store.setValue(key, emptyList ? QVariant(QString()) : value);
}

} // namespace quillet
