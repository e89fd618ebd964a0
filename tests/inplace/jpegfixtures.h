#pragma once

// Small JPEGs made in the tests, whose content shows which way is up, with an
// EXIF block of the test's choosing in front.

#include "testsupport.h"

#include <QProcess>

namespace jpegfixtures {

inline constexpr char CaptureDate[] = "2005:02:14 15:32:47";

// APP1 "Exif", Intel order: IFD0 with Orientation (none when 0) and the EXIF
// IFD holding DateTimeOriginal.
inline QByteArray exifSegment(int orientation) {
    const auto put = [](QByteArray& b, quint32 v, int n) {
        for (int i = 0; i < n; ++i)
            b.append(char(v >> (8 * i)));
    };
    const auto entry = [&put](QByteArray& b, int tag, int format, quint32 count, quint32 value) {
        put(b, tag, 2), put(b, format, 2), put(b, count, 4), put(b, value, 4);
    };
    const int entries = orientation ? 2 : 1;
    const quint32 exifIfd = 8 + 2 + 12 * entries + 4;
    QByteArray tiff("II\x2A\x00\x08\x00\x00\x00", 8);
    put(tiff, entries, 2);
    if (orientation)
        entry(tiff, 0x0112, 3, 1, quint32(orientation));
    entry(tiff, 0x8769, 4, 1, exifIfd);
    put(tiff, 0, 4), put(tiff, 1, 2);
    entry(tiff, 0x9003, 2, sizeof(CaptureDate), exifIfd + 18);
    put(tiff, 0, 4);
    tiff.append(CaptureDate, sizeof(CaptureDate));
    const int length = 8 + int(tiff.size());
    return QByteArray("\xFF\xE1", 2) + char(length >> 8) + char(length & 0xFF) + QByteArray("Exif\0\0", 6) +
           tiff;
}

inline QByteArray blobBytes(VipsBlob* blob) {
    size_t size = 0;
    const void* data = vips_blob_get(blob, &size);
    QByteArray bytes(static_cast<const char*>(data), qsizetype(size));
    vips_area_unref(VIPS_AREA(blob));
    return bytes;
}

// 64 x 48, blue with a red 16 x 16 corner top left: every quarter turn moves
// the corner, and whole blocks let jpegtran turn every pixel. orientation -1
// gives no EXIF at all; jfifFirst puts a JFIF segment in front of the EXIF.
inline QByteArray markedJpeg(int orientation, bool jfifFirst = false) {
    const auto rgb = [](const vips::VImage& image) {
        return image.extract_band(0, vips::VImage::option()->set("n", 3));
    };
    const vips::VImage image = rgb(testsupport::solidImage(64, 48, 0, 0, 255))
                                   .insert(rgb(testsupport::solidImage(16, 16, 255, 0, 0)), 0, 0);
    // Stripped, the encoder writes SOI and then its tables, no APP0.
    const QByteArray encoded = blobBytes(image.jpegsave_buffer(vips::VImage::option()->set("strip", true)));
    const QByteArray jfif("\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18);
    const QByteArray exif = orientation < 0 ? QByteArray() : exifSegment(orientation);
    return encoded.left(2) + (jfifFirst ? jfif + exif : exif) + encoded.mid(2);
}

// Decoded from memory: libvips caches loads by file name, and these files
// change under one name.
inline vips::VImage decode(const QString& path) {
    const QByteArray bytes = testsupport::readFile(path);
    return vips::VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "").copy_memory();
}

// What a plain run of the tool makes of the file.
inline vips::VImage plainRotation(const QString& path, int degrees) {
    const QString out = path + QStringLiteral(".plain");
    QProcess::execute(QStringLiteral("jpegtran"), {QStringLiteral("-rotate"), QString::number(degrees),
                                                   QStringLiteral("-outfile"), out, path});
    const vips::VImage image = decode(out);
    QFile::remove(out);
    return image;
}

inline double maxDifference(const vips::VImage& a, const vips::VImage& b) {
    return (a.cast(VIPS_FORMAT_INT) - b.cast(VIPS_FORMAT_INT)).abs().max();
}

} // namespace jpegfixtures
