#include "support/customicon.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QUrl>

#include <vips/vips8>

#include <array>
#include <utility>
#include <vector>

namespace quillet {

using vips::VImage;

namespace CustomIcon {

namespace {

// The thumbnail standard names a thumbnail by the MD5 of the file's URI.
QByteArray fileUri(const QString& path) {
    return QUrl::fromLocalFile(QFileInfo(path).absoluteFilePath()).toEncoded();
}

QString cacheRoot() {
    const QString xdg = qEnvironmentVariable("XDG_CACHE_HOME");
    const QString base = !xdg.isEmpty() && QDir::isAbsolutePath(xdg) ? xdg : QDir::homePath() + "/.cache";
    return base + "/thumbnails";
}

quint32 crc32(const QByteArray& bytes) {
    static const std::array<quint32, 256> table = [] {
        std::array<quint32, 256> t{};
        for (quint32 n = 0; n < 256; ++n) {
            quint32 c = n;
            for (int k = 0; k < 8; ++k)
                c = (c & 1) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    quint32 c = 0xFFFFFFFFu;
    for (const char byte : bytes)
        c = table[(c ^ quint8(byte)) & 0xFF] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

void appendBigEndian(QByteArray& out, quint32 value) {
    out.append(char(value >> 24)).append(char(value >> 16)).append(char(value >> 8)).append(char(value));
}

// libvips cannot write tEXt chunks, so they go in by hand right after IHDR
// (signature 8 bytes, IHDR 25), where readers look for them first.
QByteArray withTextChunks(QByteArray png, const std::vector<std::pair<QByteArray, QByteArray>>& texts) {
    constexpr int AfterHeader = 8 + 25;
    if (png.size() < AfterHeader || png.mid(12, 4) != "IHDR")
        return {};
    QByteArray chunks;
    for (const auto& [key, value] : texts) {
        const QByteArray body = "tEXt" + key + '\0' + value;
        appendBigEndian(chunks, quint32(body.size() - 4));
        chunks.append(body);
        appendBigEndian(chunks, crc32(body));
    }
    png.insert(AfterHeader, chunks);
    return png;
}

// 8-bit RGBA, which every thumbnail reader takes.
VImage rgba8(VImage image) {
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB || image.format() != VIPS_FORMAT_UCHAR)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    return image.bands() == 3 ? image.bandjoin_const({255}) : image;
}

bool writeAtomically(const QString& target, const QByteArray& bytes) {
    const QString folder = QFileInfo(target).path();
    if (!QFileInfo::exists(folder)) {
        if (!QDir().mkpath(folder))
            return false;
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QSaveFile file(target);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit())
        return false;
    return QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner);
}

} // namespace

QString thumbnailPath(const QString& path, int size) {
    const QByteArray md5 = QCryptographicHash::hash(fileUri(path), QCryptographicHash::Md5).toHex();
    return cacheRoot() + (size > 128 ? "/large/" : "/normal/") + QString::fromLatin1(md5) + ".png";
}

bool setForFile(const QString& path) {
    const QFileInfo info(path);
    if (!info.isFile())
        return false;
    const std::vector<std::pair<QByteArray, QByteArray>> texts{
        {"Thumb::URI", fileUri(path)},
        {"Thumb::MTime", QByteArray::number(info.lastModified().toSecsSinceEpoch())},
        {"Thumb::Size", QByteArray::number(info.size())},
    };
    try {
        // Each size straight from the file: shrink-on-load keeps that cheap,
        // and both keep the picture's proportions as closely as they can.
        for (const int size : {256, 128}) {
            const VImage image =
                rgba8(VImage::thumbnail(QFile::encodeName(path).constData(), size,
                                        VImage::option()->set("height", size)->set("size", VIPS_SIZE_DOWN)));
            void* data = nullptr;
            size_t length = 0;
            image.write_to_buffer(".png", &data, &length, VImage::option()->set("strip", true));
            const QByteArray png(static_cast<const char*>(data), qsizetype(length));
            g_free(data);
            const QByteArray tagged = withTextChunks(png, texts);
            if (tagged.isEmpty() || !writeAtomically(thumbnailPath(path, size), tagged))
                return false;
        }
        return true;
    } catch (const vips::VError&) {
        return false;
    }
}

bool removeFromFile(const QString& path) {
    bool ok = true;
    for (int size : {128, 256}) {
        const QString thumbnail = thumbnailPath(path, size);
        if (QFileInfo::exists(thumbnail) && !QFile::remove(thumbnail))
            ok = false;
    }
    return ok;
}

} // namespace CustomIcon

} // namespace quillet
