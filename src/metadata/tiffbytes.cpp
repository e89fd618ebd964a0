#include "metadata/tiffbytes.h"

#include <cstring>

namespace quillet {

quint16 TiffBytes::get16(qint64 at) const {
    if (!has(at, 2))
        return 0;
    const quint16 a = quint8(m_bytes[at]), b = quint8(m_bytes[at + 1]);
    return m_motorola ? quint16(a << 8 | b) : quint16(b << 8 | a);
}

quint32 TiffBytes::get32(qint64 at) const {
    if (!has(at, 4))
        return 0;
    const quint32 a = get16(at), b = get16(at + 2);
    return m_motorola ? a << 16 | b : b << 16 | a;
}

void TiffBytes::put16(qint64 at, quint16 value) {
    if (!has(at, 2))
        return;
    m_bytes[at + (m_motorola ? 0 : 1)] = char(value >> 8);
    m_bytes[at + (m_motorola ? 1 : 0)] = char(value & 0xFF);
}

void TiffBytes::put32(qint64 at, quint32 value) {
    if (!has(at, 4))
        return;
    put16(at + (m_motorola ? 0 : 2), quint16(value >> 16));
    put16(at + (m_motorola ? 2 : 0), quint16(value & 0xFFFF));
}

bool TiffBytes::wipe(qint64 at, qint64 length) {
    if (at < 0) {
        length += at;
        at = 0;
    }
    if (length <= 0 || at >= m_bytes.size())
        return false;
    if (length > m_bytes.size() - at)
        length = m_bytes.size() - at;
    char* data = m_bytes.data() + at;
    bool held = false;
    for (qint64 i = 0; i < length; ++i) {
        held = held || data[i] != 0;
        data[i] = 0;
    }
    return held;
}

void TiffBytes::move(qint64 from, qint64 to, qint64 length) {
    if (from != to && has(from, length) && has(to, length))
        std::memmove(m_bytes.data() + to, m_bytes.constData() + from, size_t(length));
}

int TiffBytes::typeSize(quint16 type) {
    switch (type) {
    case 1: // BYTE
    case 2: // ASCII
    case 6: // SBYTE
    case 7: // UNDEFINED
        return 1;
    case 3: // SHORT
    case 8: // SSHORT
        return 2;
    case 4:  // LONG
    case 9:  // SLONG
    case 11: // FLOAT
    case 13: // IFD
        return 4;
    case 5:  // RATIONAL
    case 10: // SRATIONAL
    case 12: // DOUBLE
        return 8;
    default:
        return 0;
    }
}

TiffEntry TiffEntry::read(const TiffBytes& tiff, qint64 at, qint64 base) {
    TiffEntry e;
    e.at = at;
    e.tag = tiff.get16(at);
    e.type = tiff.get16(at + 2);
    e.count = tiff.get32(at + 4);
    e.valueSize = qint64(TiffBytes::typeSize(e.type)) * e.count;
    e.valueAt = e.outOfLine() ? base + tiff.get32(at + 8) : at + 8;
    return e;
}

} // namespace quillet
