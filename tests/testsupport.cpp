#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

namespace quillet {

namespace testsupport {

QString samplesDir() {
    const QString dir = QStringLiteral(QUILLET_SAMPLES_DIR);
    return QFileInfo(dir).isDir() ? QDir(dir).canonicalPath() : QString();
}

QString samplePath(const QString& name) {
    const QString dir = samplesDir();
    if (dir.isEmpty())
        return {};
    const QString path = dir + QLatin1Char('/') + name;
    return QFileInfo::exists(path) ? path : QString();
}

std::unique_ptr<QTemporaryDir> scratchDir(const QString& prefix) {
    const QString candidates[] = {QDir::currentPath(), QStringLiteral("/var/tmp"), QDir::homePath()};
    for (const QString& base : candidates) {
        const QString canonical = QDir(base).canonicalPath();
        if (canonical.isEmpty() || canonical == QLatin1String("/tmp") ||
            canonical.startsWith(QLatin1String("/tmp/")))
            continue;
        auto dir = std::make_unique<QTemporaryDir>(canonical + QLatin1Char('/') + prefix +
                                                   QStringLiteral("-XXXXXX"));
        if (dir->isValid())
            return dir;
    }
    ADD_FAILURE() << "no writable scratch folder outside /tmp";
    return std::make_unique<QTemporaryDir>();
}

QString projectSamplesDir() {
    return QStringLiteral(QUILLET_PROJECT_SAMPLES_DIR);
}

QString cliPath() {
    return QStringLiteral(QUILLET_CLI_PATH);
}

QByteArray readFile(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(bytes) == bytes.size();
}

QMap<QString, QByteArray> fileTree(const QString& root) {
    QMap<QString, QByteArray> files;
    for (QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        const QString path = it.next();
        files.insert(QDir(root).relativeFilePath(path), readFile(path));
    }
    return files;
}

vips::VImage solidImage(int width, int height, int r, int g, int b, int a) {
    return vips::VImage::black(width, height, vips::VImage::option()->set("bands", 4))
        .new_from_image({double(r), double(g), double(b), double(a)})
        .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
        .cast(VIPS_FORMAT_UCHAR);
}

Picture solidPicture(int width, int height, int r, int g, int b, int a) {
    return Picture{solidImage(width, height, r, g, b, a), double(width), double(height)};
}

std::vector<double> pixelAt(const vips::VImage& image, int x, int y) {
    return image.getpoint(x, y);
}

} // namespace testsupport

} // namespace quillet
