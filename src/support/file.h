#pragma once

#include <QByteArray>

#include <cstdio>

namespace quillet {

// An open stream that closes itself, with the path it was opened for. Move
// only: exactly one owner closes it.
class File {
  public:
    File() = default;
    File(FILE* stream, QByteArray path) : m_stream(stream), m_path(std::move(path)) {}
    ~File() { close(); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    File(File&& other) noexcept;
    File& operator=(File&& other) noexcept;

    FILE* get() const { return m_stream; }
    explicit operator bool() const { return m_stream != nullptr; }
    // The path given when it was opened; for a new file, the path it is to replace.
    const QByteArray& path() const { return m_path; }
    // Closes now; false when buffered data could not be written out.
    bool close();

  private:
    FILE* m_stream = nullptr;
    QByteArray m_path;
};

} // namespace quillet
