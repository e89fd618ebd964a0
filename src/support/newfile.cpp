#include "support/newfile.h"

#include <cerrno>
#include <random>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quillet {

mode_t defaultCreateMode() {
    static const mode_t mode = [] {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        return mode_t(0666 & ~mask);
    }();
    return mode;
}

namespace {

QByteArray folderOf(const QByteArray& path) {
    const qsizetype slash = path.lastIndexOf('/');
    if (slash < 0)
        return ".";
    return slash == 0 ? QByteArray("/") : path.left(slash);
}

QByteArray hiddenBeside(const QByteArray& target, const char* suffix) {
    return folderOf(target) + "/." + target.mid(target.lastIndexOf('/') + 1) + suffix;
}

} // namespace

NewFile NewFile::beside(const QByteArray& target) {
    NewFile file;
    int fd = ::open(folderOf(target).constData(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
    if (fd < 0) {
        QByteArray name = hiddenBeside(target, ".XXXXXX");
        fd = ::mkostemp(name.data(), O_CLOEXEC);
        if (fd < 0)
            return file;
        file.m_temporaryName = std::move(name);
    }
    FILE* stream = ::fdopen(fd, "wb");
    if (!stream) {
        const int error = errno;
        ::close(fd);
        errno = error;
        return file; // the destructor removes a temporary name
    }
    file.m_file = File(stream, target);
    return file;
}

NewFile::NewFile(NewFile&& other) noexcept
    : m_file(std::move(other.m_file)), m_temporaryName(std::exchange(other.m_temporaryName, {})) {}

NewFile::~NewFile() {
    m_file.close();
    if (!m_temporaryName.isEmpty())
        ::unlink(m_temporaryName.constData());
}

QByteArray NewFile::publish() {
    FILE* stream = m_file.get();
    if (!stream || std::fflush(stream) != 0 || ::fchmod(::fileno(stream), defaultCreateMode()) != 0)
        return {};
    if (!m_temporaryName.isEmpty())
        return m_file.close() ? std::exchange(m_temporaryName, {}) : QByteArray();

    const std::string self = "/proc/self/fd/" + std::to_string(::fileno(stream));
    std::random_device seed;
    std::mt19937 random(seed());
    for (int attempt = 0; attempt < 16; ++attempt) {
        const QByteArray name = hiddenBeside(m_file.path(), ".new-") +
                                QByteArray::number(quint32(random()), 16).rightJustified(8, '0');
        if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.constData(), AT_SYMLINK_FOLLOW) == 0) {
            if (m_file.close())
                return name;
            ::unlink(name.constData());
            return {};
        }
        if (errno != EEXIST)
            return {};
    }
    return {};
}

} // namespace quillet
