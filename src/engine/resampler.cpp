#include "engine/resampler.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <numbers>
#include <thread>
#include <vector>

#if defined(__x86_64__) || defined(__i386__)
#define QUILLET_AVX2_PASSES 1
#include <immintrin.h>
#endif

namespace Resampler {

namespace {

// Weights are fixed point with 14 fraction bits: a weight of one is 16384,
// and 255 times the largest sum of absolute weights stays far inside 32 bits.
constexpr int Shift = 14;
constexpr int One = 1 << Shift;
constexpr int Half = 1 << (Shift - 1);
// A wider kernel loses its weights to rounding; such reductions go elsewhere.
constexpr int MaxTaps = 256;
// Below this many output pixels, threads cost more than they save.
constexpr double ThreadedArea = 500'000;

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

// The weights of one axis: output pixel i is the weighted sum of the `count`
// source pixels from start[i] on.
struct Taps {
    int count = 0;
    int stride = 0; // weights per output pixel: `count` rounded up to even, the extra one zero
    std::vector<int> start;
    std::vector<int16_t> weights;
};

std::optional<Taps> tapsFor(int inSize, const AxisMap& map, Filter filter) {
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

inline uint8_t toByte(int32_t sum) {
    return uint8_t(std::clamp((sum + Half) >> Shift, 0, 255));
}

// One row of the vertical pass: out[x] = sum of weights[k] * rows[k][x].
void verticalRowPortable(const uint8_t* const* rows, const int16_t* weights, int count, int from, int length,
                         uint8_t* out) {
    for (int x = from; x < length; ++x) {
        int32_t sum = 0;
        for (int k = 0; k < count; ++k)
            sum += weights[k] * rows[k][x];
        out[x] = toByte(sum);
    }
}

// One row of the horizontal pass for a picture of `Bands` bands. `in` is the
// source row; its first pixel is source column `firstColumn`.
template <int Bands>
void horizontalRowPortable(const uint8_t* in, int firstColumn, const Taps& taps, uint8_t* out) {
    const int outSize = int(taps.start.size());
    for (int i = 0; i < outSize; ++i) {
        const uint8_t* p = in + (taps.start[size_t(i)] - firstColumn) * Bands;
        const int16_t* w = &taps.weights[size_t(i) * size_t(taps.stride)];
        int32_t sums[Bands] = {};
        for (int k = 0; k < taps.count; ++k)
            for (int b = 0; b < Bands; ++b)
                sums[b] += w[k] * p[k * Bands + b];
        for (int b = 0; b < Bands; ++b)
            out[i * Bands + b] = toByte(sums[b]);
    }
}

std::atomic<bool> vectorUnits = true;

#ifdef QUILLET_AVX2_PASSES
// The vertical pass with AVX2, sixteen bytes and two taps at a time: the bytes of two
// rows are interleaved into 16-bit pairs that one multiply-add weighs.
__attribute__((target("avx2"))) void verticalRowAvx2(const uint8_t* const* rows, const int16_t* weights, int count,
                                                     int length, uint8_t* out) {
    int x = 0;
    for (; x + 16 <= length; x += 16) {
        __m256i low = _mm256_set1_epi32(Half);
        __m256i high = low;
        for (int k = 0; k < count; k += 2) {
            const bool pair = k + 1 < count;
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[k] + x));
            const __m128i b =
                pair ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[k + 1] + x)) : _mm_setzero_si128();
            const int32_t second = pair ? int32_t(weights[k + 1]) : 0;
            const __m256i w = _mm256_set1_epi32(int32_t(uint16_t(weights[k])) | (second << 16));
            low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_cvtepu8_epi16(_mm_unpacklo_epi8(a, b)), w));
            high = _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_cvtepu8_epi16(_mm_unpackhi_epi8(a, b)), w));
        }
        const __m256i words = _mm256_permute4x64_epi64(
            _mm256_packs_epi32(_mm256_srai_epi32(low, Shift), _mm256_srai_epi32(high, Shift)), 0xD8);
        const __m128i bytes = _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), bytes);
    }
    verticalRowPortable(rows, weights, count, x, length, out);
}

