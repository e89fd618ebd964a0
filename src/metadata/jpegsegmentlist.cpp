#include "metadata/jpegsegmentlist.h"

#include <QFile>

#include <map>

namespace quillet {

const QByteArray JpegSegmentList::ExifSignature("Exif\0\0", 6);
const QByteArray JpegSegmentList::XmpSignature("http://ns.adobe.com/xap/1.0/\0", 29);
const QByteArray JpegSegmentList::XmpExtensionSignature("http://ns.adobe.com/xmp/extension/\0", 35);
const QByteArray JpegSegmentList::IccSignature("ICC_PROFILE\0", 12);

namespace {

constexpr quint8 App0 = 0xE0, App1 = 0xE1, App2 = 0xE2, Sos = 0xDA;

quint8 at(const QByteArray& bytes, qsizetype i) {
    return quint8(bytes[i]);
}

} // namespace

std::optional<JpegSegmentList> JpegSegmentList::parse(const QByteArray& bytes) {
    if (bytes.size() < 4 || at(bytes, 0) != 0xFF || at(bytes, 1) != 0xD8)
        return std::nullopt;
    JpegSegmentList list;
    qsizetype pos = 2;
    for (;;) {
        if (pos >= bytes.size() || at(bytes, pos) != 0xFF)
            return std::nullopt;
        const qsizetype markerStart = pos;
        while (pos < bytes.size() && at(bytes, pos) == 0xFF)
            ++pos;
        if (pos + 2 >= bytes.size())
            return std::nullopt;
        const quint8 marker = at(bytes, pos++);
        if (marker == Sos) {
            list.m_rest = bytes.mid(markerStart);
            return list;
        }
        // Standalone markers and an early EOI have no place in a header.
        if (marker == 0x01 || marker == 0xD8 || marker == 0xD9 || (marker >= 0xD0 && marker <= 0xD7))
            return std::nullopt;
        const qsizetype length = at(bytes, pos) << 8 | at(bytes, pos + 1);
        if (length < 2 || pos + length > bytes.size())
            return std::nullopt;
        list.m_segments.append({marker, bytes.mid(pos + 2, length - 2)});
        pos += length;
    }
}

std::optional<JpegSegmentList> JpegSegmentList::readHeader(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray header = file.read(2);
    // Marker by marker: 0xFF and any fill bytes, the marker, then its length
    // and payload. parse() judges what was read.
    for (;;) {
        char c = 0;
        if (!file.getChar(&c) || quint8(c) != 0xFF)
            return std::nullopt;
        header += c;
        while (quint8(c) == 0xFF) {
            if (!file.getChar(&c))
                return std::nullopt;
            header += c;
        }
        if (quint8(c) == Sos)
            return parse(header + file.read(2));
        const QByteArray length = file.read(2);
        if (length.size() != 2)
            return std::nullopt;
        header += length;
        const qsizetype size = at(length, 0) << 8 | at(length, 1);
        if (size < 2)
            return std::nullopt;
        const QByteArray payload = file.read(size - 2);
        if (payload.size() != size - 2)
            return std::nullopt;
        header += payload;
    }
}

QByteArray JpegSegmentList::toBytes() const {
    QByteArray out("\xFF\xD8", 2);
    for (const Segment& segment : m_segments) {
        const qsizetype length = segment.payload.size() + 2;
        out += char(0xFF);
        out += char(segment.marker);
        out += char(length >> 8);
        out += char(length & 0xFF);
        out += segment.payload;
    }
    return out + m_rest;
}

qsizetype JpegSegmentList::find(quint8 marker, const QByteArray& signature) const {
    for (qsizetype i = 0; i < m_segments.size(); ++i)
        if (m_segments[i].marker == marker && m_segments[i].payload.startsWith(signature))
            return i;
    return -1;
}

qsizetype JpegSegmentList::metadataInsertPoint() const {
    qsizetype i = 0;
    if (i < m_segments.size() && m_segments[i].marker == App0)
        ++i;
    const qsizetype exif = find(App1, ExifSignature);
    return exif >= i ? exif + 1 : i;
}

void JpegSegmentList::setIccProfile(const QByteArray& profile) {
    qsizetype insertAt = -1;
    for (qsizetype i = m_segments.size() - 1; i >= 0; --i) {
        if (m_segments[i].marker == App2 && m_segments[i].payload.startsWith(IccSignature)) {
            m_segments.removeAt(i);
            insertAt = i;
        }
    }
    if (profile.isEmpty())
        return;
    // Chunks are numbered from 1 in one byte, each after the signature.
    constexpr qsizetype chunkSize = MaxPayload - 14;
    const qsizetype count = (profile.size() + chunkSize - 1) / chunkSize;
    if (count > 255)
        return;
    if (insertAt < 0)
        insertAt = metadataInsertPoint();
    for (qsizetype n = 0; n < count; ++n) {
        QByteArray payload = IccSignature;
        payload += char(n + 1);
        payload += char(count);
        payload += profile.mid(n * chunkSize, chunkSize);
        m_segments.insert(insertAt + n, {App2, payload});
    }
}

QByteArray JpegSegmentList::iccProfile() const {
    std::map<int, QByteArray> chunks;
    int count = 0;
    for (const Segment& segment : m_segments) {
        if (segment.marker != App2 || !segment.payload.startsWith(IccSignature) ||
            segment.payload.size() < 14)
            continue;
        const int number = at(segment.payload, 12);
        if (count != 0 && count != at(segment.payload, 13))
            return {};
        count = at(segment.payload, 13);
        chunks[number] = segment.payload.mid(14);
    }
    if (count == 0 || int(chunks.size()) != count || chunks.begin()->first != 1 ||
        chunks.rbegin()->first != count)
        return {};
    QByteArray profile;
    for (const auto& [number, chunk] : chunks)
        profile += chunk;
    return profile;
}

} // namespace quillet
