#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace quillet {

// A JPEG held in memory as its header segments and the untouched rest (from
// the SOS marker on): enough to add, drop or edit metadata segments without
// going near the compressed picture. Unlike the 20-section list it keeps
// every segment, however many, and any APP1.
class JpegSegmentList {
  public:
    struct Segment {
        quint8 marker = 0;  // the byte after 0xFF
        QByteArray payload; // without the marker and the two length bytes
    };

    static constexpr qsizetype MaxPayload = 65533;
    static const QByteArray ExifSignature; // "Exif\0\0"
    static const QByteArray XmpSignature;  // "http://ns.adobe.com/xap/1.0/\0"
    // "http://ns.adobe.com/xmp/extension/\0", the pieces of an Extended XMP
    static const QByteArray XmpExtensionSignature;
    static const QByteArray IccSignature; // "ICC_PROFILE\0"

    // None when the bytes are not a JPEG whose header can be walked to its SOS.
    static std::optional<JpegSegmentList> parse(const QByteArray& bytes);
    // The header segments of the JPEG file at `path`, read up to its SOS and
    // no further (the rest of the list is then only the SOS marker).
    static std::optional<JpegSegmentList> readHeader(const QString& path);
    QByteArray toBytes() const;

    QList<Segment>& segments() { return m_segments; }
    const QList<Segment>& segments() const { return m_segments; }

    // Index of the first segment of `marker` whose payload starts with
    // `signature`, or -1.
    qsizetype find(quint8 marker, const QByteArray& signature) const;
    // Where new metadata goes: after a leading JFIF (or JFXX) segment and any
    // EXIF block, so that EXIF keeps its place first among the APP1s.
    qsizetype metadataInsertPoint() const;

    // Replaces any ICC profile with `profile`, split in numbered APP2 chunks
    // as large profiles must be. An empty profile only removes.
    void setIccProfile(const QByteArray& profile);
    // The ICC profile reassembled from its chunks; empty when there is none
    // or its chunks are inconsistent.
    QByteArray iccProfile() const;

  private:
    QList<Segment> m_segments;
    QByteArray m_rest;
};

} // namespace quillet
