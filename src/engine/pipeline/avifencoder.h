#pragma once

#include "engine/pipeline/modernencoder.h"

#include <vips/vips8>

namespace quillet {

// AVIF through libheif's own interface rather than libvips's saver, which in
// libvips 8.14 drops the XMP packet: AV1 in a HEIF container with the
// profile, the EXIF and the XMP as items of the primary picture.
namespace AvifEncoder {

// `pixels` is 8-bit sRGB, with or without alpha; quality is 1..100. Throws
// std::runtime_error with libheif's message when encoding fails.
QByteArray encode(const vips::VImage& pixels, int quality, const EmbeddedMetadata& metadata,
                  ModernEncoder::Effort effort);

} // namespace AvifEncoder

} // namespace quillet
