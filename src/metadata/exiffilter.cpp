#include "metadata/exiffilter.h"

#include "metadata/makernotescrubber.h"
#include "metadata/tiffbytes.h"

#include <set>

namespace quillet {

namespace {

enum class Dir { Ifd0, Exif, Gps, Interop, Ifd1 };

constexpr quint16 TagExifIfd = 0x8769, TagGpsIfd = 0x8825, TagInteropIfd = 0xA005, TagMakerNote = 0x927C,
                  TagMake = 0x010F, TagThumbnailOffset = 0x0201, TagThumbnailLength = 0x0202;
constexpr int MaxDepth = 4;
constexpr qint64 MaxEntries = 1000;

bool identifying(quint16 tag) {
    switch (tag) {
    case 0xA420: // ImageUniqueID
    case 0xA430: // CameraOwnerName
    case 0xA431: // BodySerialNumber
    case 0xA435: // LensSerialNumber
    case 0xC62F: // CameraSerialNumber
        return true;
    default:
        return false;
    }
}

bool keptByMinimal(Dir dir, quint16 tag) {
    if (dir == Dir::Ifd0) {
        switch (tag) {
        case 0x0112: // Orientation
        case 0x011A: // XResolution
        case 0x011B: // YResolution
        case 0x0128: // ResolutionUnit
        case 0x013B: // Artist
        case 0x8298: // Copyright
            return true;
        default:
            return false;
        }
    }
    if (dir == Dir::Exif) {
        switch (tag) {
        case 0x9000: // ExifVersion
        case 0x9003: // DateTimeOriginal
        case 0x9011: // OffsetTimeOriginal
        case 0x9291: // SubSecTimeOriginal
        case 0xA001: // ColorSpace
            return true;
        default:
            return false;
        }
    }
    return false;
}

class Walk {
  public:
    Walk(QByteArray& bytes, bool motorola, MetadataPolicy policy)
        : m_tiff(bytes, motorola), m_policy(policy) {}

    MetadataRemoval removed;

    void run(qint64 ifd0) {
        m_make = makeOf(ifd0);
        if (m_policy == MetadataPolicy::None) {
            const qint64 next = m_tiff.get32(ifd0 + 2 + qint64(m_tiff.get16(ifd0)) * 12);
            wipe(ifd0, Dir::Ifd0, 0);
            wipe(next, Dir::Ifd1, 0);
            return;
        }
        const qint64 next = filter(ifd0, Dir::Ifd0, 0);
        if (next <= 0)
            return;
        // The thumbnail shows the input as it was, before any crop or
        // watermark; it goes with whatever directory follows it.
        wipe(next, Dir::Ifd1, 0);
        setLink(ifd0, 0);
    }

  private:
    // Filters one directory in place and returns the offset of the next
    // one in the chain (0 for none, -1 when the directory is unreadable).
    qint64 filter(qint64 at, Dir dir, int depth) {
        const qint64 count = entries(at, depth);
        if (count < 0)
            return -1;
        const qint64 linkAt = at + 2 + count * 12;
        const qint64 next = m_tiff.get32(linkAt);
        qint64 kept = 0;
        for (qint64 i = 0; i < count; ++i) {
            const TiffEntry entry = TiffEntry::read(m_tiff, at + 2 + i * 12);
            if (!keep(entry, dir, depth)) {
                dropValue(entry);
                continue;
            }
            m_tiff.move(entry.at, at + 2 + kept * 12, 12);
            ++kept;
        }
        if (kept != count) {
            m_tiff.put16(at, quint16(kept));
            const qint64 newLinkAt = at + 2 + kept * 12;
            m_tiff.wipe(newLinkAt, linkAt + 4 - newLinkAt);
            m_tiff.put32(newLinkAt, quint32(next));
        }
        return qint64(next);
    }

    // Whether an entry stays; an entry that goes is counted here.
    bool keep(const TiffEntry& entry, Dir dir, int depth) {
        const quint16 tag = entry.tag;
        if (tag == TagGpsIfd && (dir == Dir::Ifd0 || dir == Dir::Ifd1)) {
            wipe(m_tiff.get32(entry.at + 8), Dir::Gps, depth + 1);
            return false;
        }
        if (tag == TagExifIfd && (dir == Dir::Ifd0 || dir == Dir::Ifd1)) {
            filter(m_tiff.get32(entry.at + 8), Dir::Exif, depth + 1);
            return true;
        }
        if (tag == TagInteropIfd && dir == Dir::Exif)
            return true; // how to read the colour space; nothing personal
        if (identifying(tag)) {
            ++removed.identifying;
            return false;
        }
        if (m_policy == MetadataPolicy::NoLocation) {
            if (tag == TagMakerNote && dir == Dir::Exif)
                removed.identifying +=
                    MakerNoteScrubber::scrub(m_tiff, entry.valueAt, entry.valueSize, m_make);
            return true;
        }
        if (keptByMinimal(dir, tag))
            return true;
        ++removed.other;
        return false;
    }

