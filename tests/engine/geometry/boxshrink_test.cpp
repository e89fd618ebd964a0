#include "engine/geometry/boxshrink.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace quillet;
using testsupport::busyPicture;
using testsupport::bytesOf;
using vips::VImage;

namespace {

// The block averages worked out one pixel at a time: sides rounded to the
// nearest whole block, the last row and column repeated outwards, each byte
// rounded half up from the block's sum.
std::vector<uint8_t> averaged(const VImage& image, int factor, int width, int height) {
    const std::vector<uint8_t> in = bytesOf(image);
    const int bands = image.bands();
    std::vector<uint8_t> out;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < bands; ++c) {
                int sum = 0;
                for (int k = 0; k < factor; ++k)
                    for (int j = 0; j < factor; ++j) {
                        const int row = std::min(y * factor + k, image.height() - 1);
                        const int column = std::min(x * factor + j, image.width() - 1);
                        sum += in[(size_t(row) * image.width() + column) * bands + c];
                    }
                out.push_back(uint8_t((sum + factor * factor / 2) / (factor * factor)));
            }
    return out;
}

TEST(BoxShrinkTest, EachBlockIsItsAverageWithTheEdgesRepeatedIntoBlocksThatCrossThem) {
    struct Case {
        int width, height, bands, factor;
    };
    // Sides that divide, that round down (a part block dropped) and that
    // round up (a part block filled from the edge); the shapes with their
    // own loops and the general one.
    for (const Case c : {Case{64, 48, 3, 2}, Case{67, 45, 3, 4}, Case{70, 38, 3, 8}, Case{33, 31, 1, 2},
                         Case{41, 43, 1, 4}, Case{29, 30, 4, 3}, Case{50, 23, 3, 5}, Case{7, 5, 3, 8}}) {
        VImage input = busyPicture(c.width, c.height, c.bands);
        if (c.bands == 4)
            input = input.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK));
        ASSERT_TRUE(BoxShrink::takes(input));
        const VImage shrunk = BoxShrink::shrink(input, c.factor);
        const int width = std::max(1, int(double(c.width) / c.factor + 0.5));
        const int height = std::max(1, int(double(c.height) / c.factor + 0.5));
        ASSERT_EQ(shrunk.width(), width) << c.width << " / " << c.factor;
        ASSERT_EQ(shrunk.height(), height) << c.height << " / " << c.factor;
        ASSERT_EQ(shrunk.bands(), c.bands);
        EXPECT_EQ(bytesOf(shrunk), averaged(input, c.factor, width, height))
            << c.width << "x" << c.height << "x" << c.bands << " by " << c.factor;
    }
}

TEST(BoxShrinkTest, RowsAskedForInStripsByManyThreadsComeOutAsInOnePass) {
    const VImage input = busyPicture(999, 1601, 3);
    const VImage whole = BoxShrink::shrink(input, 4);
    // A sink on several threads asks for small regions in any order.
    const int threads = vips_concurrency_get();
    vips_concurrency_set(4);
    const VImage tiled = BoxShrink::shrink(input, 4).tilecache(
        VImage::option()->set("tile_width", 16)->set("tile_height", 8)->set("threaded", true));
    const std::vector<uint8_t> many = bytesOf(tiled.copy_memory());
    vips_concurrency_set(threads);
    EXPECT_EQ(many, averaged(input, 4, whole.width(), whole.height()));
}

TEST(BoxShrinkTest, PicturesWithAlphaOrWideBandsAreLeftToLibvips) {
    EXPECT_FALSE(BoxShrink::takes(testsupport::solidImage(8, 8, 1, 2, 3)));
    EXPECT_FALSE(BoxShrink::takes(busyPicture(8, 8, 3).cast(VIPS_FORMAT_USHORT)));
    EXPECT_TRUE(BoxShrink::takes(busyPicture(8, 8, 3)));
}

} // namespace
