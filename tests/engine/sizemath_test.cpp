#include "engine/sizemath.h"

#include <gtest/gtest.h>

using namespace SizeMath;

namespace {

enum Mode { Width, Height, Fit, Fill, Stretch, Crop, Percent };

struct LayoutCase {
    const char* name;
    Mode mode;
    SizeF picture, box; // box.width is the percentage for Percent
    bool downOnly, flip;
    SizeF canvas;
    RectF destination; // empty: the whole canvas
    RectF source;      // empty: the whole picture
};

Layout layoutFor(const LayoutCase& c) {
    switch (c.mode) {
    case Width:
        return toWidthLayout(c.picture, c.box.width, c.downOnly);
    case Height:
        return toHeightLayout(c.picture, c.box.height, c.downOnly);
    case Fit:
        return fitLayout(c.picture, c.box, c.downOnly, c.flip);
    case Fill:
        return fillLayout(c.picture, c.box, c.downOnly, c.flip);
    case Stretch:
        return stretchLayout(c.picture, c.box, c.downOnly, c.flip);
    case Crop:
        return cropLayout(c.picture, c.box, c.downOnly ? 50 : 100, c.flip);
    case Percent:
        return percentLayout(c.picture, int(c.box.width));
    }
    return {};
}

class SizeMathLayout : public ::testing::TestWithParam<LayoutCase> {};

TEST_P(SizeMathLayout, CanvasAndRectangles) {
    const LayoutCase& c = GetParam();
    const Layout layout = layoutFor(c);
    EXPECT_EQ(layout.canvas, c.canvas);
    const RectF canvas{0, 0, c.canvas.width, c.canvas.height};
    const RectF picture{0, 0, c.picture.width, c.picture.height};
    EXPECT_EQ(layout.destination, c.destination.width > 0 ? c.destination : canvas);
    EXPECT_EQ(layout.source, c.source.width > 0 ? c.source : picture);
}

const SizeF wide{3000, 2000};
const SizeF tall{2000, 3000};

// Crop's downOnly flag stands for 50 % instead of 100 %.
INSTANTIATE_TEST_SUITE_P(
    Modes, SizeMathLayout,
    ::testing::Values(
        LayoutCase{"Fit", Fit, wide, {800, 600}, false, false, {800, 533}, {}, {}},
        LayoutCase{"FitDownOnlyCopies", Fit, wide, {4000, 3000}, true, false, {3000, 2000}, {}, {}},
        LayoutCase{"FitDownOnlyNeedsBothSides", Fit, wide, {4000, 1000}, true, false, {1500, 1000}, {}, {}},
        LayoutCase{"FitTallFlipped", Fit, tall, {800, 600}, false, true, {533, 800}, {}, {}},
        LayoutCase{"FitTallUnflipped", Fit, tall, {800, 600}, false, false, {400, 600}, {}, {}},
        LayoutCase{"SquareNeverFlips", Fit, {1000, 1000}, {800, 600}, false, true, {600, 600}, {}, {}},
        LayoutCase{
            "FillAtHalfPixel", Fill, wide, {800, 800}, false, false, {800, 800}, {0, 133.5f, 800, 533}, {}},
        LayoutCase{
            "FillSideways", Fill, tall, {800, 800}, false, false, {800, 800}, {133.5f, 0, 533, 800}, {}},
        LayoutCase{"WidthHalfRoundsUp", Width, {400, 100}, {2, 0}, false, false, {2, 1}, {}, {}},
        LayoutCase{"WidthDownOnlyIgnoresHeight", Width, tall, {2000, 0}, true, false, {2000, 3000}, {}, {}},
        LayoutCase{"Height", Height, wide, {0, 333}, false, false, {500, 333}, {}, {}},
        LayoutCase{"StretchFlipped", Stretch, tall, {800, 600}, false, true, {600, 800}, {}, {}},
        LayoutCase{
            "CropWholeHeight", Crop, wide, {100, 100}, false, false, {100, 100}, {}, {500, 0, 2000, 2000}},
        LayoutCase{
            "CropZoomsIn", Crop, wide, {100, 100}, true, false, {100, 100}, {}, {1000, 500, 1000, 1000}},
        // The box's own proportions take the width branch: the comparison is strict.
        LayoutCase{
            "CropExactRatio", Crop, {400, 300}, {80, 60}, true, false, {80, 60}, {}, {100, 75, 200, 150}},
        LayoutCase{"CropTall", Crop, tall, {200, 100}, false, false, {200, 100}, {}, {0, 1000, 2000, 1000}},
        LayoutCase{"PercentHalfRoundsUp", Percent, {101, 101}, {50, 0}, false, false, {51, 51}, {}, {}}),
    [](const ::testing::TestParamInfo<LayoutCase>& info) { return std::string(info.param.name); });

TEST(SizeMath, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(roundHalfAway(0.5f), 1.0f);
    EXPECT_EQ(roundHalfAway(-0.5f), -1.0f);
    EXPECT_EQ(roundHalfAway(2.5), 3.0);
}

} // namespace
