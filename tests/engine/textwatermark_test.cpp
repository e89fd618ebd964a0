#include "engine/textwatermark.h"
#include "engine/textwatermarkstyle.h"
#include "engine/watermarkoverlay.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <future>

using testsupport::pixelAt;
using testsupport::solidPicture;

namespace {

// One band of an image as rows of bytes, for scanning whole areas.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes;
    int at(int x, int y) const { return bytes[size_t(y) * size_t(width) + size_t(x)]; }
};

Plane plane(const vips::VImage& image, int band) {
    const vips::VImage one = image.extract_band(band).copy_memory();
    size_t size = 0;
    void* data = one.write_to_memory(&size);
    Plane p{one.width(), one.height(),
            std::vector<unsigned char>(static_cast<unsigned char*>(data),
                                       static_cast<unsigned char*>(data) + size)};
    g_free(data);
    return p;
}

// Columns in which any pixel differs from `background` by more than `tolerance`.
std::vector<bool> inkColumns(const Plane& p, int background, int tolerance = 8) {
    std::vector<bool> ink(size_t(p.width), false);
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            if (std::abs(p.at(x, y) - background) > tolerance)
                ink[size_t(x)] = true;
    return ink;
}

const QStringList kExif{QStringLiteral("Canon 40D"), QStringLiteral("1/250"), QStringLiteral("f/8.0"),
                        QStringLiteral("iso100")};

// The bar is 1.2 line heights of the font, not of the ink: "ooo" has no
// ascender or descender but gets the same bar as any other text.
TEST(TextWatermark, BarIsOnePointTwoLinesOfTheBackgroundColour) {
    Picture picture = solidPicture(300, 500, 0, 0, 255);
    const TextBarLayout layout = drawStrings({QStringLiteral("ooo")}, picture, 3, 2, RgbaColor{1, 0, 0, 1});
    ASSERT_EQ(layout.fontSize, 19); // 500 x 0.037 = 18.5
    EXPECT_DOUBLE_EQ(layout.lineHeight, TextWatermarkRenderer(19).lineHeight());
    EXPECT_GE(layout.lineHeight, 19);
    EXPECT_DOUBLE_EQ(layout.barHeight, layout.lineHeight * 1.2);

    // Column 3 lies in the left margin: only the bar reaches it.
    const int fullRows = int(std::floor(layout.barHeight));
    const double partial = layout.barHeight - fullRows;
    for (int y = 500 - fullRows; y < 500; ++y)
        EXPECT_EQ(pixelAt(picture.image, 3, y), (std::vector<double>{255, 0, 255 * 0.0, 255})) << y;
    const std::vector<double> edge = pixelAt(picture.image, 3, 500 - fullRows - 1);
    EXPECT_NEAR(edge[0], 255 * partial, 1);
    EXPECT_NEAR(edge[2], 255 * (1 - partial), 1);
    EXPECT_EQ(pixelAt(picture.image, 3, 500 - fullRows - 2), (std::vector<double>{0, 0, 255, 255}));

    // The text sits inside the bar, a tenth of a line above its bottom.
    const Plane green = plane(picture.image.crop(0, 0, 300, 500 - fullRows - 1), 1);
    EXPECT_EQ(green.bytes, std::vector<unsigned char>(green.bytes.size(), 0)) << "ink above the bar";
    const Plane red = plane(picture.image, 0);
    for (int y = 500 - int(layout.lineHeight * 0.1) + 1; y < 500; ++y)
        for (int x = 0; x < 300; ++x)
            ASSERT_EQ(red.at(x, y), 255) << "ink below the line at " << x << ", " << y;
}

