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

vips::VImage busyPicture(int width, int height, int bands) {
    using vips::VImage;
    const VImage noise =
        VImage::gaussnoise(width, height, VImage::option()->set("sigma", 70.0)->set("seed", 7));
    VImage image = noise;
    for (int b = 1; b < bands; ++b)
        image = image.bandjoin(b % 2 ? noise.flip(VIPS_DIRECTION_HORIZONTAL)
                                     : noise.flip(VIPS_DIRECTION_VERTICAL));
    return image.cast(VIPS_FORMAT_UCHAR).copy_memory();
}

std::vector<uint8_t> bytesOf(const vips::VImage& image) {
    const vips::VImage memory = image.copy_memory();
    const auto* data = static_cast<const uint8_t*>(memory.data());
    return {data, data + VIPS_IMAGE_SIZEOF_IMAGE(memory.get_image())};
}

Picture solidPicture(int width, int height, int r, int g, int b, int a) {
    return Picture{solidImage(width, height, r, g, b, a), double(width), double(height)};
}

std::vector<double> pixelAt(const vips::VImage& image, int x, int y) {
    return image.getpoint(x, y);
}

} // namespace testsupport

} // namespace quillet
