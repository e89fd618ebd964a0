#pragma once

#include <vips/vips8>

namespace quillet {

// A picture in the batch pipeline: pixels plus the size the arithmetic works in.
//
// `width` and `height` are the logical size in pixels of the original picture.
// `image` holds the pixels, sRGB 8-bit: three bands for a picture without
// alpha, four with straight (not premultiplied) alpha. The pixels may be fewer than the logical size when the
// loader used shrink-on-load; geometry maps logical coordinates onto them by
// image.width() / width. After any geometry step the two agree.
struct Picture {
    vips::VImage image;
    double width = 0;
    double height = 0;
    // Every alpha is 255 (always so for three bands; the loader knows it for
    // pictures without alpha).
    // Only a hint for speed: false is always safe, and geometry keeps it up
    // to date on the pictures it returns.
    bool opaque = false;

    // Shrink factor of the pixels against the logical size (1 when they agree).
    double pixelScale() const { return width > 0 ? image.width() / width : 1.0; }
};

} // namespace quillet
