#include "engine/sizemath.h"

#include <gtest/gtest.h>

#include <functional>

using namespace SizeMath;

namespace {

struct LayoutCase {
    const char* name;
    std::function<Layout()> layout;
    SizeF canvas;
    RectF destination;
    RectF source;
    bool copied = false;
};

void PrintTo(const LayoutCase& c, std::ostream* os) { *os << c.name; }

class SizeMathLayout : public ::testing::TestWithParam<LayoutCase> {};

TEST_P(SizeMathLayout, CanvasAndRectangles) {
    const LayoutCase& c = GetParam();
    const Layout layout = c.layout();
    EXPECT_EQ(layout.canvas, c.canvas);
    EXPECT_EQ(layout.destination, c.destination);
    EXPECT_EQ(layout.source, c.source);
    EXPECT_EQ(layout.copied, c.copied);
}

const SizeF landscape{3000, 2000};
const SizeF portrait{2000, 3000};

INSTANTIATE_TEST_SUITE_P(
    Modes, SizeMathLayout,
    ::testing::Values(
        LayoutCase{"FitLandscapeRoundsHeight", [] { return fitLayout(landscape, {800, 600}, false, false); },
                   {800, 533}, {0, 0, 800, 533}, {0, 0, 3000, 2000}},
        LayoutCase{"FitDownOnlyKeepsSmallerPicture", [] { return fitLayout(landscape, {4000, 3000}, true, false); },
                   {3000, 2000}, {0, 0, 3000, 2000}, {0, 0, 3000, 2000}, true},
        // Down only needs the box to cover the picture in both directions.
        LayoutCase{"FitDownOnlyStillShrinksPartlyLargerBox",
                   [] { return fitLayout(landscape, {4000, 1000}, true, false); }, {1500, 1000}, {0, 0, 1500, 1000},
                   {0, 0, 3000, 2000}},
        LayoutCase{"FitPortraitFlipped", [] { return fitLayout(portrait, {800, 600}, false, true); }, {533, 800},
                   {0, 0, 533, 800}, {0, 0, 2000, 3000}},
        LayoutCase{"FitPortraitUnflipped", [] { return fitLayout(portrait, {800, 600}, false, false); }, {400, 600},
                   {0, 0, 400, 600}, {0, 0, 2000, 3000}},
        LayoutCase{"SquareIsNeverFlipped", [] { return fitLayout({1000, 1000}, {800, 600}, false, true); },
                   {600, 600}, {0, 0, 600, 600}, {0, 0, 1000, 1000}},
        LayoutCase{"FillPadsWithFractionalOffset", [] { return fillLayout(landscape, {800, 800}, false, false); },
                   {800, 800}, {0, 133.5f, 800, 533}, {0, 0, 3000, 2000}},
        LayoutCase{"FillPortraitPadsSideways", [] { return fillLayout(portrait, {800, 800}, false, false); },
                   {800, 800}, {133.5f, 0, 533, 800}, {0, 0, 2000, 3000}},
        LayoutCase{"FillDownOnlyCopies", [] { return fillLayout(landscape, {3000, 2000}, true, false); },
                   {3000, 2000}, {0, 0, 3000, 2000}, {0, 0, 3000, 2000}, true},
        LayoutCase{"ToWidthRoundsHalfUp", [] { return toWidthLayout({400, 100}, 2, false); }, {2, 1}, {0, 0, 2, 1},
                   {0, 0, 400, 100}},
        LayoutCase{"ToWidthDownOnlyIgnoresHeight", [] { return toWidthLayout(portrait, 2000, true); }, {2000, 3000},
                   {0, 0, 2000, 3000}, {0, 0, 2000, 3000}, true},
        LayoutCase{"ToHeightRoundsHalfAway", [] { return toHeightLayout(landscape, 333, false); }, {500, 333},
                   {0, 0, 500, 333}, {0, 0, 3000, 2000}},
        LayoutCase{"ToHeightEnlarges", [] { return toHeightLayout({300, 200}, 1000, false); }, {1500, 1000},
                   {0, 0, 1500, 1000}, {0, 0, 300, 200}},
        LayoutCase{"StretchFlipsForPortrait", [] { return stretchLayout(portrait, {800, 600}, false, true); },
                   {600, 800}, {0, 0, 600, 800}, {0, 0, 2000, 3000}},
        LayoutCase{"CropWholeHeightOfWidePicture", [] { return cropLayout(landscape, {100, 100}, 100, false); },
                   {100, 100}, {0, 0, 100, 100}, {500, 0, 2000, 2000}},
        LayoutCase{"CropZoomsIntoCentre", [] { return cropLayout(landscape, {100, 100}, 50, false); }, {100, 100},
                   {0, 0, 100, 100}, {1000, 500, 1000, 1000}},
        // Same proportions as the box: the width branch, strictly.
        LayoutCase{"CropExactRatioTakesWidthBranch", [] { return cropLayout({400, 300}, {80, 60}, 50, false); },
                   {80, 60}, {0, 0, 80, 60}, {100, 75, 200, 150}},
        LayoutCase{"CropTallPictureKeepsWidth", [] { return cropLayout(portrait, {200, 100}, 100, false); },
                   {200, 100}, {0, 0, 200, 100}, {0, 1000, 2000, 1000}},
        LayoutCase{"PercentRoundsHalfUp", [] { return percentLayout({101, 101}, 50); }, {51, 51}, {0, 0, 51, 51},
                   {0, 0, 101, 101}},
        LayoutCase{"PercentEnlarges", [] { return percentLayout({640, 480}, 250); }, {1600, 1200},
                   {0, 0, 1600, 1200}, {0, 0, 640, 480}}),
    [](const ::testing::TestParamInfo<LayoutCase>& info) { return std::string(info.param.name); });

TEST(SizeMath, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(roundHalfAway(0.5f), 1.0f);
    EXPECT_EQ(roundHalfAway(-0.5f), -1.0f);
    EXPECT_EQ(roundHalfAway(533.333f), 533.0f);
    EXPECT_EQ(roundHalfAway(2.5), 3.0);
}

} // namespace
