#include "metadata/imagekind.h"

#include <QHash>

namespace quillet {

namespace {

QString lastComponent(const QString& path) {
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    return trimmed.mid(trimmed.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace

QString fileExtension(const QString& path) {
    const QString name = lastComponent(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.mid(dot + 1) : QString();
}

QString fileBaseName(const QString& path) {
    const QString name = lastComponent(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.left(dot) : name;
}

QString kindFromPath(const QString& path) {
    // A function-local static is built once and thread-safely, so records made
    // on two threads at once share the table without a lock.
    static const QHash<QString, QString> kinds = {
        {QStringLiteral("jpg"), QStringLiteral("JPEG")},
        {QStringLiteral("jpeg"), QStringLiteral("JPEG")},
        {QStringLiteral("psd"), QStringLiteral("Photoshop")},
        {QStringLiteral("tiff"), QStringLiteral("TIFF")},
        {QStringLiteral("tif"), QStringLiteral("TIFF")},
        {QStringLiteral("gif"), QStringLiteral("GIF")},
        {QStringLiteral("png"), QStringLiteral("PNG")},
    };
    const QString extension = fileExtension(path).toLower();
    const auto found = kinds.constFind(extension);
    return found != kinds.constEnd() ? *found : extension.toUpper();
}

} // namespace quillet
