#include "metadata/tiffdirectory.h"

namespace quillet {

namespace {

const int EntrySize = 12;

} // namespace

int TiffDirectory::typeSize(quint16 type) {
    // BYTE ASCII SHORT LONG RATIONAL SBYTE UNDEFINED SSHORT SLONG SRATIONAL FLOAT DOUBLE IFD
    static const int sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < std::size(sizes) ? sizes[type] : 0;
}

quint16 TiffDirectory::get16(const char* p, bool motorola) {
    const auto* u = reinterpret_cast<const uchar*>(p);
    return motorola ? quint16(u[0] << 8 | u[1]) : quint16(u[1] << 8 | u[0]);
}

quint32 TiffDirectory::get32(const char* p, bool motorola) {
    const auto* u = reinterpret_cast<const uchar*>(p);
    return motorola ? quint32(u[0]) << 24 | quint32(u[1]) << 16 | quint32(u[2]) << 8 | u[3]
                    : quint32(u[3]) << 24 | quint32(u[2]) << 16 | quint32(u[1]) << 8 | u[0];
}

QByteArray TiffDirectory::packed32(quint32 value, bool motorola) {
    QByteArray out(4, '\0');
    for (int k = 0; k < 4; k++)
        out[motorola ? 3 - k : k] = char(value >> (8 * k));
    return out;
}

quint32 TiffDirectory::pointer(const Entry& entry) const {
    if ((entry.type != TypeLong && entry.type != TypeIfd) || entry.count != 1)
        return 0;
    return get32(entry.field.constData(), motorola);
}

std::optional<TiffDirectory> TiffDirectory::read(TiffSource& source, bool motorola, quint64 offset,
                                                 qsizetype maxValue, qsizetype& budget) {
    char countBytes[2];
    if (!source.readAt(offset, countBytes, 2))
        return std::nullopt;
    const int count = get16(countBytes, motorola);
    if (count > MaxEntries)
        return std::nullopt;
    QByteArray table(count * EntrySize, '\0');
    if (!source.readAt(offset + 2, table.data(), table.size()))
        return std::nullopt;

    TiffDirectory dir;
    dir.motorola = motorola;
    for (int k = 0; k < count; k++) {
        const char* raw = table.constData() + k * EntrySize;
        Entry entry;
        entry.tag = get16(raw, motorola);
        entry.type = get16(raw + 2, motorola);
        entry.count = get32(raw + 4, motorola);
        entry.field = QByteArray(raw + 8, 4);
        const quint64 size = quint64(entry.count) * quint64(typeSize(entry.type));
        if (size == 0)
            continue;
        if (size <= 4) {
            entry.value = entry.field.left(qsizetype(size));
        } else {
            if (size > quint64(maxValue) || qsizetype(size) > budget)
                continue;
            entry.offset = get32(entry.field.constData(), motorola);
            entry.value = QByteArray(qsizetype(size), '\0');
            if (!source.readAt(entry.offset, entry.value.data(), entry.value.size()))
                continue;
            budget -= qsizetype(size);
        }
        dir.entries.push_back(std::move(entry));
    }
    return dir;
}

} // namespace quillet
