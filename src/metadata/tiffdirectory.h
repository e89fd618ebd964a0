#pragma once

#include "metadata/tiffsource.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace quillet {

// One image file directory of a TIFF file, its values read from wherever
// they lie. Hostile files are expected: entry counts and value sizes are
// capped, and values are read only while a byte budget lasts.
class TiffDirectory {
  public:
    static constexpr int MaxEntries = 1000;
    static constexpr quint16 TypeLong = 4;
    static constexpr quint16 TypeIfd = 13;

    struct Entry {
        quint16 tag = 0;
        quint16 type = 0;
        quint32 count = 0;
        QByteArray value;   // count values, in the file's byte order
        QByteArray field;   // the entry's own four value bytes, as found
        quint64 offset = 0; // where an out-of-line value lay; 0 when it sat in `field`
    };

    // Reads the directory at `offset`. Nothing when its count is unreadable
    // or above MaxEntries, or its entries run past the end of the file.
    // Entries of an unknown type, with no values, or whose values cannot be
    // read, exceed `maxValue` bytes or the `budget` left, are left out; the
    // budget is reduced by every out-of-line value read.
    static std::optional<TiffDirectory> read(TiffSource& source, bool motorola, quint64 offset,
                                             qsizetype maxValue, qsizetype& budget);

    // The bytes of one value of a TIFF type; 0 for an unknown type.
    static int typeSize(quint16 type);
    static quint16 get16(const char* p, bool motorola);
    static quint32 get32(const char* p, bool motorola);
    // Four bytes holding `value` in the given byte order.
    static QByteArray packed32(quint32 value, bool motorola);

    // The directory offset an entry points at: one LONG or IFD; 0 otherwise.
    quint32 pointer(const Entry& entry) const;

    std::vector<Entry> entries;
    bool motorola = false;
};

} // namespace quillet