// Real pixels: every text leaves ink within its own slot only, the slots
// keep 10 pixels apart and inside the margins, and nothing leaves the bar.
void expectSeparateTextsInside(int width, int height, const QStringList& texts, int sizeIndex) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    Picture picture = solidPicture(width, height, 0, 0, 0);
    const TextBarLayout layout = drawStrings(texts, picture, sizeIndex, 0, RgbaColor::white(0));
    ASSERT_EQ(layout.x.size(), size_t(texts.size()));
    EXPECT_EQ(layout.x.front(), 10);
    EXPECT_LE(layout.x.back() + layout.widths.back(), width - 10 + 1e-9);
    const Plane above = plane(picture.image.crop(0, 0, width, height - int(std::ceil(layout.barHeight))), 0);
    EXPECT_EQ(above.bytes, std::vector<unsigned char>(above.bytes.size(), 0)) << "ink above the bar";

    const std::vector<bool> ink = inkColumns(plane(picture.image, 0), 0);
    std::vector<bool> slot(size_t(width), false);
    for (size_t i = 0; i < layout.x.size(); ++i) {
        if (i + 1 < layout.x.size()) {
            EXPECT_GE(layout.x[i + 1] - (layout.x[i] + layout.widths[i]), 10);
        }
        // Two pixels of slack for anti-aliasing and side bearings.
        const int from = std::max(0, int(layout.x[i]) - 2);
        const int to = std::min(width, int(std::ceil(layout.x[i] + layout.widths[i])) + 2);
        std::fill(slot.begin() + from, slot.begin() + to, true);
        EXPECT_NE(std::find(ink.begin() + from, ink.begin() + to, true), ink.begin() + to)
            << "no ink for " << i;
    }
    for (int x = 0; x < width; ++x)
        EXPECT_FALSE(ink[size_t(x)] && !slot[size_t(x)]) << "stray ink at column " << x;
}

TEST(TextWatermark, TextsAreJustifiedWithoutOverlapping) {
    expectSeparateTextsInside(800, 600, kExif, 2);
    expectSeparateTextsInside(300, 900, kExif, 4); // portrait, squeezed below the start size
    expectSeparateTextsInside(1200, 100, kExif + QStringList{QStringLiteral("2008:05:30 15:56:01")}, 4);
    expectSeparateTextsInside(400, 300, {QStringLiteral("IMG_0042")}, 2); // alone, at the left
}

// Style 0 is white without shadow; 1 white with a shadow falling right and
// down; 3 black with a white glow all round.
TEST(TextWatermark, StylesColourTheTextAndItsShadow) {
    const auto draw = [](int style) {
        Picture picture = solidPicture(400, 800, 128, 128, 128);
        drawStrings({QStringLiteral("H")}, picture, 4, style, RgbaColor::white(0));
        return plane(picture.image, 1);
    };
    const auto range = [](const Plane& p) { return std::minmax_element(p.bytes.begin(), p.bytes.end()); };
    const Plane plainWhite = draw(0);
    EXPECT_EQ(*range(plainWhite).first, 128);
    EXPECT_GT(*range(plainWhite).second, 250);
    const Plane glow = draw(3);
    EXPECT_LT(*range(glow).first, 5);
    EXPECT_GT(*range(glow).second, 150);

    const Plane shadowed = draw(1);
    double inkX = 0, inkY = 0, inkN = 0, darkX = 0, darkY = 0, darkN = 0;
    for (int y = 0; y < shadowed.height; ++y)
        for (int x = 0; x < shadowed.width; ++x) {
            const int v = shadowed.at(x, y);
            if (v > 200)
                inkX += x, inkY += y, ++inkN;
            else if (v < 100)
                darkX += x, darkY += y, ++darkN;
        }
    ASSERT_GT(inkN, 0);
    ASSERT_GT(darkN, 0);
    EXPECT_GT(darkX / darkN, inkX / inkN + 0.5);
    EXPECT_GT(darkY / darkN, inkY / inkN + 0.3);
}

struct OddSize {
    int width, height;
};

void PrintTo(const OddSize& size, std::ostream* os) {
    *os << size.width << " x " << size.height;
}

class OddPicture : public ::testing::TestWithParam<OddSize> {};

