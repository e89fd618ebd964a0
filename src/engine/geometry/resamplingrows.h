#pragma once

#include "engine/geometry/resamplingtaps.h"

#include <cstdint>

namespace quillet {

// The two one-dimensional passes of a resampling, one row at a time. Every
// variant computes the same integer sums and gives the same bytes.
namespace Resampler {

// out[x] = the weighted sum of rows[k][x] over the `count` taps, for x in
// [0, length).
void verticalRow(const uint8_t* const* rows, const int16_t* weights, int count, int length, uint8_t* out);

// One row of `bands` bands through the taps. `in` holds the source row from
// column `firstColumn` on, followed by at least 16 readable bytes beyond the
// last pixel any tap reaches (the vector variants read a little past it).
void horizontalRow(int bands, const uint8_t* in, int firstColumn, const Taps& taps, uint8_t* out);

} // namespace Resampler

} // namespace quillet
