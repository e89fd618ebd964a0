#pragma once

#include <vips/vips8>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quillet {

// Rows of a picture that is not in memory, pulled from libvips in strips as a
// pass moves down it, so that only a few rows are held at any time. A loader
// opened for sequential access decodes each row once, when it is first asked
// for, and never holds the whole picture either.
class StreamedRows {
  public:
    // Columns [firstColumn, endColumn) of `image`, which must have 8-bit
    // bands; windows of up to `window` rows are asked for at a time.
    StreamedRows(const vips::VImage& image, int firstColumn, int endColumn, int window);
    ~StreamedRows();
    StreamedRows(const StreamedRows&) = delete;
    StreamedRows& operator=(const StreamedRows&) = delete;

    // Holds rows [first, end), at most `window` of them, reading on from the
    // last row read. Neither bound may move back up the picture. Throws
    // vips::VError when the pixels cannot be made.
    void hold(int first, int end);
    // Row i of those held, its first byte that of column firstColumn.
    const uint8_t* row(int i) const { return &m_buffer[size_t(i % m_rows) * m_length]; }

  private:
    vips::VImage m_image;
    // libvips reuses the memory behind a region as it reads on, so rows are
    // copied out, into a ring of a window and a strip.
    VipsRegion* m_region = nullptr;
    int m_x = 0;
    int m_width = 0;
    int m_strip = 0;
    int m_rows = 0;      // rows the ring holds
    size_t m_length = 0; // bytes of a row
    std::vector<uint8_t> m_buffer;
    int m_end = 0; // rows [0, m_end) have been read
};

} // namespace quillet
