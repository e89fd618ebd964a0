#include "metadata/makernotescrubber.h"

#include <initializer_list>

namespace quillet {

namespace {

// One recognised layout: where its directory starts, what its value offsets
// count from, its byte order, the fields to blank and the sub-directory (if
// any) that holds more of them.
struct Layout {
    qint64 directory = 0;
    qint64 base = 0;
    bool motorola = false;
    std::initializer_list<quint16> fields;
    quint16 subDirectoryTag = 0;
    std::initializer_list<quint16> subFields;
};

class Scrub {
  public:
    Scrub(TiffBytes& tiff, qint64 at, qint64 size) : m_tiff(tiff), m_start(at), m_end(at + size) {}

    int directory(const Layout& layout, qint64 at, std::initializer_list<quint16> fields, int depth) {
        TiffBytes view(m_tiff.bytes(), layout.motorola);
        if (!inside(at, 2))
            return 0;
        const qint64 count = view.get16(at);
        if (count > 512 || !inside(at + 2, count * 12))
            return 0;
        int blanked = 0;
        for (qint64 i = 0; i < count; ++i) {
            const TiffEntry entry = TiffEntry::read(view, at + 2 + i * 12, layout.base);
            if (depth == 0 && layout.subDirectoryTag && entry.tag == layout.subDirectoryTag &&
                entry.count == 1 && (entry.type == 4 || entry.type == 13)) {
                blanked += directory(layout, layout.base + view.get32(entry.at + 8), layout.subFields, 1);
                continue;
            }
            for (const quint16 field : fields)
                if (entry.tag == field && inside(entry.valueAt, entry.valueSize) &&
                    view.wipe(entry.valueAt, entry.valueSize))
                    ++blanked;
        }
        return blanked;
    }

  private:
    bool inside(qint64 at, qint64 length) const {
        return at >= m_start && length >= 0 && length <= m_end - at;
    }

    TiffBytes& m_tiff;
    qint64 m_start, m_end;
};

bool startsWith(TiffBytes& tiff, qint64 at, qint64 size, const char* text, qint64 length) {
    return size >= length && tiff.has(at, length) &&
           tiff.bytes().mid(qsizetype(at), qsizetype(length)) == QByteArray(text, qsizetype(length));
}

} // namespace

int MakerNoteScrubber::scrub(TiffBytes& tiff, qint64 at, qint64 size, const QByteArray& make) {
    if (!tiff.has(at, size) || size < 16)
        return 0;
    Scrub scrub(tiff, at, size);
    const auto run = [&](const Layout& layout) {
        return scrub.directory(layout, layout.directory, layout.fields, 0);
    };
    const auto orderAt = [&](qint64 where) { return startsWith(tiff, where, size, "MM", 2); };

    // "OLYMPUS\0", its byte order, a version; offsets from the note's start.
    // The serial numbers sit in the equipment directory.
    if (startsWith(tiff, at, size, "OLYMPUS\0", 8) || startsWith(tiff, at, size, "OM SYSTEM\0\0\0", 12)) {
        const qint64 header = startsWith(tiff, at, size, "OLYMPUS\0", 8) ? 8 : 12;
        return run({at + header + 4, at, orderAt(at + header), {}, 0x2010, {0x0101, 0x0102, 0x0202}});
    }
    // "Nikon\0", a version, then a TIFF header of its own that the offsets count from.
    if (startsWith(tiff, at, size, "Nikon\0\x02", 7)) {
        const qint64 header = at + 10;
        const bool motorola = orderAt(header);
        const TiffBytes view(tiff.bytes(), motorola);
        return run({header + view.get32(header + 4), header, motorola, {0x001D, 0x00A0}, 0, {}});
    }
    // "Panasonic\0\0\0", the directory after it; offsets from the TIFF header.
    if (startsWith(tiff, at, size, "Panasonic\0\0\0", 12))
        return run({at + 12, 0, tiff.motorola(), {0x0025}, 0, {}});
    // "FUJIFILM", then where the directory starts; always little-endian, offsets from the note.
    if (startsWith(tiff, at, size, "FUJIFILM", 8)) {
        const TiffBytes view(tiff.bytes(), false);
        return run({at + view.get32(at + 8), at, false, {0x0010}, 0, {}});
    }
    // Canon's note is a bare directory with offsets from the TIFF header.
    if (make.startsWith("Canon"))
        return run({at, 0, tiff.motorola(), {0x0009, 0x000C, 0x0096}, 0, {}});
    return 0;
}

} // namespace quillet
