#pragma once

#include "engine/geometry/resampler.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quillet {

// The weights of one axis of a resampling, in fixed point.
namespace Resampler {

// Weights have 14 fraction bits: a weight of one is 16384, and 255 times the
// largest sum of absolute weights stays far inside 32 bits.
constexpr int Shift = 14;
constexpr int One = 1 << Shift;
constexpr int Half = 1 << (Shift - 1);

// Output pixel i is the weighted sum of the `count` source pixels from
// start[i] on.
struct Taps {
    int count = 0;
    int stride = 0; // weights per output pixel: `count` rounded up to even, the extra one zero
    std::vector<int> start;
    std::vector<int16_t> weights;
};

// The taps of an axis of `inSize` source pixels for the "ScaleQuality" code
// (see resample()), edge pixels repeated outwards. Nothing when the kernel
// would span more than 256 source pixels: the weights would round away.
std::optional<Taps> tapsFor(int inSize, const AxisMap& map, int interpolation);

} // namespace Resampler

} // namespace quillet