// The horizontal pass with AVX2 for three or four bands, two taps at a time: eight bytes
// hold two neighbouring pixels, shuffled into 16-bit pairs per band. Reads up
// to one pixel and eight bytes beyond the last tap; rows are padded for it.
template <int Bands>
__attribute__((target("avx2"))) void horizontalRowAvx2(const uint8_t* in, int firstColumn, const Taps& taps,
                                                       uint8_t* out) {
    static_assert(Bands == 3 || Bands == 4);
    const int8_t z = -1; // a shuffle index that yields zero
    const __m128i pairs = Bands == 3 ? _mm_setr_epi8(0, z, 3, z, 1, z, 4, z, 2, z, 5, z, z, z, z, z)
                                     : _mm_setr_epi8(0, z, 4, z, 1, z, 5, z, 2, z, 6, z, 3, z, 7, z);
    const int outSize = int(taps.start.size());
    for (int i = 0; i < outSize; ++i) {
        const uint8_t* p = in + (taps.start[size_t(i)] - firstColumn) * Bands;
        const int16_t* w = &taps.weights[size_t(i) * size_t(taps.stride)];
        __m128i sum = _mm_set1_epi32(Half);
        for (int k = 0; k < taps.stride; k += 2) {
            const __m128i two = _mm_shuffle_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + k * Bands)), pairs);
            int32_t both; // the two 16-bit weights side by side, as the multiply-add pairs them
            std::memcpy(&both, w + k, sizeof both);
            const __m128i weight = _mm_set1_epi32(both);
            sum = _mm_add_epi32(sum, _mm_madd_epi16(two, weight));
        }
        const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(_mm_srai_epi32(sum, Shift), sum), sum);
        const uint32_t value = uint32_t(_mm_cvtsi128_si32(bytes));
        std::memcpy(out + i * Bands, &value, Bands);
    }
}

bool useAvx2() {
    static const bool hasAvx2 = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") != 0;
    }();
    return hasAvx2 && vectorUnits;
}
#endif

void verticalRow(const uint8_t* const* rows, const int16_t* weights, int count, int length, uint8_t* out) {
#ifdef QUILLET_AVX2_PASSES
    if (useAvx2())
        return verticalRowAvx2(rows, weights, count, length, out);
#endif
    verticalRowPortable(rows, weights, count, 0, length, out);
}

void horizontalRow(int bands, const uint8_t* in, int firstColumn, const Taps& taps, uint8_t* out) {
#ifdef QUILLET_AVX2_PASSES
    if (useAvx2() && bands >= 3)
        return bands == 3 ? horizontalRowAvx2<3>(in, firstColumn, taps, out)
                          : horizontalRowAvx2<4>(in, firstColumn, taps, out);
#endif
    switch (bands) {
    case 1:
        return horizontalRowPortable<1>(in, firstColumn, taps, out);
    case 2:
        return horizontalRowPortable<2>(in, firstColumn, taps, out);
    case 3:
        return horizontalRowPortable<3>(in, firstColumn, taps, out);
    default:
        return horizontalRowPortable<4>(in, firstColumn, taps, out);
    }
}

// Runs work(begin, end) over [0, count) in contiguous slices, on the calling
// thread alone unless the picture is large enough to share.
template <typename Work>
void forRows(int count, double area, Work work) {
    const int threads = area < ThreadedArea ? 1 : std::clamp(vips_concurrency_get(), 1, std::max(1, count));
    if (threads == 1) {
        work(0, count);
        return;
    }
    std::vector<std::jthread> helpers;
    const int slice = (count + threads - 1) / threads;
    for (int begin = slice; begin < count; begin += slice)
        helpers.emplace_back([&work, begin, end = std::min(count, begin + slice)] { work(begin, end); });
    work(0, std::min(count, slice));
}

// Room for `size` bytes and the slack the vector passes read beyond a row's
// last tap, the slack zeroed. The rest is left for the passes to fill.
std::unique_ptr<uint8_t[]> paddedBuffer(size_t size) {
    constexpr size_t Slack = 16;
    auto buffer = std::make_unique_for_overwrite<uint8_t[]>(size + Slack);
    std::memset(&buffer[size], 0, Slack);
    return buffer;
}

