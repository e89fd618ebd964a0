#include "engine/geometry/streamedrows.h"

#include <algorithm>
#include <cstring>

namespace quillet {

namespace {

// Rows asked of libvips at a time: enough to keep the calls few, small
// against any picture.
constexpr int StripRows = 32;
constexpr size_t Slack = 16;

} // namespace

StreamedRows::StreamedRows(const vips::VImage& image, int firstColumn, int endColumn)
    : m_image(image), m_x(firstColumn), m_width(endColumn - firstColumn),
      m_length(size_t(m_width) * size_t(image.bands())), m_stride(m_length + Slack) {
    m_region = vips_region_new(m_image.get_image());
    if (!m_region)
        throw vips::VError();
}

StreamedRows::~StreamedRows() {
    g_object_unref(m_region);
}

void StreamedRows::hold(int first, int end) {
    if (first >= m_end) {
        // Nothing held is wanted any more; a sequential loader decodes the
        // rows passed over on its own.
        m_first = m_end = first;
    } else if (first > m_first) {
        std::memmove(m_buffer.data(), row(first), size_t(m_end - first) * m_stride);
        m_first = first;
    }
    const int height = m_image.height();
    while (m_end < end) {
        const int top = m_end;
        const int rows = std::min(height, std::max(end, top + StripRows)) - top;
        // Room for what is held and the new strip; new room comes zeroed,
        // and rows are copied without their slack, which so stays zero.
        const size_t needed = size_t(top + rows - m_first) * m_stride;
        if (m_buffer.size() < needed)
            m_buffer.resize(needed);
        VipsRect strip{m_x, top, m_width, rows};
        if (vips_region_prepare(m_region, &strip) != 0)
            throw vips::VError();
        for (int r = 0; r < rows; ++r)
            std::memcpy(&m_buffer[size_t(top + r - m_first) * m_stride],
                        VIPS_REGION_ADDR(m_region, m_x, top + r), m_length);
        m_end = top + rows;
    }
}

} // namespace quillet
