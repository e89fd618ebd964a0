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
    // Columns [firstColumn, endColumn) of `image`, which must have 8-bit bands.
    StreamedRows(const vips::VImage& image, int firstColumn, int endColumn);
    ~StreamedRows();
    StreamedRows(const StreamedRows&) = delete;
    StreamedRows& operator=(const StreamedRows&) = delete;

    // Holds rows [first, end), reading on from the last row read; rows above
    // `first` are let go. Neither bound may move back up the picture.
    // Throws vips::VError when the pixels cannot be made.
    void hold(int first, int end);
    // Row i of those held, its first byte that of column firstColumn, with 16
    // zeroed bytes after its last.
    const uint8_t* row(int i) const { return &m_buffer[size_t(i - m_first) * m_stride]; }

  private:
    vips::VImage m_image;
    VipsRegion* m_region = nullptr;
    int m_x = 0;
    int m_width = 0;
    size_t m_length = 0; // bytes of a row
    size_t m_stride = 0; // bytes of a row with its slack
    std::vector<uint8_t> m_buffer;
    int m_first = 0; // rows [m_first, m_end) are in m_buffer
    int m_end = 0;
};

} // namespace quillet
