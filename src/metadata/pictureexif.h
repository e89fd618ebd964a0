#pragma once

#include "metadata/jpegcontext.h"

#include <QByteArray>
#include <QString>

#include <vips/vips8>

namespace quillet {

// EXIF data of pictures whose EXIF is not read through the JPEG sections:
// HEIC, PNG and WebP hand it over through libvips, TIFF through its own
// directories (libvips's TIFF loader keeps none of it), and a PNG whose eXIf
// chunk follows its pixel data, which libvips passes over, through the chunk.
class PictureExif {
  public:
    // The TIFF structure of the EXIF data (without "Exif\0\0") of the picture
    // at `path`, whose header libvips read into `header` with `loader`; empty
    // when it has none.
    static QByteArray fromHeader(const vips::VImage& header, const char* loader, const QString& path);

    // Decodes such a structure into ctx.Info through the EXIF parser, as if it
    // stood in a JPEG's APP1 segment. Only the EXIF fields are touched.
    static void parse(JpegContext& ctx, const QByteArray& tiff);

    // A binary field of a libvips header ("exif-data", "icc-profile-data",
    // "xmp-data"); empty when it is absent or unreadable.
    static QByteArray headerBlob(const vips::VImage& header, const char* name);
};

} // namespace quillet
