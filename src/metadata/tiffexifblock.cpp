#include "metadata/tiffexifblock.h"

#include "metadata/tiffdirectory.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <vector>

namespace quillet {

namespace {

using Entry = TiffDirectory::Entry;

const quint16 TagExifIfd = 0x8769, TagGpsIfd = 0x8825, TagInteropIfd = 0xA005, TagMakerNote = 0x927C;

// Out-of-line values read for one block; a hostile file pointing every entry
// at a large value costs no more than this.
const qsizetype ReadBudget = 4 * TiffExifBlock::MaxSize;

// Tags of the first directory that describe the picture, as opposed to the
// file's pixel layout, strips, tiles, sub-images, profiles and other blocks
// that a JPEG carries in segments of its own (or not at all). Exposure tags
// are found here too in files written after TIFF/EP.
bool describesPicture(quint16 tag) {
    static const std::set<quint16> tags{0x010D, 0x010E, 0x010F, 0x0110, 0x0112, 0x011A, 0x011B, 0x011D,
                                        0x0128, 0x0131, 0x0132, 0x013B, 0x013C, 0x013E, 0x013F, 0x4746,
                                        0x4749, 0x8298, 0x829A, 0x829D, 0x8822, 0x8827, 0x9003, 0x9201,
                                        0x9202, 0x9203, 0x9204, 0x9205, 0x9206, 0x9207, 0x9208, 0x9209,
                                        0x920A, 0x9C9B, 0x9C9C, 0x9C9D, 0x9C9E, 0x9C9F};
    return tags.count(tag) > 0;
}

// Resolutions (the output gets its own) and a plain orientation: what any
// writer puts in a TIFF, saying nothing about the picture.
bool saysNothing(const Entry& entry, bool motorola) {
    if (entry.tag == 0x011A || entry.tag == 0x011B || entry.tag == 0x0128)
        return true;
    return entry.tag == 0x0112 && entry.type == 3 && entry.count == 1 &&
           TiffDirectory::get16(entry.value.constData(), motorola) == 1;
}

// The directories of a block, in the order they are laid out.
enum Ifd { Ifd0, Exif, Interop, Gps, IfdCount };

qsizetype outOfLine(const Entry& entry) {
    return entry.value.size() > 4 ? (entry.value.size() + 1) & ~qsizetype(1) : 0;
}

bool isMakerNote(int ifd, const Entry& entry) {
    return ifd == Exif && entry.tag == TagMakerNote;
}

class Block {
  public:
    explicit Block(bool motorola) : m_motorola(motorola) {}

    std::array<std::vector<Entry>, IfdCount> dirs;

    bool present(int ifd) const {
        return ifd == Ifd0 || !dirs[size_t(ifd)].empty() || (ifd == Exif && present(Interop));
    }
    int pointers(int ifd) const {
        if (ifd == Ifd0)
            return int(present(Exif)) + int(present(Gps));
        return ifd == Exif ? int(present(Interop)) : 0;
    }
    int entryCount(int ifd) const { return int(dirs[size_t(ifd)].size()) + pointers(ifd); }
    // Directory, link and out-of-line values; a deferred maker note left out.
    qsizetype regionSize(int ifd, bool withMakerNote) const {
        if (!present(ifd))
            return 0;
        qsizetype size = 2 + 12 * qsizetype(entryCount(ifd)) + 4;
        for (const Entry& entry : dirs[size_t(ifd)])
            if (withMakerNote || !isMakerNote(ifd, entry))
                size += outOfLine(entry);
        return size;
    }
    qsizetype size() const {
        qsizetype size = 8;
        for (int ifd = 0; ifd < IfdCount; ifd++)
            size += regionSize(ifd, true);
        return size;
    }
    // The output's resolutions are set afterwards; where the block lacks
    // them, the first directory is copied to the end with three more
    // entries, which must still fit.
    qsizetype limit() const {
        return TiffExifBlock::MaxSize - (2 + 12 * (entryCount(Ifd0) + 3) + 4 + 16 + 4);
    }

    // Drops the maker note first (large, and meaningful only to its maker's
    // tools), then whichever entry takes the most room, until the block fits.
    bool trim() {
        while (size() > limit()) {
            std::vector<Entry>* from = nullptr;
            std::vector<Entry>::iterator victim;
            qsizetype most = -1;
            for (auto& dir : dirs)
                for (auto it = dir.begin(); it != dir.end(); ++it) {
                    const qsizetype room =
                        isMakerNote(int(&dir - dirs.data()), *it) ? MaxSize : 12 + outOfLine(*it);
                    if (room > most)
                        from = &dir, victim = it, most = room;
                }
            if (!from)
                return false;
            from->erase(victim);
        }
        return true;
    }

    QByteArray layOut() const;

  private:
    Entry pointerEntry(quint16 tag, quint32 offset) const {
        Entry entry;
        entry.tag = tag;
        entry.type = TiffDirectory::TypeLong;
        entry.count = 1;
        entry.field = TiffDirectory::packed32(offset, m_motorola);
        return entry;
    }

    static constexpr qsizetype MaxSize = TiffExifBlock::MaxSize;

    void put16(QByteArray& out, quint16 value) const {
        out.append(m_motorola ? char(value >> 8) : char(value));
        out.append(m_motorola ? char(value) : char(value >> 8));
    }
    void put32(QByteArray& out, quint32 value) const {
        out.append(TiffDirectory::packed32(value, m_motorola));
    }

