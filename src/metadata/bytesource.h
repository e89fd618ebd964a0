#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace quillet {

// Where ReadJpegSections takes its bytes from: an open file or a buffer in
// memory (the fuzzer and the tests read from memory).
class ByteSource {
  public:
    virtual ~ByteSource() = default;
    // The next byte, or -1 at the end.
    virtual int get() = 0;
    // Reads up to n bytes; returns how many were read.
    virtual size_t read(uint8_t* into, size_t n) = 0;
    // Bytes left from the current position to the end, or -1 when unknown.
    virtual long long remaining() = 0;
};

// Reads a FILE it does not own.
class FileByteSource final : public ByteSource {
  public:
    explicit FileByteSource(FILE* file) : m_file(file) {}
    int get() override { return std::fgetc(m_file); }
    size_t read(uint8_t* into, size_t n) override { return std::fread(into, 1, n, m_file); }
    long long remaining() override;

  private:
    FILE* m_file;
};

class MemoryByteSource final : public ByteSource {
  public:
    MemoryByteSource(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    int get() override { return m_pos < m_size ? m_data[m_pos++] : -1; }
    size_t read(uint8_t* into, size_t n) override;
    long long remaining() override { return static_cast<long long>(m_size - m_pos); }

  private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_pos = 0;
};

} // namespace quillet
