#include "engine/geometry/resamplingrows.h"

#include "engine/geometry/resampler.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#if defined(__x86_64__)
#define QUILLET_X86_PASSES 1
#include <immintrin.h>

namespace quillet {

#endif

namespace Resampler {

namespace {

std::atomic<VectorUnits> allowedUnits = VectorUnits::Avx2;

inline uint8_t toByte(int32_t sum) {
    return uint8_t(std::clamp((sum + Half) >> Shift, 0, 255));
}

void verticalRowPortable(const uint8_t* const* rows, const int16_t* weights, int count, int from, int length,
                         uint8_t* out) {
    for (int x = from; x < length; ++x) {
        int32_t sum = 0;
        for (int k = 0; k < count; ++k)
            sum += weights[k] * rows[k][x];
        out[x] = toByte(sum);
    }
}

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

#ifdef QUILLET_X86_PASSES

// Two 16-bit weights side by side in every 32-bit lane, the way a
// multiply-add pairs them with two interleaved samples.
int32_t weightPair(const int16_t* weights, int k, int count) {
    const int32_t second = k + 1 < count ? int32_t(weights[k + 1]) : 0;
    return int32_t(uint16_t(weights[k])) | (second << 16);
}

const __m128i* vector128(const uint8_t* p) {
    return reinterpret_cast<const __m128i*>(p);
}

// Sixteen bytes and two taps at a time: the bytes of two rows are interleaved
// into 16-bit pairs that one multiply-add weighs (SSE2 is in every x86-64).
void verticalRowSse2(const uint8_t* const* rows, const int16_t* weights, int count, int length,
                     uint8_t* out) {
    const __m128i zero = _mm_setzero_si128();
    int x = 0;
    for (; x + 16 <= length; x += 16) {
        __m128i sums[4] = {_mm_set1_epi32(Half), _mm_set1_epi32(Half), _mm_set1_epi32(Half),
                           _mm_set1_epi32(Half)};
        for (int k = 0; k < count; k += 2) {
            const __m128i a = _mm_loadu_si128(vector128(rows[k] + x));
            const __m128i b = k + 1 < count ? _mm_loadu_si128(vector128(rows[k + 1] + x)) : zero;
            const __m128i w = _mm_set1_epi32(weightPair(weights, k, count));
            const __m128i low = _mm_unpacklo_epi8(a, b);
            const __m128i high = _mm_unpackhi_epi8(a, b);
            sums[0] = _mm_add_epi32(sums[0], _mm_madd_epi16(_mm_unpacklo_epi8(low, zero), w));
            sums[1] = _mm_add_epi32(sums[1], _mm_madd_epi16(_mm_unpackhi_epi8(low, zero), w));
            sums[2] = _mm_add_epi32(sums[2], _mm_madd_epi16(_mm_unpacklo_epi8(high, zero), w));
            sums[3] = _mm_add_epi32(sums[3], _mm_madd_epi16(_mm_unpackhi_epi8(high, zero), w));
        }
        const __m128i first = _mm_packs_epi32(_mm_srai_epi32(sums[0], Shift), _mm_srai_epi32(sums[1], Shift));
        const __m128i second =
            _mm_packs_epi32(_mm_srai_epi32(sums[2], Shift), _mm_srai_epi32(sums[3], Shift));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm_packus_epi16(first, second));
    }
    verticalRowPortable(rows, weights, count, x, length, out);
}

// The same with AVX2, whose multiply-add weighs sixteen pairs at once.
__attribute__((target("avx2"))) void verticalRowAvx2(const uint8_t* const* rows, const int16_t* weights,
                                                     int count, int length, uint8_t* out) {
    int x = 0;
    for (; x + 16 <= length; x += 16) {
        __m256i low = _mm256_set1_epi32(Half);
        __m256i high = low;
        for (int k = 0; k < count; k += 2) {
            const __m128i a = _mm_loadu_si128(vector128(rows[k] + x));
            const __m128i b =
                k + 1 < count ? _mm_loadu_si128(vector128(rows[k + 1] + x)) : _mm_setzero_si128();
            const __m256i w = _mm256_set1_epi32(weightPair(weights, k, count));
            low = _mm256_add_epi32(low, _mm256_madd_epi16(_mm256_cvtepu8_epi16(_mm_unpacklo_epi8(a, b)), w));
            high =
                _mm256_add_epi32(high, _mm256_madd_epi16(_mm256_cvtepu8_epi16(_mm_unpackhi_epi8(a, b)), w));
        }
        // The 128-bit halves pack separately; the permute puts them in order.
        const __m256i words = _mm256_permute4x64_epi64(
            _mm256_packs_epi32(_mm256_srai_epi32(low, Shift), _mm256_srai_epi32(high, Shift)), 0xD8);
        const __m128i bytes =
            _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), bytes);
    }
    verticalRowPortable(rows, weights, count, x, length, out);
}

