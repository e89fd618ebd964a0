#pragma once

#include "settings/rgbacolor.h"

#include <vips/vips8>

#include <stdexcept>

namespace quillet {

// Pixel work shared by the image and the text watermark.
//
// A layer is a 4-band float image with premultiplied colour: bands 0-2 hold
// colour x coverage on the 0..255 scale, band 3 the coverage on 0..255.
// Premultiplying before any shift or blur keeps transparent edges from
// bleeding their (meaningless) colour into the picture.
// A watermark that could not be drawn (libvips refused an operation).
class WatermarkError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

namespace watermarkoverlay {

// Any decoded image as 4-band sRGB uchar with straight alpha; opaque when the
// source had no alpha.
vips::VImage toRgba8(const vips::VImage& image);

// A straight-alpha RGBA uchar image as a layer, its alpha scaled by opacity (0..1).
vips::VImage layerFromRgba(const vips::VImage& rgba8, double opacity);

// A coverage mask (one band, 0..255, any numeric format) painted in one colour.
vips::VImage layerFromMask(const vips::VImage& mask, const RgbaColor& color);

// A rectangle of one colour.
vips::VImage solidLayer(int width, int height, const RgbaColor& color);

// Composites the layer source-over onto base (4-band sRGB uchar, straight
// alpha) with its top-left corner at (left, top), origin at the top left.
// Fractional positions are honoured by bilinear weighting, so a one-pixel
// step lands as partial coverage instead of being rounded away. Whatever
// falls outside base is clipped.
void drawOver(vips::VImage& base, const vips::VImage& layer, double left, double top);

} // namespace watermarkoverlay

} // namespace quillet
