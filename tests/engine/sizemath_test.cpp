#include "engine/sizemath.h"

#include <gtest/gtest.h>

#include <functional>

using namespace SizeMath;

namespace {

struct LayoutCase {
    const char* name;
    std::function<Layout()> layout;
    SizeF canvas;
    RectF destination;        // when empty: the whole canvas
    RectF source{0, 0, 0, 0}; // when empty: the whole picture
};

class SizeMathLayout : public ::testing::TestWithParam<LayoutCase> {};

const SizeF landscape{3000, 2000};
const SizeF portrait{2000, 3000};

TEST_P(SizeMathLayout, CanvasAndRectangles) {
    const LayoutCase& c = GetParam();
    const Layout layout = c.layout();
    EXPECT_EQ(layout.canvas, c.canvas);
    const RectF whole{0, 0, c.canvas.width, c.canvas.height};
    EXPECT_EQ(layout.destination, c.destination.width > 0 ? c.destination : whole);
    if (c.source.width > 0) {
        EXPECT_EQ(layout.source, c.source);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Modes, SizeMathLayout,
    ::testing::Values(LayoutCase{"Fit",
                                 [] {
                                     return fitLayout(landscape, {800, 600}, false, false);
                                 },
                                 {800, 533},
                                 {}},
                      LayoutCase{"FitDownOnlyCopies",
                                 [] {
                                     return fitLayout(landscape, {4000, 3000}, true, false);
                                 },
                                 {3000, 2000},
                                 {}},
                      // Down only needs the box to cover the picture both ways.
                      LayoutCase{"FitDownOnlyPartlyLarger",
                                 [] {
                                     return fitLayout(landscape, {4000, 1000}, true, false);
                                 },
                                 {1500, 1000},
                                 {}},
                      LayoutCase{"FitPortraitFlipped",
                                 [] {
                                     return fitLayout(portrait, {800, 600}, false, true);
                                 },
                                 {533, 800},
                                 {}},
                      LayoutCase{"FitPortraitUnflipped",
                                 [] {
                                     return fitLayout(portrait, {800, 600}, false, false);
                                 },
                                 {400, 600},
                                 {}},
                      LayoutCase{"SquareNeverFlips",
                                 [] {
                                     return fitLayout({1000, 1000}, {800, 600}, false, true);
                                 },
                                 {600, 600},
                                 {}},
                      LayoutCase{"FillPadsAtHalfPixel",
                                 [] {
                                     return fillLayout(landscape, {800, 800}, false, false);
                                 },
                                 {800, 800},
                                 {0, 133.5f, 800, 533}},
                      LayoutCase{"FillPadsSideways",
                                 [] {
                                     return fillLayout(portrait, {800, 800}, false, false);
                                 },
                                 {800, 800},
                                 {133.5f, 0, 533, 800}},
                      LayoutCase{"ToWidthHalfRoundsUp",
                                 [] {
                                     return toWidthLayout({400, 100}, 2, false);
                                 },
                                 {2, 1},
                                 {}},
                      LayoutCase{"ToWidthDownOnlyIgnoresHeight",
                                 [] { return toWidthLayout(portrait, 2000, true); },
                                 {2000, 3000},
                                 {}},
                      LayoutCase{
                          "ToHeight", [] { return toHeightLayout(landscape, 333, false); }, {500, 333}, {}},
                      LayoutCase{"StretchFlipped",
                                 [] {
                                     return stretchLayout(portrait, {800, 600}, false, true);
                                 },
                                 {600, 800},
                                 {}},
                      LayoutCase{"CropWholeHeight",
                                 [] {
                                     return cropLayout(landscape, {100, 100}, 100, false);
                                 },
                                 {100, 100},
                                 {},
                                 {500, 0, 2000, 2000}},
                      LayoutCase{"CropZoomsIn",
                                 [] {
                                     return cropLayout(landscape, {100, 100}, 50, false);
                                 },
                                 {100, 100},
                                 {},
                                 {1000, 500, 1000, 1000}},
                      // The box's own proportions take the width branch: the comparison is strict.
                      LayoutCase{"CropExactRatio",
                                 [] {
                                     return cropLayout({400, 300}, {80, 60}, 50, false);
                                 },
                                 {80, 60},
                                 {},
                                 {100, 75, 200, 150}},
                      LayoutCase{"CropTall",
                                 [] {
                                     return cropLayout(portrait, {200, 100}, 100, false);
                                 },
                                 {200, 100},
                                 {},
                                 {0, 1000, 2000, 1000}},
                      LayoutCase{"PercentHalfRoundsUp",
                                 [] {
                                     return percentLayout({101, 101}, 50);
                                 },
                                 {51, 51},
                                 {}}),
    [](const ::testing::TestParamInfo<LayoutCase>& info) { return std::string(info.param.name); });

TEST(SizeMath, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(roundHalfAway(0.5f), 1.0f);
    EXPECT_EQ(roundHalfAway(-0.5f), -1.0f);
    EXPECT_EQ(roundHalfAway(2.5), 3.0);
}

} // namespace
