#include "engine/watermark/textwatermark.h"
#include "engine/watermark/textwatermarkfit.h"
#include "engine/watermark/textwatermarkrenderer.h"
#include "engine/watermark/textwatermarkstyle.h"
#include "testsupport.h"

#include <cmath>
#include <future>
#include <tuple>

using namespace quillet;

using testsupport::pixelAt;
using testsupport::solidPicture;

namespace {

// One band of an image as bytes, row by row.
std::vector<unsigned char> bytes(const vips::VImage& image, int band) {
    size_t size = 0;
    auto* data = static_cast<unsigned char*>(image.extract_band(band).copy_memory().write_to_memory(&size));
    std::vector<unsigned char> out(data, data + size);
    g_free(data);
    return out;
}

const QStringList kExif{QStringLiteral("Canon 40D"), QStringLiteral("1/250"), QStringLiteral("f/8.0"),
                        QStringLiteral("iso100")};

// The bar is 1.2 line heights of the font, not of the ink: "ooo" has no
// ascender or descender but gets the same bar as any other text.
TEST(TextWatermark, BarIsOnePointTwoLinesOfTheBackgroundColour) {
    Picture picture = solidPicture(300, 500, 0, 0, 255);
    const TextBarLayout layout = drawStrings({QStringLiteral("ooo")}, picture, 3, 2, RgbaColor{1, 0, 0, 1});
    ASSERT_EQ(layout.fontSize, 19); // 500 x 0.037 = 18.5, rounded away from zero
    EXPECT_DOUBLE_EQ(layout.barHeight, layout.lineHeight * 1.2);

    // Column 3 lies in the left margin: only the bar reaches it.
    const int fullRows = int(std::floor(layout.barHeight));
    for (int y = 500 - fullRows; y < 500; ++y)
        EXPECT_EQ(pixelAt(picture.image, 3, y), (std::vector<double>{255, 0, 0, 255})) << y;
    const std::vector<double> edge = pixelAt(picture.image, 3, 500 - fullRows - 1);
    EXPECT_NEAR(edge[0], 255 * (layout.barHeight - fullRows), 1);
    EXPECT_NEAR(edge[2], 255 * (1 - layout.barHeight + fullRows), 1);
    EXPECT_EQ(pixelAt(picture.image, 3, 500 - fullRows - 2), (std::vector<double>{0, 0, 255, 255}));
}

// Every text leaves ink within its own slot only, the slots keep 10 pixels
// apart and inside the margins, and nothing leaves the bar.
void expectSeparateTextsInside(int width, int height, const QStringList& texts, int sizeIndex) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    Picture picture = solidPicture(width, height, 0, 0, 0);
    const TextBarLayout layout = drawStrings(texts, picture, sizeIndex, 0, RgbaColor::white(0));
    ASSERT_EQ(layout.x.size(), size_t(texts.size()));
    EXPECT_EQ(layout.x.front(), 10);
    EXPECT_LE(layout.x.back() + layout.widths.back(), width - 10 + 1e-9);
    const std::vector<unsigned char> above =
        bytes(picture.image.crop(0, 0, width, height - int(std::ceil(layout.barHeight))), 0);
    EXPECT_EQ(above, std::vector<unsigned char>(above.size(), 0)) << "ink above the bar";

    std::vector<bool> ink(size_t(width), false), slot(size_t(width), false);
    const std::vector<unsigned char> red = bytes(picture.image, 0);
    for (size_t i = 0; i < red.size(); ++i)
        ink[i % size_t(width)] = ink[i % size_t(width)] || red[i] > 8;
    for (size_t i = 0; i < layout.x.size(); ++i) {
        const double gap = i + 1 < layout.x.size() ? layout.x[i + 1] - (layout.x[i] + layout.widths[i]) : 10;
        EXPECT_GE(gap, 10) << "after " << i;
        // Two pixels of slack for anti-aliasing and side bearings.
        const int from = std::max(0, int(layout.x[i]) - 2);
        const int to = std::min(width, int(std::ceil(layout.x[i] + layout.widths[i])) + 2);
        std::fill(slot.begin() + from, slot.begin() + to, true);
        EXPECT_TRUE(std::count(ink.begin() + from, ink.begin() + to, true)) << "no ink for " << i;
    }
    for (int x = 0; x < width; ++x)
        EXPECT_FALSE(ink[size_t(x)] && !slot[size_t(x)]) << "stray ink at column " << x;
}

TEST(TextWatermark, TextsAreJustifiedWithoutOverlapping) {
    expectSeparateTextsInside(800, 600, kExif, 2);
    expectSeparateTextsInside(300, 900, kExif, 4); // portrait, squeezed below the start size
    expectSeparateTextsInside(1200, 100, kExif + QStringList{QStringLiteral("2008:05:30 15:56:01")}, 4);
}

class OddPicture : public ::testing::TestWithParam<std::pair<int, int>> {};

// Every style and size draws on tiny and extreme pictures (the pixels are computed, not just
// planned), keeping the size and what lies above the bar. The narrowest overlap, clipped.
TEST_P(OddPicture, DrawsClippedWithoutFailing) {
    const auto [width, height] = GetParam();
    for (int style = 0; style <= 4; ++style)
        for (int index : {0, 4}) {
            SCOPED_TRACE(testing::Message() << "style " << style << ", size " << index);
            Picture picture = solidPicture(width, height, 0, 0, 255);
            TextBarLayout layout;
            ASSERT_NO_THROW(layout = drawStrings(kExif, picture, index, style, RgbaColor{1, 0, 0, 1}));
            ASSERT_NO_THROW(picture.image.avg());
            EXPECT_EQ(std::pair(picture.image.width(), picture.image.height()), GetParam());
            EXPECT_TRUE(layout.barHeight + 5 >= height ||
                        pixelAt(picture.image, 0, 0) == (std::vector<double>{0, 0, 255, 255}));
        }
}

