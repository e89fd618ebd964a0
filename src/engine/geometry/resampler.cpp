#include "engine/geometry/resampler.h"

#include "engine/geometry/resamplingrows.h"
#include "engine/geometry/resamplingtaps.h"
#include "engine/geometry/streamedrows.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

namespace quillet {

namespace Resampler {

namespace {

// Below this many output pixels, threads cost more than they save.
constexpr double ThreadedArea = 500'000;

// Runs work(begin, end) over [0, count) in contiguous slices, on the calling
// thread alone unless the picture is large enough to share.
template <typename Work> void forRows(int count, double area, Work work) {
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

// Whether libvips holds the pixels in memory already; anything else is
// computed on demand, and reading it row by row keeps it out of memory.
bool inMemory(const vips::VImage& image) {
    switch (image.get_image()->dtype) {
    case VIPS_IMAGE_SETBUF:
    case VIPS_IMAGE_SETBUF_FOREIGN:
    case VIPS_IMAGE_MMAPIN:
    case VIPS_IMAGE_MMAPINRW:
        return true;
    default:
        return false;
    }
}

// Output row r of the vertical pass into `target`, `length` bytes;
// rowAt(i) is where source row i (of those the taps name) starts.
template <typename RowAt>
void verticalPassRow(const Taps& rows, int r, int length, RowAt rowAt, const uint8_t** sources,
                     uint8_t* target) {
    for (int k = 0; k < rows.count; ++k)
        sources[k] = rowAt(rows.start[size_t(r)] + k);
    verticalRow(sources, &rows.weights[size_t(r) * size_t(rows.stride)], rows.count, length, target);
}

} // namespace

std::optional<vips::VImage> resample(const vips::VImage& image, const AxisMap& x, const AxisMap& y,
                                     int interpolation) {
    const int bands = image.bands();
    if (interpolation == 1 || image.format() != VIPS_FORMAT_UCHAR || bands < 1 || bands > 4 ||
        x.outSize < 1 || y.outSize < 1 || !(x.scale > 0) || !(y.scale > 0))
        return std::nullopt;
    const int inWidth = image.width();
    const int inHeight = image.height();
    const auto columns = tapsFor(inWidth, x, interpolation);
    const auto rows = tapsFor(inHeight, y, interpolation);
    if (!columns || !rows)
        return std::nullopt;

    // A picture not in memory is read in strips, in order, by one thread.
    const bool streamed = !inMemory(image);
    const auto* in = streamed ? nullptr : static_cast<const uint8_t*>(image.data());
    if (!streamed && !in)
        throw vips::VError();
    const size_t inStride = size_t(inWidth) * size_t(bands);
    const size_t outStride = size_t(x.outSize) * size_t(bands);
    const size_t outBytes = outStride * size_t(y.outSize);
    // Handed over to the result at the end; freed on the way out otherwise.
    std::unique_ptr<uint8_t, decltype(&std::free)> out(static_cast<uint8_t*>(std::malloc(outBytes)),
                                                       &std::free);
    if (!out)
        throw std::bad_alloc();
    const double area = double(x.outSize) * y.outSize;

    // The pass that shrinks the data goes first, so the second one has less
    // to read; the first pass covers only the rows or columns the second one
    // reaches. Rows the horizontal pass reads carry a few bytes of slack.
    if (y.outSize < inHeight) {
        // Row by row, both passes at once: one row between them is all that
        // is held, and the source rows are read in order.
        const auto [firstColumn, endColumn] = reach(*columns);
        const size_t midStride = size_t(endColumn - firstColumn) * size_t(bands);
        const auto both = [&](int r, const uint8_t** sources, uint8_t* mid, auto rowAt) {
            verticalPassRow(*rows, r, int(midStride), rowAt, sources, mid);
            horizontalRow(bands, mid, firstColumn, *columns, out.get() + size_t(r) * outStride);
        };
        if (streamed) {
            StreamedRows source(image, firstColumn, endColumn, rows->count);
            std::vector<const uint8_t*> sources(size_t(rows->count));
            const auto mid = paddedBuffer(midStride);
            for (int r = 0; r < y.outSize; ++r) {
                source.hold(rows->start[size_t(r)], rows->start[size_t(r)] + rows->count);
                both(r, sources.data(), mid.get(), [&](int i) { return source.row(i); });
            }
        } else {
            const auto sourceRow = [&](int i) {
                return in + size_t(i) * inStride + size_t(firstColumn) * size_t(bands);
            };
            forRows(y.outSize, area, [&](int begin, int end) {
                std::vector<const uint8_t*> sources(size_t(rows->count));
                const auto mid = paddedBuffer(midStride);
                for (int r = begin; r < end; ++r)
                    both(r, sources.data(), mid.get(), sourceRow);
            });
        }
    } else {
        const auto [firstRow, endRow] = reach(*rows);
        const auto mid = paddedBuffer(outStride * size_t(endRow - firstRow));
        if (streamed) {
            StreamedRows source(image, 0, inWidth, 1);
            const auto row = paddedBuffer(inStride);
            for (int r = firstRow; r < endRow; ++r) {
                source.hold(r, r + 1);
                std::memcpy(row.get(), source.row(r), inStride);
                horizontalRow(bands, row.get(), 0, *columns, &mid[size_t(r - firstRow) * outStride]);
            }
        } else {
            forRows(endRow - firstRow, area, [&](int begin, int end) {
                // A copy with slack, as the source's last row has none.
                const auto row = paddedBuffer(inStride);
                for (int r = begin; r < end; ++r) {
                    std::memcpy(row.get(), in + size_t(firstRow + r) * inStride, inStride);
                    horizontalRow(bands, row.get(), 0, *columns, &mid[size_t(r) * outStride]);
                }
            });
        }
        const auto midRow = [&](int i) { return &mid[size_t(i - firstRow) * outStride]; };
        forRows(y.outSize, area, [&](int begin, int end) {
            std::vector<const uint8_t*> sources(size_t(rows->count));
            for (int r = begin; r < end; ++r)
                verticalPassRow(*rows, r, int(outStride), midRow, sources.data(),
                                out.get() + size_t(r) * outStride);
        });
    }
    vips::VImage result = vips::VImage::new_from_memory_steal(out.release(), outBytes, x.outSize, y.outSize,
                                                              bands, VIPS_FORMAT_UCHAR);
    return result.copy(vips::VImage::option()->set("interpretation", image.interpretation()));
}

} // namespace Resampler

} // namespace quillet
