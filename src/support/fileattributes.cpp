#include "support/fileattributes.h"

#include "settings/processingparams.h"

#include <QFile>

#include <cerrno>
#include <sys/stat.h>

namespace quillet {

namespace FileAttributes {

namespace {

// A file system without extended attributes keeps none of them; that is no
// failure, the attributes simply do not exist there.
bool unsupported(int error) {
    return error == ENOTSUP || error == EOPNOTSUPP;
}

bool setAttribute(FileSystem& fileSystem, const QByteArray& path, const char* name, const QByteArray& value) {
    return fileSystem.setAttribute(path, name, value) || unsupported(errno);
}

bool removeAttribute(FileSystem& fileSystem, const QByteArray& path, const char* name) {
    return fileSystem.removeAttribute(path, name) || errno == ENODATA || unsupported(errno);
}

QByteArray codeBytes(std::uint32_t code) {
    const char bytes[4] = {char(code >> 24), char(code >> 16), char(code >> 8), char(code)};
    return QByteArray(bytes, 4);
}

std::uint32_t codeFromBytes(const QByteArray& bytes) {
    if (bytes.size() != 4)
        return 0;
    return (std::uint32_t(quint8(bytes[0])) << 24) | (std::uint32_t(quint8(bytes[1])) << 16) |
           (std::uint32_t(quint8(bytes[2])) << 8) | std::uint32_t(quint8(bytes[3]));
}

} // namespace

QString fourCharString(std::uint32_t code) {
    return QString::fromLatin1(codeBytes(code));
}

std::uint32_t typeCodeForFormat(int format) {
    switch (format) {
    case FileFormat::Jpeg:
        return fourCharCode("JPEG");
    case FileFormat::Png:
        return fourCharCode("PNGf");
    case FileFormat::Tiff:
        return fourCharCode("TIFF");
    case FileFormat::WebP:
        return fourCharCode("WEBP");
    case FileFormat::Avif:
        return fourCharCode("avif");
    case FileFormat::JpegXl:
        return fourCharCode("JXL ");
    default:
        return 0;
    }
}

bool setAttributes(const QString& path, std::uint32_t creator, int format, bool hideExtension,
                   const QDateTime& creationDate, const QDateTime& modificationDate, FileSystem& fileSystem) {
    const bool dates = creationDate.isValid();
    if (creator == 0 && !hideExtension && !dates)
        return true;
    const QByteArray file = QFile::encodeName(path);
    struct stat info;
    if (::stat(file.constData(), &info) != 0)
        return false;

    bool ok = true;
    if (creator != 0) {
        ok = setAttribute(fileSystem, file, CreatorAttribute, codeBytes(creator)) && ok;
        const std::uint32_t type = typeCodeForFormat(format);
        ok = (type != 0 ? setAttribute(fileSystem, file, TypeAttribute, codeBytes(type))
                        : removeAttribute(fileSystem, file, TypeAttribute)) &&
             ok;
    }
    if (hideExtension)
        ok = setAttribute(fileSystem, file, HiddenExtensionAttribute, "1") && ok;
    // A modification date only ever comes with a creation date.
    if (dates) {
        const QDateTime withOffset = creationDate.toOffsetFromUtc(creationDate.offsetFromUtc());
        ok = setAttribute(fileSystem, file, CreationDateAttribute,
                          withOffset.toString(Qt::ISODate).toLatin1()) &&
             ok;
        if (modificationDate.isValid()) {
            const qint64 ms = modificationDate.toMSecsSinceEpoch();
            const qint64 seconds = ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
            const struct timespec times[2] = {{0, UTIME_OMIT},
                                              {time_t(seconds), long((ms - seconds * 1000) * 1000000)}};
            ok = fileSystem.setTimes(file, times) && ok;
        }
    }
    return ok;
}

std::uint32_t typeCode(const QString& path, FileSystem& fileSystem) {
    return codeFromBytes(fileSystem.attribute(QFile::encodeName(path), TypeAttribute));
}

std::uint32_t creatorCode(const QString& path, FileSystem& fileSystem) {
    return codeFromBytes(fileSystem.attribute(QFile::encodeName(path), CreatorAttribute));
}

bool extensionHidden(const QString& path, FileSystem& fileSystem) {
    return fileSystem.attribute(QFile::encodeName(path), HiddenExtensionAttribute) == "1";
}

QDateTime creationDate(const QString& path, FileSystem& fileSystem) {
    const QByteArray text = fileSystem.attribute(QFile::encodeName(path), CreationDateAttribute);
    return text.isEmpty() ? QDateTime() : QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
}

} // namespace FileAttributes

} // namespace quillet
