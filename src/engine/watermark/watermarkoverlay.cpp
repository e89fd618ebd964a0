#include "engine/watermark/watermarkoverlay.h"

#include <algorithm>
#include <cmath>

namespace quillet {

using vips::VImage;

namespace watermarkoverlay {

namespace {

VImage firstBands(const VImage& image, int count) {
    return image.extract_band(0, VImage::option()->set("n", count));
}

bool isRgba8(const VImage& image) {
    return image.bands() == 4 && image.format() == VIPS_FORMAT_UCHAR &&
           image.interpretation() == VIPS_INTERPRETATION_sRGB;
}

} // namespace

VImage toRgba8(const VImage& input) {
    if (isRgba8(input))
        return input;
    VImage image = input;
    const VipsInterpretation kind = image.interpretation();
    const bool plain8 = image.format() == VIPS_FORMAT_UCHAR &&
                        (kind == VIPS_INTERPRETATION_sRGB || kind == VIPS_INTERPRETATION_B_W ||
                         kind == VIPS_INTERPRETATION_MULTIBAND);
    if (!plain8) {
        // Grey, 16-bit, CMYK, Lab and friends; an image that declares a
        // space libvips has no route from is taken band by band below.
        try {
            image = image.colourspace(VIPS_INTERPRETATION_sRGB);
        } catch (const vips::VError&) {
        }
    }
    if (image.format() == VIPS_FORMAT_USHORT)
        image = image / 257.0;
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);

    VImage rgb;
    VImage alpha;
    bool hasAlpha = false;
    if (image.bands() < 3) {
        const VImage grey = image[0];
        rgb = grey.bandjoin(grey).bandjoin(grey);
        hasAlpha = image.bands() == 2;
        if (hasAlpha)
            alpha = image[1];
    } else {
        rgb = firstBands(image, 3);
        hasAlpha = image.bands() >= 4;
        if (hasAlpha)
            alpha = image[3];
    }
    const VImage rgba = hasAlpha ? rgb.bandjoin(alpha) : rgb.bandjoin_const({255});
    return rgba.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

VImage layerFromRgba(const VImage& rgba8, double opacity) {
    const VImage pixels = rgba8.cast(VIPS_FORMAT_FLOAT);
    const VImage cover = pixels[3] * (std::clamp(opacity, 0.0, 1.0) / 255.0);
    return (firstBands(pixels, 3) * cover).bandjoin(cover * 255.0);
}

VImage layerFromMask(const VImage& mask, const RgbaColor& color) {
    const VImage cover = mask.cast(VIPS_FORMAT_FLOAT) * (std::clamp(color.alpha, 0.0, 1.0) / 255.0);
    const std::vector<double> rgb{std::clamp(color.red, 0.0, 1.0) * 255.0,
                                  std::clamp(color.green, 0.0, 1.0) * 255.0,
                                  std::clamp(color.blue, 0.0, 1.0) * 255.0};
    return (cover * rgb).bandjoin(cover * 255.0);
}

VImage solidLayer(int width, int height, const RgbaColor& color) {
    const VImage cover =
        VImage::black(std::max(width, 1), std::max(height, 1)).cast(VIPS_FORMAT_FLOAT) + 255.0;
    return layerFromMask(cover, color);
}

void drawOver(VImage& base, const VImage& layer, double left, double top) {
    if (!std::isfinite(left) || !std::isfinite(top))
        return;
    const double ix = std::floor(left);
    const double iy = std::floor(top);
    const double fx = left - ix;
    const double fy = top - iy;

    // A fractional shift is the bilinear mix of the layer and its copies one
    // pixel to the right and one pixel down.
    VImage shifted = layer;
    if (fx > 0 || fy > 0) {
        const int w = layer.width() + (fx > 0 ? 1 : 0);
        const int h = layer.height() + (fy > 0 ? 1 : 0);
        const auto at = [&](int dx, int dy) { return layer.embed(dx, dy, w, h); };
        shifted = at(0, 0) * ((1 - fx) * (1 - fy));
        if (fx > 0)
            shifted = shifted + at(1, 0) * (fx * (1 - fy));
        if (fy > 0)
            shifted = shifted + at(0, 1) * ((1 - fx) * fy);
        if (fx > 0 && fy > 0)
            shifted = shifted + at(1, 1) * (fx * fy);
    }

    const double x0 = std::max(ix, 0.0);
    const double y0 = std::max(iy, 0.0);
    const double x1 = std::min(ix + shifted.width(), double(base.width()));
    const double y1 = std::min(iy + shifted.height(), double(base.height()));
    if (x1 <= x0 || y1 <= y0)
        return;
    const int cx = int(x0), cy = int(y0), cw = int(x1 - x0), ch = int(y1 - y0);

    const VImage over = shifted.crop(int(x0 - ix), int(y0 - iy), cw, ch);
    const VImage under = base.crop(cx, cy, cw, ch).cast(VIPS_FORMAT_FLOAT);
    const VImage overAlpha = over[3] / 255.0;
    const VImage underKept = under[3] / 255.0 * (1.0 - overAlpha);
    const VImage alpha = overAlpha + underKept;
    const VImage colour = firstBands(over, 3) + firstBands(under, 3) * underKept;
    const VImage straight = (alpha > 0.0).ifthenelse(colour / alpha, 0.0);
    const VImage blended = straight.bandjoin(alpha * 255.0).rint().cast(VIPS_FORMAT_UCHAR);
    base = base.insert(blended, cx, cy);
}

} // namespace watermarkoverlay

} // namespace quillet
