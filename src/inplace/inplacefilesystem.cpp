#include "inplace/inplacefilesystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <sys/stat.h>
#include <unistd.h>

namespace quillet {

bool InplaceFileSystem::rename(const QString& from, const QString& to) {
    // QFile::rename refuses an existing target; the POSIX call replaces it atomically.
    return std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

bool InplaceFileSystem::remove(const QString& path) {
    return ::unlink(QFile::encodeName(path).constData()) == 0;
}

bool InplaceFileSystem::link(const QString& existing, const QString& newPath) {
    if (::link(QFile::encodeName(existing).constData(), QFile::encodeName(newPath).constData()) == 0)
        return true;
    if (exists(newPath))
        return false;
    if (QFile::copy(existing, newPath))
        return true;
    QFile::remove(newPath);
    return false;
}

bool InplaceFileSystem::makeFolder(const QString& path) {
    const QFileInfo info(path);
    if (info.exists() || info.isSymLink())
        return info.isDir();
    return QDir().mkdir(path);
}

bool InplaceFileSystem::sameFile(const QString& a, const QString& b) {
    struct stat sa {};
    struct stat sb {};
    if (::stat(QFile::encodeName(a).constData(), &sa) != 0 ||
        ::stat(QFile::encodeName(b).constData(), &sb) != 0)
        return false;
    return sa.st_dev == sb.st_dev && sa.st_ino == sb.st_ino;
}

bool InplaceFileSystem::exists(const QString& path) {
    struct stat s {};
    return ::lstat(QFile::encodeName(path).constData(), &s) == 0;
}

InplaceFileSystem& InplaceFileSystem::standard() {
    static InplaceFileSystem fileSystem;
    return fileSystem;
}

} // namespace quillet
