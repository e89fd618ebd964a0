#pragma once

#include <vips/vips8>

#include <optional>

namespace quillet {

// Separable resampling of 8-bit pictures, up or down, in two one-dimensional
// passes over memory. libvips 8.14 enlarges through its 2-D interpolators one
// output pixel at a time; two passes with precomputed fixed-point weights do
// the same work several times faster, and reductions come out alike.
namespace Resampler {

// How one axis maps the source onto the output, in continuous coordinates
// where pixel i covers [i, i + 1): X' = offset + (X - from) * scale.
struct AxisMap {
    double from = 0;
    double scale = 1;
    double offset = 0;
    int outSize = 0;
};

// The picture's pixels drawn through the two maps into an image of
// x.outSize x y.outSize with the same bands, edge pixels repeated outwards.
// `interpolation` is the "ScaleQuality" code: 2 is linear; 0 and 3 are
// Catmull-Rom cubic where the axis enlarges and lanczos3 where it reduces.
// Nothing (and the caller takes another road) for nearest-neighbour, for
// anything but 1 to 4 bands of 8 bits, or for reductions so steep that the
// kernel would span hundreds of pixels.
std::optional<vips::VImage> resample(const vips::VImage& image, const AxisMap& x, const AxisMap& y,
                                     int interpolation);

// Whether resample() beats libvips at these scales on this build: always
// with the x86-64 vector passes; elsewhere only when enlarging, since the
// portable passes reduce more slowly than libvips's reduce.
bool outrunsLibvips(double scaleX, double scaleY);

// The vector instructions the passes may use at most (x86-64 only; the
// processor may have fewer). Every choice gives the same bytes; tests compare
// them. AVX2 by default.
enum class VectorUnits { None, Sse2, Avx2 };
void useVectorUnits(VectorUnits most);

} // namespace Resampler

} // namespace quillet