    // Blanks a directory, the directories it points to and every value they
    // hold, counting their entries.
    void wipe(qint64 at, Dir dir, int depth) {
        const qint64 count = entries(at, depth);
        if (count < 0)
            return;
        qint64 thumbnailAt = -1, thumbnailSize = 0;
        for (qint64 i = 0; i < count; ++i) {
            const TiffEntry entry = TiffEntry::read(m_tiff, at + 2 + i * 12);
            const qint64 target = m_tiff.get32(entry.at + 8);
            if (entry.tag == TagExifIfd)
                wipe(target, Dir::Exif, depth + 1);
            else if (entry.tag == TagGpsIfd)
                wipe(target, Dir::Gps, depth + 1);
            else if (entry.tag == TagInteropIfd)
                wipe(target, Dir::Interop, depth + 1);
            else if (dir == Dir::Gps)
                ++removed.location;
            else if (identifying(entry.tag))
                ++removed.identifying;
            else
                ++removed.other;
            if (dir == Dir::Ifd1 && entry.tag == TagThumbnailOffset)
                thumbnailAt = target;
            if (dir == Dir::Ifd1 && entry.tag == TagThumbnailLength)
                thumbnailSize = target;
            dropValue(entry);
        }
        if (thumbnailAt > 0)
            m_tiff.wipe(thumbnailAt, thumbnailSize);
        m_tiff.wipe(at, 2 + count * 12 + 4);
    }

    // The entry count of a readable directory not seen before; -1 otherwise.
    qint64 entries(qint64 at, int depth) {
        if (depth > MaxDepth || at < 8 || !m_tiff.has(at, 2) || !m_seen.insert(at).second)
            return -1;
        const qint64 count = m_tiff.get16(at);
        if (count > MaxEntries || !m_tiff.has(at + 2, count * 12))
            return -1;
        return count;
    }

    void dropValue(const TiffEntry& entry) {
        if (entry.outOfLine() && entry.valueAt >= 8)
            m_tiff.wipe(entry.valueAt, entry.valueSize);
    }

    void setLink(qint64 at, quint32 value) { m_tiff.put32(at + 2 + qint64(m_tiff.get16(at)) * 12, value); }

    QByteArray makeOf(qint64 ifd0) {
        const qint64 count = m_tiff.get16(ifd0);
        for (qint64 i = 0; i < count && i < MaxEntries; ++i) {
            const TiffEntry entry = TiffEntry::read(m_tiff, ifd0 + 2 + i * 12);
            if (entry.tag == TagMake && entry.type == 2 && entry.valueSize < 64 &&
                m_tiff.has(entry.valueAt, entry.valueSize))
                return m_tiff.bytes().mid(entry.valueAt, entry.valueSize);
        }
        return {};
    }

    TiffBytes m_tiff;
    MetadataPolicy m_policy;
    QByteArray m_make;
    std::set<qint64> m_seen;
};

} // namespace

ExifFilter::Result ExifFilter::filter(const QByteArray& tiff, MetadataPolicy policy) {
    if (policy == MetadataPolicy::Keep)
        return {tiff, {}};
    Result out;
    out.tiff = tiff;
    bool motorola = false;
    if (tiff.startsWith(QByteArray("MM\0*", 4)))
        motorola = true;
    else if (!tiff.startsWith(QByteArray("II*\0", 4)))
        out.tiff.clear();
    const qint64 ifd0 = out.tiff.isEmpty() ? 0 : TiffBytes(out.tiff, motorola).get32(4);
    if (ifd0 < 8 || !TiffBytes(out.tiff, motorola).has(ifd0, 2)) {
        out.removed.other = tiff.isEmpty() ? 0 : 1;
        out.tiff.clear();
        return out;
    }
    Walk walk(out.tiff, motorola, policy);
    walk.run(ifd0);
    out.removed = walk.removed;
    if (policy == MetadataPolicy::None)
        out.tiff.clear();
    return out;
}

} // namespace quillet