// Tiny and extreme pictures: every style and size draws without failing (the
// pixels are computed, not just planned), the picture keeps its size and
// format, and whatever lies above the bar is untouched. On the narrowest ones
// the texts do not fit even at size 5 and overlap, clipped, as drawn.
TEST_P(OddPicture, DrawsClippedWithoutFailing) {
    const OddSize size = GetParam();
    for (int style = 0; style <= 4; ++style)
        for (int index : {0, 4}) {
            SCOPED_TRACE(testing::Message() << "style " << style << ", size " << index);
            Picture picture = solidPicture(size.width, size.height, 0, 0, 255);
            TextBarLayout layout;
            ASSERT_NO_THROW(layout = drawStrings(kExif, picture, index, style, RgbaColor{1, 0, 0, 1}));
            ASSERT_NO_THROW(picture.image.avg());
            EXPECT_EQ(picture.image.width(), size.width);
            EXPECT_EQ(picture.image.height(), size.height);
            if (layout.barHeight + 5 < size.height) {
                EXPECT_EQ(pixelAt(picture.image, 0, 0), (std::vector<double>{0, 0, 255, 255}));
            }
            if (size.width > 200) {
                EXPECT_EQ(pixelAt(picture.image, 3, size.height - 1), (std::vector<double>{255, 0, 0, 255}));
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Sizes, OddPicture,
                         ::testing::Values(OddSize{1, 1}, OddSize{10000, 50}, OddSize{50, 10000},
                                           OddSize{2, 300}, OddSize{300, 2}));

TEST(TextWatermark, AnEmptyListIsRefused) {
    Picture nothing;
    EXPECT_NO_THROW(drawStrings(kExif, nothing, 2, 1, RgbaColor::white()));
    Picture picture = solidPicture(10, 10, 0, 0, 0);
    try {
        drawStrings({}, picture, 2, 1, RgbaColor::white());
        FAIL() << "no exception";
    } catch (const WatermarkError& error) {
        EXPECT_STREQ(error.what(), "_drawString: numStrings=0");
    }
}

// The batch may draw on two pictures at once.
TEST(TextWatermark, TwoThreadsDrawTheSameAsOne) {
    const auto draw = [] {
        Picture picture = solidPicture(640, 480, 30, 60, 90);
        drawStrings(kExif, picture, 3, 1, RgbaColor::white(0.4));
        return plane(picture.image, 0).bytes;
    };
    const std::vector<unsigned char> alone = draw();
    auto first = std::async(std::launch::async, draw);
    auto second = std::async(std::launch::async, draw);
    EXPECT_EQ(first.get(), alone);
    EXPECT_EQ(second.get(), alone);
}

// On a camera photo the bar halves each pixel towards white, and the picture
// above it is untouched.
TEST(TextWatermark, BarOverACameraPhoto) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Nikon_D70.jpg");
    const vips::VImage photo =
        watermarkoverlay::toRgba8(vips::VImage::new_from_file(path.toLocal8Bit().constData())).copy_memory();
    Picture picture{photo, double(photo.width()), double(photo.height())};
    const TextBarLayout layout = drawStrings(kExif, picture, 2, 1, RgbaColor::white(0.5));
    const int h = photo.height();
    const int row = h - 1 - int(layout.barHeight * 0.05);
    for (int x : {0, 3, 7}) {
        const std::vector<double> before = pixelAt(photo, x, row);
        const std::vector<double> after = pixelAt(picture.image, x, row);
        for (int band = 0; band < 3; ++band)
            EXPECT_NEAR(after[size_t(band)], (before[size_t(band)] + 255) / 2, 1) << x;
    }
    const int clean = h - int(std::ceil(layout.barHeight)) - 5; // above the bar and its shadows
    EXPECT_EQ(plane(picture.image.crop(0, 0, photo.width(), clean), 1).bytes,
              plane(photo.crop(0, 0, photo.width(), clean), 1).bytes);
}

} // namespace