// Three or four bands, two taps at a time: the two neighbouring pixels are
// interleaved band by band into 16-bit pairs. Reads four bytes per pixel,
// so up to one pixel and four bytes beyond the last tap.
template <int Bands>
void horizontalRowSse2(const uint8_t* in, int firstColumn, const Taps& taps, uint8_t* out) {
    static_assert(Bands == 3 || Bands == 4);
    const __m128i zero = _mm_setzero_si128();
    const int outSize = int(taps.start.size());
    for (int i = 0; i < outSize; ++i) {
        const uint8_t* p = in + (taps.start[size_t(i)] - firstColumn) * Bands;
        const int16_t* w = &taps.weights[size_t(i) * size_t(taps.stride)];
        __m128i sum = _mm_set1_epi32(Half);
        for (int k = 0; k < taps.stride; k += 2) {
            int32_t a, b, weights;
            std::memcpy(&a, p + k * Bands, sizeof a);
            std::memcpy(&b, p + (k + 1) * Bands, sizeof b);
            std::memcpy(&weights, w + k, sizeof weights);
            const __m128i pairs =
                _mm_unpacklo_epi8(_mm_unpacklo_epi8(_mm_cvtsi32_si128(a), _mm_cvtsi32_si128(b)), zero);
            sum = _mm_add_epi32(sum, _mm_madd_epi16(pairs, _mm_set1_epi32(weights)));
        }
        const __m128i words = _mm_packs_epi32(_mm_srai_epi32(sum, Shift), zero);
        const int32_t bytes = _mm_cvtsi128_si32(_mm_packus_epi16(words, zero));
        std::memcpy(out + i * Bands, &bytes, Bands);
    }
}

bool hasAvx2() {
    static const bool present = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") != 0;
    }();
    return present;
}

#endif

} // namespace

void useVectorUnits(VectorUnits most) {
    allowedUnits = most;
}

bool outrunsLibvips(double scaleX, double scaleY) {
#ifdef QUILLET_X86_PASSES
    return scaleX > 0 && scaleY > 0;
#else
    return scaleX >= 1 && scaleY >= 1;
#endif
}

void verticalRow(const uint8_t* const* rows, const int16_t* weights, int count, int length, uint8_t* out) {
#ifdef QUILLET_X86_PASSES
    const VectorUnits allowed = allowedUnits;
    if (allowed == VectorUnits::Avx2 && hasAvx2())
        return verticalRowAvx2(rows, weights, count, length, out);
    if (allowed != VectorUnits::None)
        return verticalRowSse2(rows, weights, count, length, out);
#endif
    verticalRowPortable(rows, weights, count, 0, length, out);
}

void horizontalRow(int bands, const uint8_t* in, int firstColumn, const Taps& taps, uint8_t* out) {
#ifdef QUILLET_X86_PASSES
    if (allowedUnits != VectorUnits::None && bands >= 3)
        return bands == 3 ? horizontalRowSse2<3>(in, firstColumn, taps, out)
                          : horizontalRowSse2<4>(in, firstColumn, taps, out);
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

} // namespace Resampler

} // namespace quillet
