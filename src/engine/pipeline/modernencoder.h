#pragma once

#include "engine/picture.h"

#include <QByteArray>
#include <QString>

namespace quillet {

// What the encoder writes into a WebP, AVIF or JPEG XL output besides the
// pixels. Empty fields are left out.
struct EmbeddedMetadata {
    QByteArray iccProfile;
    QByteArray exif; // the TIFF structure, without "Exif\0\0"
    QByteArray xmp;  // the XMP packet
    // Nothing but the pixels: the EXIF block libvips makes up for a WebP
    // (sizes, resolution, orientation 1) is taken out too.
    bool bare = false;
};

// WebP and JPEG XL outputs through libvips, AVIF (AV1 in a HEIF container)
// through libheif.
// An alpha band is kept only when some pixel is not fully opaque. Nothing
// here throws: a picture that cannot be encoded gives empty bytes.
namespace ModernEncoder {

// How hard the encoder looks for a smaller file. Thorough is each encoder's
// usual setting (WebP effort 4, AVIF speed 5, JPEG XL effort 7). Fast (WebP
// effort 0, AVIF speed 8, JPEG XL effort 3) takes a quarter of that time or
// less on photographs, for a file up to a tenth larger at the same quality
// setting.
enum class Effort { Thorough, Fast };

// `format` is FileFormat::WebP, Avif or JpegXl; quality 0..100 maps onto the
// encoder's 1..100 and goes unused when `lossless` is asked (WebP and JPEG XL
// only: AVIF ignores it). The resolution (dpi) is recorded in the EXIF, when
// there is one.
QByteArray encode(const Picture& picture, int format, int resolution, int quality, bool lossless,
                  const EmbeddedMetadata& metadata, Effort effort = Effort::Thorough);

// Empty when this machine can write `format`; otherwise why not, in a form
// fit for a tool tip and an error message. Found once per process by
// encoding a tiny picture.
QString unavailableReason(int format);

// The metadata an output gets from its input's: the EXIF with the resolution
// set to `resolution` dpi and, with `upright`, the orientation reset to 1 (in
// the EXIF and in the XMP).
EmbeddedMetadata outputMetadata(const QByteArray& iccProfile, const QByteArray& exif, const QByteArray& xmp,
                                int resolution, bool upright);

} // namespace ModernEncoder

} // namespace quillet
