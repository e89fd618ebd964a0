#pragma once

#include <string>

#include <sys/types.h>

namespace quillet {

// The permissions a plain create gives a new file under the process's umask.
mode_t defaultCreateMode();

// A file made in a folder without a name (O_TMPFILE): if the process dies
// before the file is given a name, the kernel deletes it, so a killed run
// never leaves a half-written file behind. Not every file system offers it;
// isOpen() then answers false and the caller falls back to a named file.
class UnnamedFile {
  public:
    explicit UnnamedFile(const std::string& folder);
    ~UnnamedFile();
    UnnamedFile(const UnnamedFile&) = delete;
    UnnamedFile& operator=(const UnnamedFile&) = delete;

    bool isOpen() const { return m_fd >= 0; }
    int fd() const { return m_fd; }
    // Writes all of `size` bytes; false on any error.
    bool writeAll(const char* data, size_t size);
    // Gives the finished file a fresh hidden name beside `target`
    // (".<name>.new-<random>"), with the permissions a plain create would
    // give, and returns it; empty on failure.
    std::string nameBeside(const std::string& target);

  private:
    int m_fd = -1;
};

} // namespace quillet
