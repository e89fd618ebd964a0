#include "metadata/bytesource.h"

#include <cstring>

namespace quillet {

long long FileByteSource::remaining() {
    const long here = std::ftell(m_file);
    if (here < 0 || std::fseek(m_file, 0, SEEK_END) != 0)
        return -1;
    const long end = std::ftell(m_file);
    if (std::fseek(m_file, here, SEEK_SET) != 0 || end < here)
        return -1;
    return end - here;
}

size_t MemoryByteSource::read(uint8_t* into, size_t n) {
    const size_t count = n < m_size - m_pos ? n : m_size - m_pos;
    if (count > 0)
        std::memcpy(into, m_data + m_pos, count);
    m_pos += count;
    return count;
}

} // namespace quillet
