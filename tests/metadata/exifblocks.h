#pragma once

// TIFF/EXIF blocks and small JPEG files built byte by byte, in either byte
// order; exiftool as an independent reader.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace quillet {

namespace exifblocks {

using Bytes = std::vector<uint8_t>;

struct Entry {
    uint16_t tag = 0, format = 0;
    uint32_t count = 0;
    Bytes value;        // already in the block's byte order
    int linkToIfd = -1; // >= 0: the value is the offset of that directory
};

class TiffBuilder {
  public:
    explicit TiffBuilder(bool motorola) : m_mm(motorola) {}
    int addIfd() { return m_ifds.emplace_back(), m_next.push_back(-1), int(m_ifds.size()) - 1; }
    void link(int from, int to) { m_next[size_t(from)] = to; }
    void add(int ifd, Entry e) { m_ifds[size_t(ifd)].push_back(std::move(e)); }
    void addShort(int ifd, uint16_t tag, uint16_t v) { add(ifd, {tag, 3, 1, u16(v)}); }
    void addLong(int ifd, uint16_t tag, uint32_t v) { add(ifd, {tag, 4, 1, u32(v)}); }
    void addRational(int ifd, uint16_t tag, int32_t num, int32_t den, uint16_t format = 5) {
        Bytes b = u32(uint32_t(num)), d = u32(uint32_t(den));
        b.insert(b.end(), d.begin(), d.end());
        add(ifd, {tag, format, 1, b});
    }
    void addAscii(int ifd, uint16_t tag, const std::string& text) {
        add(ifd, {tag, 2, uint32_t(text.size() + 1), Bytes(text.c_str(), text.c_str() + text.size() + 1)});
    }
    void addSubIfd(int ifd, uint16_t tag, int target) { add(ifd, {tag, 4, 1, u32(0), target}); }
    // Bytes placed after everything else (a thumbnail); build() records where.
    Bytes trailer;
    uint32_t trailerOffset = 0;
    std::vector<uint32_t> ifdOffsets;

    Bytes build() {
        ifdOffsets.clear();
        uint32_t pos = 8;
        for (const auto& ifd : m_ifds) {
            ifdOffsets.push_back(pos);
            pos += uint32_t(6 + 12 * ifd.size());
        }
        Bytes out(pos, 0);
        put(out, 0, m_mm ? Bytes{'M', 'M', 0, 0x2A} : Bytes{'I', 'I', 0x2A, 0});
        put(out, 4, u32(8));
        for (size_t k = 0; k < m_ifds.size(); k++) {
            uint32_t p = ifdOffsets[k];
            put(out, p, u16(uint16_t(m_ifds[k].size())));
            for (p += 2; const Entry& e : m_ifds[k]) {
                put(out, p, u16(e.tag));
                put(out, p + 2, u16(e.format));
                put(out, p + 4, u32(e.count));
                const Bytes value = e.linkToIfd >= 0 ? u32(ifdOffsets[size_t(e.linkToIfd)]) : e.value;
                put(out, p + 8, value.size() <= 4 ? value : u32(uint32_t(out.size())));
                if (value.size() > 4)
                    out.insert(out.end(), value.begin(), value.end());
                p += 12;
            }
            put(out, p, u32(m_next[k] >= 0 ? ifdOffsets[size_t(m_next[k])] : 0));
        }
        trailerOffset = uint32_t(out.size());
        out.insert(out.end(), trailer.begin(), trailer.end());
        return out;
    }
    Bytes u16(uint16_t v) const {
        return m_mm ? Bytes{uint8_t(v >> 8), uint8_t(v)} : Bytes{uint8_t(v), uint8_t(v >> 8)};
    }
    Bytes u32(uint32_t v) const {
        return m_mm ? Bytes{uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)}
                    : Bytes{uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)};
    }
    static void put(Bytes& out, size_t at, const Bytes& b) {
        std::copy(b.begin(), b.end(), out.begin() + long(at));
    }

  private:
    bool m_mm;
    std::vector<std::vector<Entry>> m_ifds;
    std::vector<int> m_next;
};

// A marker segment: FF, marker, big-endian length, payload.
inline Bytes segment(uint8_t marker, const Bytes& payload) {
    Bytes out{0xFF, marker, uint8_t((payload.size() + 2) >> 8), uint8_t(payload.size() + 2)};
    return out.insert(out.end(), payload.begin(), payload.end()), out;
}
inline Bytes app1(Bytes tiff) {
    return tiff.insert(tiff.begin(), {'E', 'x', 'i', 'f', 0, 0}), segment(0xE1, tiff);
}
// An APP1 block with IFD0 holding only the camera model.
inline Bytes modelApp1(const std::string& model) {
    TiffBuilder t(false);
    t.addIfd();
    t.addAscii(0, 0x0110, model);
    return app1(t.build());
}
// A baseline frame header with three components.
inline Bytes sof(uint16_t width, uint16_t height) {
    return segment(0xC0, {8, uint8_t(height >> 8), uint8_t(height), uint8_t(width >> 8), uint8_t(width), 3, 1,
                          0x11, 0, 2, 0x11, 0, 3, 0x11, 0});
}
// SOI, the given segments, a SOS header, some entropy bytes and EOI.
inline Bytes jpeg(const std::vector<Bytes>& segments) {
    Bytes out{0xFF, 0xD8};
    for (const Bytes& s : segments)
        out.insert(out.end(), s.begin(), s.end());
    // The SOS header, then entropy bytes with a stuffed FF.
    out.insert(out.end(),
               {0xFF, 0xDA, 0, 8, 1, 1, 0, 0, 63, 0, 0x12, 0x34, 0x56, 0xFF, 0x00, 0x78, 0xFF, 0xD9});
    return out;
}
inline QByteArray toQ(const Bytes& b) {
    return QByteArray(reinterpret_cast<const char*>(b.data()), qsizetype(b.size()));
}

// Collects what the byte layer prints on one stream.
class Capture {
  public:
    Capture() : m_file(open_memstream(&m_buffer, &m_size)) {}
    ~Capture() { std::fclose(m_file), std::free(m_buffer); }
    FILE* stream() const { return m_file; }
    std::string text() { return std::fflush(m_file), std::string(m_buffer, m_size); }

  private:
    char* m_buffer = nullptr;
    size_t m_size = 0;
    FILE* m_file;
};

// exiftool's numeric reading of a file (tags given as "-Model", ...); empty when it fails.
inline QJsonObject exiftool(const QString& path, const QStringList& tags = {}) {
    QProcess p;
    p.start(QStringLiteral("exiftool"),
            QStringList{QStringLiteral("-n"), QStringLiteral("-json")} + tags + QStringList{path});
    p.waitForFinished(60000);
    return QJsonDocument::fromJson(p.readAllStandardOutput()).array().at(0).toObject();
}

} // namespace exifblocks

#define QUILLET_EXIFTOOL_OR_SKIP()                                                                           \
    if (QStandardPaths::findExecutable(QStringLiteral("exiftool")).isEmpty())                                \
    GTEST_SKIP() << "exiftool is not installed"

} // namespace quillet
