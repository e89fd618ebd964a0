#include "support/fileattributes.h"

#include "settings/processingparams.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace quillet {

namespace FileAttributes {

SystemCalls& systemCalls() {
    static SystemCalls calls{
        [](const char* path, const char* name, const void* value, std::size_t size) {
            return ::setxattr(path, name, value, size, 0);
        },
        [](const char* path, const char* name, void* value, std::size_t size) {
            return ::getxattr(path, name, value, size);
        },
        [](const char* path, const char* name) { return ::removexattr(path, name); },
        [](const char* path, const struct timespec times[2]) {
            return ::utimensat(AT_FDCWD, path, times, 0);
        },
    };
    return calls;
}

namespace {

// A file system without extended attributes keeps none of them; that is no
// failure, the attributes simply do not exist there.
bool unsupported(int error) {
    return error == ENOTSUP || error == EOPNOTSUPP;
}

bool setAttribute(const QByteArray& path, const char* name, const QByteArray& value) {
    if (systemCalls().setxattr(path.constData(), name, value.constData(), std::size_t(value.size())) == 0)
        return true;
    return unsupported(errno);
}

bool removeAttribute(const QByteArray& path, const char* name) {
    if (systemCalls().removexattr(path.constData(), name) == 0)
        return true;
    return errno == ENODATA || unsupported(errno);
}

QByteArray attribute(const QString& path, const char* name) {
    const QByteArray file = QFile::encodeName(path);
    char buffer[256];
    const ssize_t length = systemCalls().getxattr(file.constData(), name, buffer, sizeof buffer);
    return length > 0 ? QByteArray(buffer, qsizetype(length)) : QByteArray();
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
    default:
        return 0;
    }
}

bool setAttributes(const QString& path, std::uint32_t creator, int format, bool hideExtension,
                   const QDateTime& creationDate, const QDateTime& modificationDate) {
    const bool dates = creationDate.isValid();
    if (creator == 0 && !hideExtension && !dates)
        return true;
    const QByteArray file = QFile::encodeName(path);
    struct stat info;
    if (::stat(file.constData(), &info) != 0)
        return false;

    bool ok = true;
    if (creator != 0) {
        ok = setAttribute(file, CreatorAttribute, codeBytes(creator)) && ok;
        const std::uint32_t type = typeCodeForFormat(format);
        ok = (type != 0 ? setAttribute(file, TypeAttribute, codeBytes(type))
                        : removeAttribute(file, TypeAttribute)) &&
             ok;
    }
    if (hideExtension)
        ok = setAttribute(file, HiddenExtensionAttribute, "1") && ok;
    // A modification date only ever comes with a creation date.
    if (dates) {
        const QDateTime withOffset = creationDate.toOffsetFromUtc(creationDate.offsetFromUtc());
        ok = setAttribute(file, CreationDateAttribute, withOffset.toString(Qt::ISODate).toLatin1()) && ok;
        if (modificationDate.isValid()) {
            const qint64 ms = modificationDate.toMSecsSinceEpoch();
            const qint64 seconds = ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
            const struct timespec times[2] = {{0, UTIME_OMIT},
                                              {time_t(seconds), long((ms - seconds * 1000) * 1000000)}};
            ok = systemCalls().utimensat(file.constData(), times) == 0 && ok;
        }
    }
    return ok;
}

std::uint32_t typeCode(const QString& path) {
    return codeFromBytes(attribute(path, TypeAttribute));
}

std::uint32_t creatorCode(const QString& path) {
    return codeFromBytes(attribute(path, CreatorAttribute));
}

bool extensionHidden(const QString& path) {
    return attribute(path, HiddenExtensionAttribute) == "1";
}

QDateTime creationDate(const QString& path) {
    const QByteArray text = attribute(path, CreationDateAttribute);
    return text.isEmpty() ? QDateTime() : QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
}

} // namespace FileAttributes

} // namespace quillet
