#include "engine/geometry/streamedrows.h"

#include <algorithm>
#include <cstring>

namespace quillet {

namespace {

// Rows asked of libvips at a time: enough to keep the calls few, small
// against any picture.
constexpr int StripRows = 32;

} // namespace

StreamedRows::StreamedRows(const vips::VImage& image, int firstColumn, int endColumn, int window)
    : m_image(image), m_x(firstColumn), m_width(endColumn - firstColumn), m_strip(StripRows),
      m_rows(std::max(1, window) + StripRows), m_length(size_t(m_width) * size_t(image.bands())),
      m_buffer(size_t(m_rows) * m_length) {
    m_region = vips_region_new(m_image.get_image());
    if (!m_region)
        throw vips::VError();
}

StreamedRows::~StreamedRows() {
    g_object_unref(m_region);
}

void StreamedRows::hold(int first, int end) {
    // A sequential loader decodes the rows passed over on its own.
    m_end = std::max(m_end, first);
    while (m_end < end) {
        // Rows above `first` are the only ones overwritten: the ring holds a
        // window and a strip.
        VipsRect strip{m_x, m_end, m_width, std::min(m_strip, m_image.height() - m_end)};
        if (vips_region_prepare(m_region, &strip) != 0)
            throw vips::VError();
        for (int r = strip.top; r < strip.top + strip.height; ++r)
            std::memcpy(&m_buffer[size_t(r % m_rows) * m_length], VIPS_REGION_ADDR(m_region, m_x, r),
                        m_length);
        m_end = strip.top + strip.height;
    }
}

} // namespace quillet
