#pragma once

// The orientation-1 sample stored in each of the eight EXIF orientations, for
// the batch and the in-place rotation to turn back upright.

#include "inplace/jpegfixtures.h"
#include "testsupport.h"

#include <QDir>

namespace quillet {

namespace orientationset {

// libvips's autorot, an independent reading of the EXIF orientations.
inline vips::VImage autorot(const vips::VImage& image, int orientation) {
    vips::VImage tagged = image.copy();
    tagged.set(VIPS_META_ORIENTATION, orientation);
    return tagged.autorot();
}

// Writes "o<N>.jpg" for N = 1..8 into `dir`: the upright picture cropped to
// whole 16-pixel blocks, stored as a camera with orientation N would store
// it, with an EXIF block behind a JFIF segment for the odd ones. Returns the
// upright picture as written (decoded), or an empty image when the sample
// is absent.
inline vips::VImage write(const QString& dir, const QString& uprightSample) {
    const vips::VImage upright = jpegfixtures::decode(uprightSample).crop(0, 0, 592, 448);
    const QByteArray jfif("\xFF\xE0\x00\x10JFIF\x00\x01\x01\x01\x00\x48\x00\x48\x00\x00", 18);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        // Each orientation undoes itself but 6 and 8, which undo each other.
        const int inverse = orientation == 6 ? 8 : orientation == 8 ? 6 : orientation;
        void* data = nullptr;
        size_t size = 0;
        autorot(upright, inverse).write_to_buffer(".jpg[Q=95,strip]", &data, &size);
        const QByteArray encoded(static_cast<const char*>(data), qsizetype(size));
        g_free(data);
        const QByteArray exif = jpegfixtures::exifSegment(orientation);
        testsupport::writeFile(QDir(dir).filePath(QStringLiteral("o%1.jpg").arg(orientation)),
                               encoded.left(2) + (orientation % 2 ? jfif + exif : exif) + encoded.mid(2));
    }
    return upright;
}

// The mean difference of the samples of two pictures of one size.
inline double meanDifference(const vips::VImage& a, const vips::VImage& b) {
    return (a.cast(VIPS_FORMAT_INT) - b.cast(VIPS_FORMAT_INT)).abs().avg();
}

} // namespace orientationset

} // namespace quillet
