#pragma once

// Pictures made in the tests: small JPEGs whose content shows which way is up,
// with an EXIF block of our own choosing in front.

#include "testsupport.h"

#include <QByteArray>
#include <QString>

#include <vips/vips8>

namespace jpegfixtures {

inline constexpr char CameraMake[] = "QuilletCam";
inline constexpr char CaptureDate[] = "2005:02:14 15:32:47";

inline void putShort(QByteArray& b, int v) {
    b.append(char(v & 0xFF));
    b.append(char((v >> 8) & 0xFF));
}
inline void putLong(QByteArray& b, quint32 v) {
    putShort(b, int(v & 0xFFFF));
    putShort(b, int(v >> 16));
}
inline void putEntry(QByteArray& b, int tag, int format, quint32 count, quint32 value) {
    putShort(b, tag);
    putShort(b, format);
    putLong(b, count);
    putLong(b, value);
}

// An APP1 "Exif" segment, Intel byte order: IFD0 with Make, Orientation (left
// out when 0) and the EXIF IFD holding DateTimeOriginal.
inline QByteArray exifSegment(int orientation) {
    const int entries = orientation ? 3 : 2;
    const quint32 exifIfd = 8 + 2 + 12 * entries + 4;
    const quint32 makeAt = exifIfd + 2 + 12 + 4;
    const quint32 dateAt = makeAt + 12;
    QByteArray tiff("II\x2A\x00\x08\x00\x00\x00", 8);
    putShort(tiff, entries);
    putEntry(tiff, 0x010F, 2, sizeof(CameraMake), makeAt);
    if (orientation)
        putEntry(tiff, 0x0112, 3, 1, quint32(orientation));
    putEntry(tiff, 0x8769, 4, 1, exifIfd);
    putLong(tiff, 0);
    putShort(tiff, 1);
    putEntry(tiff, 0x9003, 2, sizeof(CaptureDate), dateAt);
    putLong(tiff, 0);
    tiff.append(CameraMake, sizeof(CameraMake));
    tiff.append(QByteArray(int(dateAt) - int(tiff.size()), '\0'));
    tiff.append(CaptureDate, sizeof(CaptureDate));
    const int length = 2 + 6 + int(tiff.size());
    QByteArray segment("\xFF\xE1", 2);
    segment.append(char(length >> 8));
    segment.append(char(length & 0xFF));
    segment.append("Exif\0\0", 6);
    return segment + tiff;
}

// 64 x 48 pixels: blue with a red block in the top-left corner, so each
// quarter turn moves the block to another corner. Sizes are whole blocks, so
// jpegtran turns every pixel.
inline vips::VImage markedImage() {
    vips::VImage blue =
        testsupport::solidImage(64, 48, 0, 0, 255).extract_band(0, vips::VImage::option()->set("n", 3));
    vips::VImage red =
        testsupport::solidImage(16, 16, 255, 0, 0).extract_band(0, vips::VImage::option()->set("n", 3));
    return blue.insert(red, 0, 0);
}

// Takes the bytes out of an encoder's blob and lets the blob go.
inline QByteArray blobBytes(VipsBlob* blob) {
    size_t size = 0;
    const void* data = vips_blob_get(blob, &size);
    QByteArray bytes(static_cast<const char*>(data), qsizetype(size));
    vips_area_unref(VIPS_AREA(blob));
    return bytes;
}

// The JPEG bytes of markedImage(). EXIF with the given orientation
// (-1: no EXIF block at all, 0: EXIF without orientation). jfifFirst keeps
// the encoder's JFIF segment in front of the EXIF block.
inline QByteArray markedJpeg(int orientation, bool jfifFirst = false) {
    const QByteArray encoded =
        blobBytes(markedImage().jpegsave_buffer(vips::VImage::option()->set("Q", 90)->set("strip", true)));
    // Stripped, the encoder writes no APP0 of its own; a plain JFIF one stands in.
    const QByteArray soi = encoded.left(2);
    const QByteArray app0("\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18);
    const bool hasApp0 = uchar(encoded[3]) == 0xE0;
    const QByteArray rest = encoded.mid(hasApp0 ? 4 + ((uchar(encoded[4]) << 8) | uchar(encoded[5])) : 2);
    if (orientation < 0)
        return soi + app0 + rest;
    const QByteArray exif = exifSegment(orientation);
    return jfifFirst ? soi + app0 + exif + rest : soi + exif + rest;
}

// Decodes a JPEG file without turning it by its tag. Read from memory: libvips
// caches loads by file name, and these files change under the same name.
inline vips::VImage decode(const QString& path) {
    const QByteArray bytes = testsupport::readFile(path);
    return vips::VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "").copy_memory();
}

// Largest difference of any band of any pixel between two pictures of one size.
inline double maxDifference(const vips::VImage& a, const vips::VImage& b) {
    return (a.cast(VIPS_FORMAT_INT) - b.cast(VIPS_FORMAT_INT)).abs().max();
}

} // namespace jpegfixtures
