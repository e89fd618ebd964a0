#include "metadata/tiffsource.h"

#include <cstring>
#include <limits>

namespace quillet {

FileTiffSource::FileTiffSource(const QString& path) : m_file(path) {
    m_file.open(QIODevice::ReadOnly);
}

bool FileTiffSource::readAt(quint64 offset, char* into, qsizetype n) {
    if (!m_file.isOpen() || n < 0 || offset > quint64(std::numeric_limits<qint64>::max()))
        return false;
    return m_file.seek(qint64(offset)) && m_file.read(into, n) == n;
}

bool MemoryTiffSource::readAt(quint64 offset, char* into, qsizetype n) {
    const quint64 size = quint64(m_bytes.size());
    if (n < 0 || offset > size || quint64(n) > size - offset)
        return false;
    if (n > 0)
        std::memcpy(into, m_bytes.constData() + offset, size_t(n));
    return true;
}

} // namespace quillet
