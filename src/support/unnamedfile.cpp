#include "support/unnamedfile.h"

#include <cerrno>
#include <cstdio>
#include <random>

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

std::string folderOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

} // namespace

UnnamedFile::UnnamedFile(const std::string& folder) {
    m_fd = ::open(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
}

UnnamedFile::~UnnamedFile() {
    if (m_fd >= 0)
        ::close(m_fd);
}

bool UnnamedFile::writeAll(const char* data, size_t size) {
    size_t written = 0;
    while (written < size) {
        const ssize_t n = ::write(m_fd, data + written, size - written);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        written += size_t(n);
    }
    return true;
}

std::string UnnamedFile::nameBeside(const std::string& target) {
    if (m_fd < 0 || ::fchmod(m_fd, defaultCreateMode()) != 0)
        return {};
    const std::string folder = folderOf(target);
    const std::string base = target.substr(target.find_last_of('/') + 1);
    const std::string self = "/proc/self/fd/" + std::to_string(m_fd);
    std::random_device seed;
    std::mt19937 random(seed());
    for (int attempt = 0; attempt < 16; ++attempt) {
        char suffix[16];
        std::snprintf(suffix, sizeof suffix, "%08x", unsigned(random()));
        const std::string name = folder + "/." + base + ".new-" + suffix;
        if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0)
            return name;
        if (errno != EEXIST)
            return {};
    }
    return {};
}

} // namespace quillet
