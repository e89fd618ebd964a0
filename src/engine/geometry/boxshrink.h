#pragma once

#include <vips/vips8>

namespace quillet {

// The average of each block of `factor` x `factor` pixels of an 8-bit
// picture without alpha, as an image whose rows are made when they are asked
// for: over a sequential loader the decoder's rows stream through it and the
// whole picture is never held. Sides are rounded to the nearest whole block,
// the last row and column of the picture repeated outwards to fill a block
// that crosses the edge. Each output byte is rounded once from the block's
// sum; libvips's shrink rounds once per direction and costs two to four
// times as much.
namespace BoxShrink {

// Whether shrink() takes the picture: 8-bit bands with no alpha.
bool takes(const vips::VImage& image);
// Throws vips::VError when the image cannot be made.
vips::VImage shrink(const vips::VImage& image, int factor);

} // namespace BoxShrink

} // namespace quillet
