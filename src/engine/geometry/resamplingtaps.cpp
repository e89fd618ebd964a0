#include "engine/geometry/resamplingtaps.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace quillet {

namespace Resampler {

namespace {

// A wider kernel loses its weights to rounding; such reductions go elsewhere.
constexpr int MaxTaps = 256;

enum class Filter { Linear, Cubic, Lanczos3 };

double radiusOf(Filter filter) {
    switch (filter) {
    case Filter::Linear:
        return 1;
    case Filter::Cubic:
        return 2;
    case Filter::Lanczos3:
        break;
    }
    return 3;
}

double sinc(double x) {
    if (x == 0)
        return 1;
    const double px = std::numbers::pi * x;
    return std::sin(px) / px;
}

double weightOf(Filter filter, double x) {
    x = std::abs(x);
    switch (filter) {
    case Filter::Linear:
        return x < 1 ? 1 - x : 0;
    case Filter::Cubic: // Catmull-Rom
        if (x < 1)
            return (1.5 * x - 2.5) * x * x + 1;
        return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
    case Filter::Lanczos3:
        break;
    }
    return x < 3 ? sinc(x) * sinc(x / 3) : 0;
}

Filter filterFor(int interpolation, double scale) {
    if (interpolation == 2)
        return Filter::Linear;
    return scale >= 1 ? Filter::Cubic : Filter::Lanczos3;
}

} // namespace

std::optional<Taps> tapsFor(int inSize, const AxisMap& map, int interpolation) {
    const Filter filter = filterFor(interpolation, map.scale);
    // A reducing kernel is stretched over the source so every source pixel
    // counts; an enlarging one samples the source as it is.
    const double widen = map.scale < 1 ? 1 / map.scale : 1;
    const double radius = radiusOf(filter) * widen;
    const int span = int(std::ceil(2 * radius)) + 1;
    if (!std::isfinite(radius) || span > MaxTaps)
        return std::nullopt;
    Taps taps;
    taps.count = std::min(span, inSize);
    taps.stride = (taps.count + 1) / 2 * 2;
    taps.start.resize(size_t(map.outSize));
    taps.weights.assign(size_t(map.outSize) * size_t(taps.stride), 0);
    std::vector<double> weights(size_t(taps.count));
    for (int i = 0; i < map.outSize; ++i) {
        // Where the output pixel's centre falls, in source pixel indexes.
        // Beyond the edges every weight lands on the edge pixel anyway.
        const double centre =
            std::clamp(map.from + (i + 0.5 - map.offset) / map.scale - 0.5, -radius - 1, inSize + radius);
        const int first = int(std::floor(centre - radius)) + 1;
        const int start = std::clamp(first, 0, inSize - taps.count);
        std::fill(weights.begin(), weights.end(), 0.0);
        double sum = 0;
        for (int j = first; j < first + span; ++j) {
            const double w = weightOf(filter, (j - centre) / widen);
            weights[size_t(std::clamp(j, 0, inSize - 1) - start)] += w;
            sum += w;
        }
        int16_t* out = &taps.weights[size_t(i) * size_t(taps.stride)];
        int total = 0;
        int largest = 0;
        for (int k = 0; k < taps.count; ++k) {
            out[k] = int16_t(std::lround(weights[size_t(k)] / sum * One));
            total += out[k];
            if (out[k] > out[largest])
                largest = k;
        }
        // The rounded weights must still sum to one, or flat areas drift.
        out[largest] = int16_t(out[largest] + One - total);
        taps.start[size_t(i)] = start;
    }
    return taps;
}

} // namespace Resampler

} // namespace quillet
