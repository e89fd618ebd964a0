#include "engine/geometry/geometrydrawing.h"

#include "engine/geometry/geometryerror.h"
#include "engine/geometry/resampler.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace quillet {

using SizeMath::Layout;
using SizeMath::RectF;
using vips::VImage;

namespace GeometryDrawing {

namespace {

// Beyond a gigapixel nothing downstream can encode the canvas in reasonable time.
constexpr double MaxCanvasArea = double(1 << 30);
constexpr double Epsilon = 1e-3;

int canvasSide(float side, const char* name) {
    if (!(side >= 1) || side > 10'000'000)
        throw GeometryError(std::string("Cannot make a canvas ") + name + " of " + std::to_string(side) +
                            " pixels");
    return int(std::lround(side));
}

bool isWhole(double v) {
    return std::abs(v - std::round(v)) < Epsilon;
}

vips::VInterpolate interpolator(int interpolation) {
    switch (interpolation) {
    case 1:
        return vips::VInterpolate::new_from_name("nearest");
    case 2:
        return vips::VInterpolate::new_from_name("bilinear");
    default:
        return vips::VInterpolate::new_from_name("bicubic");
    }
}

VipsKernel kernel(int interpolation) {
    switch (interpolation) {
    case 1:
        return VIPS_KERNEL_NEAREST;
    case 2:
        return VIPS_KERNEL_LINEAR;
    default:
        return VIPS_KERNEL_LANCZOS3;
    }
}

// Pixels as the contract promises them (sRGB uchar, three bands or four),
// whatever came in: 16-bit and grey pictures are converted, not clipped.
VImage normalized(VImage image) {
    if (image.bands() < 3 || image.format() != VIPS_FORMAT_UCHAR)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    return image;
}

VImage withAlpha(const VImage& image) {
    return image.bands() == 3 ? image.bandjoin_const({255}) : image;
}

// One resampling of `premultiplied` onto a cw x ch canvas with the continuous
// mapping X' = dx + (X - fx) * kx (likewise for y). Edge pixels are repeated
// outwards; the caller masks what lies outside the picture.
VImage resample(const VImage& premultiplied, double fx, double fy, double kx, double ky, double dx, double dy,
                int cw, int ch, int interpolation) {
    const double tx = dx - fx * kx;
    const double ty = dy - fy * ky;
    // An option list is freed by the operation it is given to, so each use
    // makes its own; one made up front leaked whenever no embed took it.
    const auto copyEdges = [] { return VImage::option()->set("extend", VIPS_EXTEND_COPY); };
    if (std::abs(kx - 1) < 1e-9 && std::abs(ky - 1) < 1e-9 && isWhole(tx) && isWhole(ty)) {
        if (std::lround(tx) == 0 && std::lround(ty) == 0 && premultiplied.width() == cw &&
            premultiplied.height() == ch)
            return premultiplied;
        return premultiplied.embed(int(std::lround(tx)), int(std::lround(ty)), cw, ch, copyEdges());
    }
    if (Resampler::outrunsLibvips(kx, ky))
        if (auto drawn =
                Resampler::resample(premultiplied, {fx, kx, dx, cw}, {fy, ky, dy, ch}, interpolation))
            return *drawn;
    if (interpolation == 1 || (kx >= 1 && ky >= 1)) {
        // One affine from pixel centres to pixel centres. The nearest
        // interpolator floors its coordinate, so it must not get the half
        // pixel that centres the others.
        const double centre = interpolation == 1 ? 0.0 : 0.5;
        return premultiplied.affine({kx, 0, 0, ky}, VImage::option()
                                                        ->set("interpolate", interpolator(interpolation))
                                                        ->set("idx", centre)
                                                        ->set("idy", centre)
                                                        ->set("odx", tx - 0.5)
                                                        ->set("ody", ty - 0.5)
                                                        ->set("oarea", std::vector<int>{0, 0, cw, ch})
                                                        ->set("extend", VIPS_EXTEND_COPY));
    }
    // Reductions go through resize, which shrinks by whole factors and then
    // filters, so nothing aliases. Only the part of the picture that is drawn
    // (plus room for the kernel) is resized.
    const double marginX = std::ceil(3 / kx) + 2;
    const double marginY = std::ceil(3 / ky) + 2;
    const double iw = premultiplied.width();
    const double ih = premultiplied.height();
    // The source span that reaches the canvas.
    const double fromX = fx - dx / kx, toX = fx + (cw - dx) / kx;
    const double fromY = fy - dy / ky, toY = fy + (ch - dy) / ky;
    const int bx = int(std::clamp(std::floor(fromX - marginX), 0.0, iw - 1));
    const int by = int(std::clamp(std::floor(fromY - marginY), 0.0, ih - 1));
    const double right = std::min(iw, std::ceil(toX + marginX));
    const double bottom = std::min(ih, std::ceil(toY + marginY));
    const int bw = std::max(1, int(right) - bx);
    const int bh = std::max(1, int(bottom) - by);
    VImage box = (bx == 0 && by == 0 && bw == iw && bh == ih) ? premultiplied
                                                              : premultiplied.extract_area(bx, by, bw, bh);
    const VImage resized =
        box.resize(kx, VImage::option()->set("vscale", ky)->set("kernel", kernel(interpolation)));
    const double ox = dx - (fx - bx) * kx;
    const double oy = dy - (fy - by) * ky;
    if (isWhole(ox) && isWhole(oy)) {
        if (std::lround(ox) == 0 && std::lround(oy) == 0 && resized.width() == cw && resized.height() == ch)
            return resized;
        return resized.embed(int(std::lround(ox)), int(std::lround(oy)), cw, ch, copyEdges());
    }
    return resized.affine({1, 0, 0, 1}, VImage::option()
                                            ->set("interpolate", interpolator(2))
                                            ->set("odx", ox)
                                            ->set("ody", oy)
                                            ->set("oarea", std::vector<int>{0, 0, cw, ch})
                                            ->set("extend", VIPS_EXTEND_COPY));
}

// Share of each pixel column (or row) that lies inside [from, to).
VImage coverage(int length, double from, double to, bool horizontal) {
    std::vector<double> cover(length);
    for (int i = 0; i < length; ++i)
        cover[i] = std::clamp(std::min(i + 1.0, to) - std::max(double(i), from), 0.0, 1.0);
    return horizontal ? VImage::new_matrix(length, 1, cover.data(), length)
                      : VImage::new_matrix(1, length, cover.data(), length);
}

bool covers(double from, double to, int length) {
    return from <= Epsilon && to >= length - Epsilon;
}

} // namespace

Picture draw(const Picture& picture, const Layout& layout, int interpolation,
             const std::optional<RgbaColor>& background) {
    if (!picture.image.get_image() || picture.width <= 0 || picture.height <= 0)
        throw GeometryError("No picture to draw");
    const int cw = canvasSide(layout.canvas.width, "width");
    const int ch = canvasSide(layout.canvas.height, "height");
    if (double(cw) * ch > MaxCanvasArea)
        throw GeometryError("Canvas of " + std::to_string(cw) + " x " + std::to_string(ch) + " is too large");

    try {
        const VImage image = normalized(picture.image);
        const double sx = image.width() / picture.width;
        const double sy = image.height() / picture.height;
        const RectF& src = layout.source;
        const RectF& dst = layout.destination;
        const double fx = src.x * sx, fy = src.y * sy, fw = src.width * sx, fh = src.height * sy;
        const bool drawsSomething = fw > 0 && fh > 0 && dst.width > 0 && dst.height > 0;
        const double kx = drawsSomething ? dst.width / fw : 1;
        const double ky = drawsSomething ? dst.height / fh : 1;

        // Where the picture's own pixels land: the destination, cut to the
        // picture's bounds (a crop rectangle may reach beyond them).
        const double left = std::max({0.0, double(dst.x), dst.x - fx * kx});
        const double top = std::max({0.0, double(dst.y), dst.y - fy * ky});
        const double right =
            std::min({double(cw), double(dst.x + dst.width), dst.x + (image.width() - fx) * kx});
        const double bottom =
            std::min({double(ch), double(dst.y + dst.height), dst.y + (image.height() - fy) * ky});
        const bool fillsCanvas = drawsSomething && covers(left, right, cw) && covers(top, bottom, ch);

        const bool opaque = picture.opaque || image.bands() == 3;
        // An opaque picture that covers the canvas needs neither its alpha
        // nor the background: only the colour bands are resampled, and the
        // result stays without alpha.
        if (opaque && fillsCanvas) {
            const VImage rgb =
                image.bands() == 3 ? image : image.extract_band(0, VImage::option()->set("n", 3));
            const VImage drawn = resample(rgb, fx, fy, kx, ky, dst.x, dst.y, cw, ch, interpolation);
            return Picture{drawn.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)),
                           double(cw), double(ch), true};
        }
        // Opaque pixels are their own premultiplied form, so they resample as
        // uchar; anything else is premultiplied first so edges do not darken.
        const VImage premultiplied = opaque ? withAlpha(image) : image.premultiply();
        VImage drawn = drawsSomething
                           ? resample(premultiplied, fx, fy, kx, ky, dst.x, dst.y, cw, ch, interpolation)
                           : VImage::black(cw, ch, VImage::option()->set("bands", 4));

        if (drawsSomething && !fillsCanvas) {
            const VImage mask =
                coverage(cw, left, right, true).zoom(1, ch) * coverage(ch, top, bottom, false).zoom(cw, 1);
            drawn = drawn.cast(VIPS_FORMAT_FLOAT) * mask;
        }
        const bool opaqueBackground = background && background->alpha8() == 255;
        if (background) {
            const double a = background->alpha8();
            const std::vector<double> fill{background->red8() * a / 255, background->green8() * a / 255,
                                           background->blue8() * a / 255, a};
            const VImage uncovered = drawn.extract_band(3).linear(-1.0 / 255, 1.0);
            drawn = drawn + uncovered.linear(fill, {0, 0, 0, 0});
        }
        if (!opaqueBackground)
            drawn = drawn.unpremultiply();
        VImage out = drawn.linear(1, 0.5).cast(VIPS_FORMAT_UCHAR);
        out = out.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
        return Picture{out, double(cw), double(ch), opaqueBackground || (opaque && fillsCanvas)};
    } catch (const vips::VError& e) {
        throw GeometryError(std::string("Drawing failed: ") + e.what());
    }
}

} // namespace GeometryDrawing

} // namespace quillet
