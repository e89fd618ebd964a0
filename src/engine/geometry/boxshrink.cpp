#include "engine/geometry/boxshrink.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

namespace quillet {

namespace {

// One worker's input region and its row of block sums.
struct Sequence {
    VipsRegion* region = nullptr;
    std::vector<uint32_t> sums;
};

void* startSequence(VipsImage*, void* in, void*) {
    auto* sequence = new Sequence;
    sequence->region = vips_region_new(static_cast<VipsImage*>(in));
    return sequence;
}

int stopSequence(void* sequence, void*, void*) {
    auto* s = static_cast<Sequence*>(sequence);
    g_object_unref(s->region);
    delete s;
    return 0;
}

// Adds one input row to the sums of `count` whole blocks; the sizes known
// here let the compiler unroll and vectorise the common pictures.
template <int Bands, int Factor>
void addWhole(uint32_t* __restrict sums, const uint8_t* __restrict row, int count) {
    for (int x = 0; x < count; ++x)
        for (int j = 0; j < Factor; ++j)
            for (int c = 0; c < Bands; ++c)
                sums[x * Bands + c] += row[(x * Factor + j) * Bands + c];
}

void addWhole(uint32_t* sums, const uint8_t* row, int count, int bands, int factor) {
    if (bands == 3 && factor == 2)
        return addWhole<3, 2>(sums, row, count);
    if (bands == 3 && factor == 4)
        return addWhole<3, 4>(sums, row, count);
    if (bands == 3 && factor == 8)
        return addWhole<3, 8>(sums, row, count);
    if (bands == 1 && factor == 2)
        return addWhole<1, 2>(sums, row, count);
    if (bands == 1 && factor == 4)
        return addWhole<1, 4>(sums, row, count);
    for (int x = 0; x < count; ++x, sums += bands)
        for (int j = 0; j < factor; ++j, row += bands)
            for (int c = 0; c < bands; ++c)
                sums[c] += row[c];
}

int generate(VipsRegion* out, void* sequence, void* a, void* b, gboolean*) {
    auto* s = static_cast<Sequence*>(sequence);
    const auto* in = static_cast<const VipsImage*>(a);
    const int factor = GPOINTER_TO_INT(b);
    const int bands = in->Bands;
    const VipsRect& r = out->valid;

    VipsRect need{r.left * factor, r.top * factor, r.width * factor, r.height * factor};
    const VipsRect whole{0, 0, in->Xsize, in->Ysize};
    vips_rect_intersectrect(&need, &whole, &need);
    if (vips_region_prepare(s->region, &need) != 0)
        return -1;
    const int lastColumn = need.left + need.width - 1;
    const int lastRow = need.top + need.height - 1;
    // The blocks of the strip that lie wholly inside the picture.
    const int wholeBlocks = std::min(r.width, need.width / factor);

    const uint32_t area = uint32_t(factor * factor);
    const int shift = std::has_single_bit(area) ? std::countr_zero(area) : -1;
    const size_t length = size_t(r.width) * size_t(bands);
    if (s->sums.size() < length)
        s->sums.resize(length);
    uint32_t* sums = s->sums.data();
    for (int y = 0; y < r.height; ++y) {
        std::fill(sums, sums + length, area / 2);
        for (int k = 0; k < factor; ++k) {
            const int row = std::min((r.top + y) * factor + k, lastRow);
            const auto* pixels =
                reinterpret_cast<const uint8_t*>(VIPS_REGION_ADDR(s->region, need.left, row));
            addWhole(sums, pixels, wholeBlocks, bands, factor);
            for (int x = wholeBlocks; x < r.width; ++x)
                for (int j = 0; j < factor; ++j) {
                    const int column = std::min((r.left + x) * factor + j, lastColumn) - need.left;
                    for (int c = 0; c < bands; ++c)
                        sums[size_t(x) * size_t(bands) + size_t(c)] += pixels[column * bands + c];
                }
        }
        auto* target = reinterpret_cast<uint8_t*>(VIPS_REGION_ADDR(out, r.left, r.top + y));
        if (shift >= 0)
            for (size_t i = 0; i < length; ++i)
                target[i] = uint8_t(sums[i] >> shift);
        else
            for (size_t i = 0; i < length; ++i)
                target[i] = uint8_t(sums[i] / area);
    }
    return 0;
}

} // namespace

bool BoxShrink::takes(const vips::VImage& image) {
    return image.format() == VIPS_FORMAT_UCHAR && !vips_image_hasalpha(image.get_image());
}

vips::VImage BoxShrink::shrink(const vips::VImage& image, int factor) {
    VipsImage* in = image.get_image();
    VipsImage* out = vips_image_new();
    if (vips_image_pipelinev(out, VIPS_DEMAND_STYLE_THINSTRIP, in, nullptr) != 0) {
        g_object_unref(out);
        throw vips::VError();
    }
    // The fields are set by libvips: its workers read them, and a write from
    // this file would look unordered with those reads to ThreadSanitizer,
    // which does not see inside libvips's thread pool.
    vips_image_init_fields(out, std::max(1, int(double(in->Xsize) / factor + 0.5)),
                           std::max(1, int(double(in->Ysize) / factor + 0.5)), in->Bands, in->BandFmt,
                           in->Coding, in->Type, in->Xres / factor, in->Yres / factor);
    // The output holds the input for as long as it lives.
    g_object_ref(in);
    vips_object_local(out, in);
    if (vips_image_generate(out, startSequence, generate, stopSequence, in, GINT_TO_POINTER(factor)) != 0) {
        g_object_unref(out);
        throw vips::VError();
    }
    return vips::VImage(out);
}

} // namespace quillet