INSTANTIATE_TEST_SUITE_P(Sizes, OddPicture,
                         ::testing::Values(std::pair{1, 1}, std::pair{10000, 50}, std::pair{50, 10000},
                                           std::pair{2, 300}, std::pair{300, 2}));

TEST(TextWatermark, TwoThreadsDrawTheSameAsOne) {
    const auto draw = [] {
        Picture picture = solidPicture(640, 480, 30, 60, 90);
        drawStrings(kExif, picture, 3, 1, RgbaColor::white(0.4));
        return bytes(picture.image, 0);
    };
    const std::vector<unsigned char> alone = draw();
    auto first = std::async(std::launch::async, draw), second = std::async(std::launch::async, draw);
    EXPECT_EQ(first.get(), alone);
    EXPECT_EQ(second.get(), alone);
}

// At the exact width for 10-pixel margins and gaps the size is kept, one pixel less steps
// down; texts that never fit stop at size 5, and a start size below 5 is used as it is.
TEST(TextWatermarkFit, ChoosesTheLargestSizeThatFits) {
    const TextWatermarkStyle style = textWatermarkStyle(2);
    const qint64 at24 = attributedStringsForStrings(kExif, 24, style).totalWidth;
    ASSERT_LT(at24, attributedStringsForStrings(kExif, 25, style).totalWidth);
    const int width = int(at24 + 20 + 3 * 10);
    Picture exact = solidPicture(width, 1000, 0, 0, 0), narrower = solidPicture(width - 1, 1000, 0, 0, 0);
    const TextBarLayout layout = drawStrings(kExif, exact, 4, 2, RgbaColor::white());
    EXPECT_EQ(layout.fontSize, 24);
    EXPECT_DOUBLE_EQ(layout.spacing, 10);
    EXPECT_DOUBLE_EQ(layout.x.back() + layout.widths.back(), width - 10);
    EXPECT_LT(drawStrings(kExif, narrower, 4, 2, RgbaColor::white()).fontSize, 24);

    const QStringList caption{QStringLiteral("A caption far too long for a narrow picture")};
    Picture narrow = solidPicture(60, 1000, 0, 0, 0), low = solidPicture(100, 80, 0, 0, 0);
    EXPECT_EQ(drawStrings(caption, narrow, 4, 0, RgbaColor::white()).fontSize, 5);
    EXPECT_EQ(drawStrings(caption, low, 4, 0, RgbaColor::white()).fontSize, 4); // 80 x 0.055 = 4.4
}

// Skipping sizes judged by the width at the start size must land where trying each size does.
TEST(TextWatermarkFit, QuickSearchAgreesWithTryingEverySize) {
    const QString longText = QStringLiteral("Evening light over the harbour, seen from the lighthouse steps");
    const std::tuple<QStringList, int, int> cases[] = {
        {kExif, 60, 700},
        {kExif, 90, 151},
        {kExif, 12, 200},
        {{QStringLiteral("x")}, 40, 35},
        {{longText}, 120, 600},
        {{longText, longText}, 70, 333},
        {{QString(), QString()}, 30, 10},
        {{QStringLiteral("iiiiiiiiii"), QStringLiteral("WWWWWWWWWW")}, 90, 400}};
    const TextWatermarkStyle style = textWatermarkStyle(1);
    for (const auto& [texts, start, width] : cases) {
        SCOPED_TRACE(testing::Message() << texts.size() << " texts from " << start << " across " << width);
        const StyledTexts quick = fitStrings(texts, start, width, style);
        const StyledTexts plain = fitStringsStepByStep(texts, start, width, style);
        EXPECT_EQ(quick.fontSize, plain.fontSize);
        EXPECT_EQ(quick.totalWidth, plain.totalWidth);
    }
}

// EXIF texts may hold markup, line breaks or control codes: each is one plain line. One wider
// than a rendering surface allows (32767 pixels) comes in runs whose widths add up.
TEST(TextWatermarkRenderer, AwkwardAndVeryLongTexts) {
    const TextWatermarkStyle style = textWatermarkStyle(0);
    const TextWatermarkRenderer renderer(20);
    const int a = renderer.render(QStringLiteral("a"), style).width;
    for (const QString& text : {QStringLiteral("<b>&amp; \"x\"</b>"), QStringLiteral("two\nlines"),
                                QStringLiteral("tab\tand\x01"), QString()}) {
        const StyledText styled = renderer.render(text, style);
        EXPECT_EQ(styled.width > a * 3, !text.isEmpty()) << text.toStdString();
        EXPECT_EQ(styled.height, renderer.lineHeight()) << text.toStdString();
    }
    const QString unit = QStringLiteral("Hello World ");
    const double one = TextWatermarkRenderer(60).render(unit, style).width;
    const StyledText many = TextWatermarkRenderer(60).render(unit.repeated(200), style);
    EXPECT_GT(many.runs.size(), 1u);
    EXPECT_NEAR(many.width, 200.0 * one, 200.0 * one * 0.01);
}

} // namespace