// Source rows (or columns) that some output pixel reads: [first, last).
std::pair<int, int> reach(const Taps& taps) {
    const auto [low, high] = std::minmax_element(taps.start.begin(), taps.start.end());
    return {*low, *high + taps.count};
}

} // namespace

std::optional<vips::VImage> resample(const vips::VImage& image, const AxisMap& x, const AxisMap& y,
                                     int interpolation) {
    const int bands = image.bands();
    if (interpolation == 1 || image.format() != VIPS_FORMAT_UCHAR || bands < 1 || bands > 4 || x.outSize < 1 ||
        y.outSize < 1 || !(x.scale > 0) || !(y.scale > 0))
        return std::nullopt;
    const int inWidth = image.width();
    const int inHeight = image.height();
    const auto columns = tapsFor(inWidth, x, filterFor(interpolation, x.scale));
    const auto rows = tapsFor(inHeight, y, filterFor(interpolation, y.scale));
    if (!columns || !rows)
        return std::nullopt;

    const auto* in = static_cast<const uint8_t*>(image.data());
    if (!in)
        throw vips::VError();
    const size_t inStride = size_t(inWidth) * size_t(bands);
    const size_t outStride = size_t(x.outSize) * size_t(bands);
    const size_t outBytes = outStride * size_t(y.outSize);
    auto* out = static_cast<uint8_t*>(std::malloc(outBytes));
    if (!out)
        throw std::bad_alloc();
    const double area = double(x.outSize) * y.outSize;

    // The pass that shrinks the data goes first, so the second one has less
    // to read; the first pass covers only the rows or columns the second one
    // reaches. Rows the horizontal pass reads carry a few bytes of slack.
    if (y.outSize < inHeight) {
        const auto [firstColumn, endColumn] = reach(*columns);
        const size_t midStride = size_t(endColumn - firstColumn) * size_t(bands);
        const auto mid = paddedBuffer(midStride * size_t(y.outSize));
        forRows(y.outSize, area, [&](int begin, int end) {
            std::vector<const uint8_t*> sources(size_t(rows->count));
            for (int r = begin; r < end; ++r) {
                for (int k = 0; k < rows->count; ++k)
                    sources[size_t(k)] = in + size_t(rows->start[size_t(r)] + k) * inStride +
                                         size_t(firstColumn) * size_t(bands);
                verticalRow(sources.data(), &rows->weights[size_t(r) * size_t(rows->stride)], rows->count,
                            int(midStride), &mid[size_t(r) * midStride]);
            }
        });
        forRows(y.outSize, area, [&](int begin, int end) {
            for (int r = begin; r < end; ++r)
                horizontalRow(bands, &mid[size_t(r) * midStride], firstColumn, *columns, out + size_t(r) * outStride);
        });
    } else {
        const auto [firstRow, endRow] = reach(*rows);
        const auto mid = paddedBuffer(outStride * size_t(endRow - firstRow));
        forRows(endRow - firstRow, area, [&](int begin, int end) {
            const auto row = paddedBuffer(inStride);
            for (int r = begin; r < end; ++r) {
                std::memcpy(&row[0], in + size_t(firstRow + r) * inStride, inStride);
                horizontalRow(bands, &row[0], 0, *columns, &mid[size_t(r) * outStride]);
            }
        });
        forRows(y.outSize, area, [&](int begin, int end) {
            std::vector<const uint8_t*> sources(size_t(rows->count));
            for (int r = begin; r < end; ++r) {
                for (int k = 0; k < rows->count; ++k)
                    sources[size_t(k)] = &mid[size_t(rows->start[size_t(r)] + k - firstRow) * outStride];
                verticalRow(sources.data(), &rows->weights[size_t(r) * size_t(rows->stride)], rows->count,
                            int(outStride), out + size_t(r) * outStride);
            }
        });
    }
    vips::VImage result =
        vips::VImage::new_from_memory_steal(out, outBytes, x.outSize, y.outSize, bands, VIPS_FORMAT_UCHAR);
    return result.copy(vips::VImage::option()->set("interpretation", image.interpretation()));
}

void useVectorUnits(bool enabled) { vectorUnits = enabled; }

} // namespace Resampler
