#include "engine/pipeline/outputnaming.h"

#include "engine/pipeline/pictureloader.h"
#include "settings/processingparams.h"

#include <QFileInfo>

namespace quillet {

namespace OutputNaming {

QString baseName(const QString& inputPath) {
    const QString name = QFileInfo(inputPath).fileName();
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    // A leading dot starts a hidden name, not an extension.
    if (dot <= 0)
        return name;
    return PictureLoader::isReadableExtension(name.mid(dot + 1)) ? name.left(dot) : name;
}

QString outputPathForName(const QString& name, const QString& dir, int format) {
    QString fileName = name;
    fileName.replace(QLatin1Char('/'), QLatin1Char(':'));
    QString path = dir;
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    path += fileName;
    const QString extension = FileFormat::extension(format);
    if (!extension.isEmpty())
        path += QLatin1Char('.') + extension;
    return path;
}

bool isUnderTmp(const QString& path) {
    const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return path.startsWith(QLatin1Char('/')) && !parts.isEmpty() && parts.first() == QLatin1String("tmp");
}

bool wouldOverwriteSource(const QString& output, const QString& source) {
    return output.compare(source, Qt::CaseInsensitive) == 0;
}

} // namespace OutputNaming

} // namespace quillet