    bool m_motorola;
};

QByteArray Block::layOut() const {
    std::array<quint32, IfdCount> at{};
    quint32 pos = 8;
    for (int ifd = 0; ifd < IfdCount; ifd++) {
        at[size_t(ifd)] = pos;
        pos += quint32(regionSize(ifd, false));
    }
    QByteArray out(m_motorola ? QByteArray("MM\0*", 4) : QByteArray("II*\0", 4));
    put32(out, 8);

    std::optional<Entry> makerNote;
    qsizetype makerNoteField = -1;
    for (int ifd = 0; ifd < IfdCount; ifd++) {
        if (!present(ifd))
            continue;
        std::vector<Entry> entries = dirs[size_t(ifd)];
        const auto link = [&](quint16 tag, Ifd target) {
            if (present(target))
                entries.push_back(pointerEntry(tag, at[target]));
        };
        if (ifd == Ifd0)
            link(TagExifIfd, Exif), link(TagGpsIfd, Gps);
        if (ifd == Exif)
            link(TagInteropIfd, Interop);
        std::stable_sort(entries.begin(), entries.end(),
                         [](const Entry& a, const Entry& b) { return a.tag < b.tag; });

        QByteArray values;
        const quint32 valuesAt = at[size_t(ifd)] + 2 + 12 * quint32(entries.size()) + 4;
        put16(out, quint16(entries.size()));
        for (const Entry& entry : entries) {
            put16(out, entry.tag);
            put16(out, entry.type);
            put32(out, entry.count);
            if (entry.value.isEmpty()) {
                out.append(entry.field);
            } else if (entry.value.size() <= 4) {
                out.append(entry.value + QByteArray(4 - entry.value.size(), '\0'));
            } else if (isMakerNote(ifd, entry)) {
                makerNote = entry;
                makerNoteField = out.size();
                put32(out, 0);
            } else {
                put32(out, valuesAt + quint32(values.size()));
                values.append(entry.value);
                if (values.size() % 2)
                    values.append('\0');
            }
        }
        put32(out, 0); // no next directory: no thumbnail is carried over
        out.append(values);
    }

    if (makerNote) {
        // Some maker notes count their own offsets from the TIFF header, so
        // the note goes where it lay in the file when that place is free.
        qsizetype where = out.size();
        if (makerNote->offset >= quint64(where) &&
            makerNote->offset + quint64(makerNote->value.size()) <= quint64(limit()))
            where = qsizetype(makerNote->offset);
        out.resize(where, '\0');
        out.append(makerNote->value);
        out.replace(makerNoteField, 4, TiffDirectory::packed32(quint32(where), m_motorola));
    }
    return out;
}

} // namespace

QByteArray TiffExifBlock::fromFile(const QString& path) {
    FileTiffSource source(path);
    return source.isOpen() ? fromSource(source) : QByteArray();
}

QByteArray TiffExifBlock::fromSource(TiffSource& source) {
    char header[8];
    if (!source.readAt(0, header, sizeof header))
        return {};
    const QByteArray magic(header, 4);
    const bool motorola = magic == QByteArray("MM\0*", 4);
    if (!motorola && magic != QByteArray("II*\0", 4))
        return {}; // BigTIFF (43) among others

    qsizetype budget = ReadBudget;
    std::set<quint64> seen;
    const auto readDir = [&](quint64 offset) -> std::optional<TiffDirectory> {
        // A directory linked twice (or to itself) is read once: no loops.
        if (offset == 0 || !seen.insert(offset).second)
            return std::nullopt;
        return TiffDirectory::read(source, motorola, offset, MaxSize, budget);
    };
    const std::optional<TiffDirectory> first = readDir(TiffDirectory::get32(header + 4, motorola));
    if (!first)
        return {};

    Block block(motorola);
    // A tag given twice in one directory keeps its first entry.
    const auto add = [&](Ifd ifd, const Entry& entry) {
        std::vector<Entry>& dir = block.dirs[size_t(ifd)];
        if (std::none_of(dir.begin(), dir.end(), [&](const Entry& e) { return e.tag == entry.tag; }))
            dir.push_back(entry);
    };
    // Sub-directories hold values only; their pointers are dropped, apart
    // from the Exif directory's link to its Interoperability directory.
    const auto take = [&](Ifd ifd, quint64 offset) {
        quint64 interop = 0;
        if (const std::optional<TiffDirectory> dir = readDir(offset))
            for (const Entry& entry : dir->entries) {
                if (ifd == Exif && entry.tag == TagInteropIfd)
                    interop = dir->pointer(entry);
                else if (entry.type != TiffDirectory::TypeIfd && entry.tag != TagExifIfd &&
                         entry.tag != TagGpsIfd && entry.tag != TagInteropIfd)
                    add(ifd, entry);
            }
        return interop;
    };
    for (const Entry& entry : first->entries) {
        if (entry.tag == TagExifIfd)
            take(Interop, take(Exif, first->pointer(entry)));
        else if (entry.tag == TagGpsIfd)
            take(Gps, first->pointer(entry));
        else if (describesPicture(entry.tag) && entry.type != TiffDirectory::TypeIfd)
            add(Ifd0, entry);
    }

    if (!block.trim())
        return {};
    const bool nothing = !block.present(Exif) && !block.present(Gps) &&
                         std::all_of(block.dirs[Ifd0].begin(), block.dirs[Ifd0].end(),
                                     [&](const Entry& entry) { return saysNothing(entry, motorola); });
    if (nothing)
        return {};
    return block.layOut();
}

} // namespace quillet
