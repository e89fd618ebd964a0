#include "engine/batch/batchfilesystem.h"

#include "support/unnamedfile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillet {

bool BatchFileSystem::makePath(const QString& dir) {
    return QDir().mkpath(dir) && QFileInfo(dir).isDir();
}

namespace {

// Closes a descriptor and removes the temporary file unless released.
class PendingFile {
  public:
    PendingFile(int fd, QByteArray path) : m_fd(fd), m_path(std::move(path)) {}
    ~PendingFile() {
        if (m_fd >= 0)
            ::close(m_fd);
        if (!m_path.isEmpty())
            ::unlink(m_path.constData());
    }
    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    int fd() const { return m_fd; }
    bool close() {
        const int fd = std::exchange(m_fd, -1);
        return ::close(fd) == 0;
    }
    void release() { m_path.clear(); }

  private:
    int m_fd;
    QByteArray m_path;
};

} // namespace

bool BatchFileSystem::writeAtomically(const QString& path, const QByteArray& bytes) {
    if (bytes.isEmpty())
        return false;
    // A temporary file beside the target, then a rename: the path holds the
    // old file or the whole new one, never a part. No fsync: a batch writes
    // thousands of files and a crash leaves at worst an old output.
    // The temporary has no name until it is complete, so a killed batch
    // leaves no part of a file behind either.
    const QByteArray target8 = QFile::encodeName(path);
    UnnamedFile unnamed(QFile::encodeName(QFileInfo(path).path()).toStdString());
    if (unnamed.isOpen()) {
        if (!unnamed.writeAll(bytes.constData(), size_t(bytes.size())))
            return false;
        const std::string named = unnamed.nameBeside(target8.toStdString());
        if (named.empty())
            return false;
        if (::rename(named.c_str(), target8.constData()) != 0) {
            ::unlink(named.c_str());
            return false;
        }
        return true;
    }
    const QFileInfo target(path);
    QByteArray temporary = QFile::encodeName(target.path() + QStringLiteral("/.") + target.fileName() +
                                             QStringLiteral(".XXXXXX"));
    const int fd = ::mkstemp(temporary.data());
    if (fd < 0)
        return false;
    PendingFile file(fd, temporary);
    ::fchmod(fd, defaultCreateMode());
    qsizetype written = 0;
    while (written < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + written, size_t(bytes.size() - written));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        written += n;
    }
    if (!file.close() || ::rename(temporary.constData(), QFile::encodeName(path).constData()) != 0)
        return false;
    file.release();
    return true;
}

bool BatchFileSystem::copyFile(const QString& source, const QString& destination) {
    if (!QFileInfo(source).isFile() || QFileInfo::exists(destination))
        return false;
    return QFile::copy(source, destination);
}

BatchFileSystem& BatchFileSystem::standard() {
    static BatchFileSystem fileSystem;
    return fileSystem;
}

} // namespace quillet
