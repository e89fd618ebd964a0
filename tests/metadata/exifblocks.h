#pragma once

// Builds TIFF/EXIF blocks and small JPEG files byte by byte for the metadata
// suites, in either byte order.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace exifblocks {

using Bytes = std::vector<uint8_t>;

struct Entry {
    uint16_t tag = 0;
    uint16_t format = 0;
    uint32_t count = 0;
    Bytes value;        // already in the block's byte order
    int linkToIfd = -1; // >= 0: the value is the offset of that directory
};

class TiffBuilder {
  public:
    explicit TiffBuilder(bool motorola) : m_mm(motorola) {}

    // Adds a directory; returns its index. Directory 0 is IFD0.
    int addIfd() {
        m_ifds.emplace_back();
        m_next.push_back(-1);
        return int(m_ifds.size()) - 1;
    }
    void link(int from, int to) { m_next[size_t(from)] = to; }

    void add(int ifd, Entry e) { m_ifds[size_t(ifd)].push_back(std::move(e)); }
    void addShort(int ifd, uint16_t tag, uint16_t v) { add(ifd, {tag, 3, 1, u16(v)}); }
    void addLong(int ifd, uint16_t tag, uint32_t v) { add(ifd, {tag, 4, 1, u32(v)}); }
    void addRational(int ifd, uint16_t tag, int32_t num, int32_t den, uint16_t format = 5) {
        Bytes b = u32(uint32_t(num));
        const Bytes d = u32(uint32_t(den));
        b.insert(b.end(), d.begin(), d.end());
        add(ifd, {tag, format, 1, b});
    }
    void addAscii(int ifd, uint16_t tag, const std::string& text) {
        Bytes b(text.begin(), text.end());
        b.push_back(0);
        add(ifd, {tag, 2, uint32_t(b.size()), b});
    }
    void addUndefined(int ifd, uint16_t tag, const Bytes& bytes) {
        add(ifd, {tag, 7, uint32_t(bytes.size()), bytes});
    }
    void addSubIfd(int ifd, uint16_t tag, int target) { add(ifd, {tag, 4, 1, u32(0), target}); }

    // Bytes placed after all directories and values (e.g. a thumbnail); the
    // offset they land at is returned by build() through trailerOffset.
    void setTrailer(Bytes bytes) { m_trailer = std::move(bytes); }
    uint32_t trailerOffset = 0;
    std::vector<uint32_t> ifdOffsets;
    uint32_t firstIfdOffset = 8;

    Bytes build() {
        ifdOffsets.clear();
        uint32_t pos = firstIfdOffset;
        for (const auto& ifd : m_ifds) {
            ifdOffsets.push_back(pos);
            pos += uint32_t(2 + 12 * ifd.size() + 4);
        }
        Bytes out(pos, 0);
        const Bytes order = m_mm ? Bytes{'M', 'M', 0, 0x2A} : Bytes{'I', 'I', 0x2A, 0};
        std::memcpy(out.data(), order.data(), 4);
        put(out, 4, u32(firstIfdOffset));
        for (size_t k = 0; k < m_ifds.size(); k++) {
            uint32_t p = ifdOffsets[k];
            put(out, p, u16(uint16_t(m_ifds[k].size())));
            p += 2;
            for (const Entry& e : m_ifds[k]) {
                put(out, p, u16(e.tag));
                put(out, p + 2, u16(e.format));
                put(out, p + 4, u32(e.count));
                Bytes value = e.linkToIfd >= 0 ? u32(ifdOffsets[size_t(e.linkToIfd)]) : e.value;
                if (value.size() <= 4) {
                    put(out, p + 8, value);
                } else {
                    put(out, p + 8, u32(uint32_t(out.size())));
                    out.insert(out.end(), value.begin(), value.end());
                }
                p += 12;
            }
            const int next = m_next[k];
            put(out, p, u32(next >= 0 ? ifdOffsets[size_t(next)] : 0));
        }
        trailerOffset = uint32_t(out.size());
        out.insert(out.end(), m_trailer.begin(), m_trailer.end());
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
        if (out.size() < at + b.size())
            out.resize(at + b.size(), 0);
        std::memcpy(out.data() + at, b.data(), b.size());
    }

  private:
    bool m_mm;
    std::vector<std::vector<Entry>> m_ifds;
    std::vector<int> m_next;
    Bytes m_trailer;
};

// A marker segment: FF, marker, big-endian length, payload.
inline Bytes segment(uint8_t marker, const Bytes& payload) {
    const size_t length = payload.size() + 2;
    Bytes out{0xFF, marker, uint8_t(length >> 8), uint8_t(length)};
    out.insert(out.end(), payload.begin(), payload.end());
    return out;
}

inline Bytes exifPayload(const Bytes& tiff) {
    Bytes out{'E', 'x', 'i', 'f', 0, 0};
    out.insert(out.end(), tiff.begin(), tiff.end());
    return out;
}

// The APP1 section as the section list holds it: length bytes first.
inline Bytes exifSection(const Bytes& tiff) {
    const Bytes seg = segment(0xE1, exifPayload(tiff));
    return Bytes(seg.begin() + 2, seg.end());
}

inline Bytes sof(uint16_t width, uint16_t height, uint8_t components = 3) {
    Bytes p{8, uint8_t(height >> 8), uint8_t(height), uint8_t(width >> 8), uint8_t(width), components};
    for (uint8_t c = 0; c < components; c++) {
        p.push_back(uint8_t(c + 1));
        p.push_back(0x11);
        p.push_back(0);
    }
    return segment(0xC0, p);
}

// SOI, the given segments, a SOS header, some entropy bytes and EOI.
inline Bytes jpeg(const std::vector<Bytes>& segments) {
    Bytes out{0xFF, 0xD8};
    for (const Bytes& s : segments)
        out.insert(out.end(), s.begin(), s.end());
    const Bytes sos = segment(0xDA, Bytes{1, 1, 0, 0, 63, 0});
    out.insert(out.end(), sos.begin(), sos.end());
    const Bytes tail{0x12, 0x34, 0x56, 0xFF, 0x00, 0x78, 0xFF, 0xD9};
    out.insert(out.end(), tail.begin(), tail.end());
    return out;
}

// Collects what the byte layer prints on one stream.
class Capture {
  public:
    Capture() : m_file(open_memstream(&m_buffer, &m_size)) {}
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    ~Capture() {
        std::fclose(m_file);
        std::free(m_buffer);
    }
    FILE* stream() const { return m_file; }
    std::string text() {
        std::fflush(m_file);
        return std::string(m_buffer, m_size);
    }

  private:
    char* m_buffer = nullptr;
    size_t m_size = 0;
    FILE* m_file;
};

} // namespace exifblocks
