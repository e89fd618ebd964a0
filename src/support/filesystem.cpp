#include "support/filesystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace quillet {

namespace {

QByteArray native(const QString& path) {
    return QFile::encodeName(path);
}

// Removes a file left by a failed step without losing the step's errno.
void discard(FileSystem& fileSystem, const QByteArray& path) {
    const int error = errno;
    fileSystem.remove(path);
    errno = error;
}

} // namespace

File FileSystem::open(const QByteArray& path, const char* mode) {
    return File(std::fopen(path.constData(), mode), path);
}

NewFile FileSystem::create(const QByteArray& target) {
    return NewFile::beside(target);
}

bool FileSystem::write(File& file, const void* data, std::size_t size) {
    if (!file) {
        errno = EBADF;
        return false;
    }
    return std::fwrite(data, 1, size, file.get()) == size;
}

bool FileSystem::rename(const QByteArray& from, const QByteArray& to) {
    return ::rename(from.constData(), to.constData()) == 0;
}

bool FileSystem::remove(const QByteArray& path) {
    return ::unlink(path.constData()) == 0;
}

bool FileSystem::link(const QByteArray& existing, const QByteArray& newPath) {
    return ::link(existing.constData(), newPath.constData()) == 0;
}

bool FileSystem::makeFolder(const QByteArray& path) {
    return ::mkdir(path.constData(), 0777) == 0;
}

bool FileSystem::removeFolder(const QByteArray& path) {
    return ::rmdir(path.constData()) == 0;
}

bool FileSystem::setAttribute(const QByteArray& path, const char* name, const QByteArray& value) {
    return ::setxattr(path.constData(), name, value.constData(), std::size_t(value.size()), 0) == 0;
}

QByteArray FileSystem::attribute(const QByteArray& path, const char* name) {
    char buffer[256];
    const ssize_t length = ::getxattr(path.constData(), name, buffer, sizeof buffer);
    return length > 0 ? QByteArray(buffer, qsizetype(length)) : QByteArray();
}

bool FileSystem::removeAttribute(const QByteArray& path, const char* name) {
    return ::removexattr(path.constData(), name) == 0;
}

bool FileSystem::setTimes(const QByteArray& path, const struct timespec times[2]) {
    return ::utimensat(AT_FDCWD, path.constData(), times, 0) == 0;
}

bool FileSystem::makePath(const QString& dir) {
    const QString absolute = QDir::cleanPath(QFileInfo(dir).absoluteFilePath());
    const QFileInfo info(absolute);
    if (info.isDir())
        return true;
    if (info.exists() || info.isSymLink())
        return false;
    const QString parent = info.path();
    if (parent != absolute && !makePath(parent))
        return false;
    // Another process may make the same folder at the same moment.
    return (makeFolder(native(absolute)) || errno == EEXIST) && QFileInfo(absolute).isDir();
}

bool FileSystem::ensureFolder(const QString& path) {
    const QFileInfo info(path);
    if (info.exists() || info.isSymLink())
        return info.isDir();
    return makeFolder(native(path));
}

QByteArray FileSystem::writeBeside(const QByteArray& target, const std::function<bool(File&)>& fill) {
    NewFile file = create(target);
    if (!file.isOpen() || !fill(file.stream()))
        return {};
    return file.publish();
}

bool FileSystem::writeAtomically(const QString& path, const QByteArray& bytes) {
    if (bytes.isEmpty())
        return false;
    // No fsync: a batch writes thousands of files, and a crash leaves at
    // worst an old output or none.
    const QByteArray target = native(path);
    const QByteArray written = writeBeside(
        target, [&](File& file) { return write(file, bytes.constData(), std::size_t(bytes.size())); });
    if (written.isEmpty())
        return false;
    if (rename(written, target))
        return true;
    discard(*this, written);
    return false;
}

bool FileSystem::copyFile(const QString& source, const QString& destination) {
    const QByteArray from = native(source);
    const QByteArray to = native(destination);
    struct stat info {};
    if (::stat(from.constData(), &info) != 0 || !S_ISREG(info.st_mode) || exists(destination))
        return false;
    File in = open(from, "rb");
    if (!in)
        return false;
    File out = open(to, "wbx"); // never onto a file that appeared meanwhile
    if (!out)
        return false;
    bool ok = ::fchmod(::fileno(out.get()), info.st_mode & 0777) == 0;
    char buffer[64 * 1024];
    while (ok) {
        const std::size_t n = std::fread(buffer, 1, sizeof buffer, in.get());
        if (n == 0) {
            ok = !std::ferror(in.get());
            break;
        }
        ok = write(out, buffer, n);
    }
    ok = out.close() && ok;
    if (!ok)
        discard(*this, to);
    return ok;
}

bool FileSystem::linkOrCopy(const QString& existing, const QString& newPath) {
    return link(native(existing), native(newPath)) || (!exists(newPath) && copyFile(existing, newPath));
}

bool FileSystem::sameFile(const QString& a, const QString& b) {
    struct stat sa {};
    struct stat sb {};
    if (::stat(native(a).constData(), &sa) != 0 || ::stat(native(b).constData(), &sb) != 0)
        return false;
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

bool FileSystem::exists(const QString& path) {
    struct stat s {};
    return ::lstat(native(path).constData(), &s) == 0;
}

FileSystem& FileSystem::standard() {
    static FileSystem fileSystem;
    return fileSystem;
}

} // namespace quillet
