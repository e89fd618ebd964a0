#include "engine/geometry/sizemath.h"

#include <gtest/gtest.h>

using namespace quillet;

using namespace SizeMath;

namespace {

const SizeF wide{3000, 2000};
const SizeF tall{2000, 3000};

TEST(SizeMath, LayoutCanvasAndRectangles) {
    const struct {
        const char* name;
        Layout layout;
        SizeF picture, canvas;
        RectF destination = {}; // empty: the whole canvas
        RectF source = {};      // empty: the whole picture
    } cases[] = {
        {"Fit", fitLayout(wide, {800, 600}, false, false), wide, {800, 533}},
        {"FitDownOnlyCopies", fitLayout(wide, {4000, 3000}, true, false), wide, {3000, 2000}},
        {"FitDownOnlyNeedsBothSides", fitLayout(wide, {4000, 1000}, true, false), wide, {1500, 1000}},
        {"FitTallFlipped", fitLayout(tall, {800, 600}, false, true), tall, {533, 800}},
        {"FitTallUnflipped", fitLayout(tall, {800, 600}, false, false), tall, {400, 600}},
        {"SquareNeverFlips", fitLayout({1000, 1000}, {800, 600}, false, true), {1000, 1000}, {600, 600}},
        {"FillHalf", fillLayout(wide, {800, 800}, false, false), wide, {800, 800}, {0, 133.5f, 800, 533}},
        {"FillSideways", fillLayout(tall, {800, 800}, false, false), tall, {800, 800}, {133.5f, 0, 533, 800}},
        {"WidthHalfRoundsUp", toWidthLayout({400, 100}, 2, false), {400, 100}, {2, 1}},
        {"WidthDownOnlyIgnoresHeight", toWidthLayout(tall, 2000, true), tall, {2000, 3000}},
        {"Height", toHeightLayout(wide, 333, false), wide, {500, 333}},
        {"StretchFlipped", stretchLayout(tall, {800, 600}, false, true), tall, {600, 800}},
        {"CropWhole", cropLayout(wide, {100, 100}, 100, false), wide, {100, 100}, {}, {500, 0, 2000, 2000}},
        {"CropHalf", cropLayout(wide, {100, 100}, 50, false), wide, {100, 100}, {}, {1000, 500, 1000, 1000}},
        // The box's own proportions take the width branch: the comparison is strict.
        {"CropRatio",
         cropLayout({400, 300}, {80, 60}, 50, false),
         {400, 300},
         {80, 60},
         {},
         {100, 75, 200, 150}},
        {"CropTall", cropLayout(tall, {200, 100}, 100, false), tall, {200, 100}, {}, {0, 1000, 2000, 1000}},
        {"PercentHalfRoundsUp", percentLayout({101, 101}, 50), {101, 101}, {51, 51}},
        // A side that rounds to nothing is one pixel.
        {"PercentOfOnePixel", percentLayout({1, 1}, 37), {1, 1}, {1, 1}},
        {"PercentOfAThinPicture", percentLayout({1000, 1}, 10), {1000, 1}, {100, 1}},
        {"WidthOfAThinPicture", toWidthLayout({1000, 1}, 100, false), {1000, 1}, {100, 1}},
        {"HeightOfAThinPicture", toHeightLayout({1, 1000}, 100, false), {1, 1000}, {1, 100}},
        {"FitThin", fitLayout({1000, 1}, {100, 100}, false, false), {1000, 1}, {100, 1}},
        {"FitThinTall", fitLayout({1, 1000}, {100, 100}, false, false), {1, 1000}, {1, 100}},
        {"FillThin",
         fillLayout({1000, 1}, {100, 100}, false, false),
         {1000, 1},
         {100, 100},
         {0, 49.5f, 100, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.layout.canvas, c.canvas);
        const RectF canvas{0, 0, c.canvas.width, c.canvas.height};
        EXPECT_EQ(c.layout.destination, c.destination.width > 0 ? c.destination : canvas);
        const RectF picture{0, 0, c.picture.width, c.picture.height};
        EXPECT_EQ(c.layout.source, c.source.width > 0 ? c.source : picture);
    }
}

} // namespace
