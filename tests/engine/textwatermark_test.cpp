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
    Plane p{one.width(), one.height(), std::vector<unsigned char>(static_cast<unsigned char*>(data),
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

TEST(TextWatermark, StartSizeIsHeightTimesFactorRoundedHalfAway) {
    EXPECT_EQ(startFontSize(2000, 2), 54);
    EXPECT_EQ(startFontSize(1000, 0), 10);
    EXPECT_EQ(startFontSize(1000, 3), 37);
    EXPECT_EQ(startFontSize(100, 4), 6); // 5.5, away from zero
    EXPECT_EQ(startFontSize(1, 4), 0);
    EXPECT_EQ(startFontSize(100, 9), 6); // past the table: its last factor
}

// The bar is 1.2 line heights of the font, not of the ink: "ooo" has no
// ascender or descender but gets the same bar as any other text.
TEST(TextWatermark, BarIsOnePointTwoLinesOfTheBackgroundColour) {
    Picture picture = solidPicture(300, 500, 0, 0, 255);
    const TextBarLayout layout =
        drawStrings({QStringLiteral("ooo")}, picture, 3, 2, RgbaColor{1, 0, 0, 1});
    ASSERT_EQ(layout.fontSize, 19); // 500 x 0.037 = 18.5
    EXPECT_DOUBLE_EQ(layout.lineHeight, TextWatermarkRenderer(19).lineHeight());
    EXPECT_GE(layout.lineHeight, 19);
    EXPECT_LE(layout.lineHeight, 19 * 1.35);
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

// At the exact width where the texts fit with 10-pixel margins and gaps, the
// size is kept and the texts reach from 10 to W - 10; one pixel less and a
// smaller size is taken.
TEST(TextWatermark, ChoosesTheLargestSizeThatFits) {
    const TextWatermarkStyle style = textWatermarkStyle(2);
    const qint64 at24 = attributedStringsForStrings(kExif, 24, style).totalWidth;
    ASSERT_LT(at24, attributedStringsForStrings(kExif, 25, style).totalWidth);
    const int width = int(at24 + 20 + 3 * 10);

    Picture exact = solidPicture(width, 1000, 0, 0, 0);
    const TextBarLayout layout = drawStrings(kExif, exact, 4, 2, RgbaColor::white());
    EXPECT_EQ(layout.fontSize, 24);
    EXPECT_DOUBLE_EQ(layout.spacing, 10);
    EXPECT_DOUBLE_EQ(layout.x.front(), 10);
    EXPECT_DOUBLE_EQ(layout.x.back() + layout.widths.back(), width - 10);

    Picture narrower = solidPicture(width - 1, 1000, 0, 0, 0);
    EXPECT_LT(drawStrings(kExif, narrower, 4, 2, RgbaColor::white()).fontSize, 24);
}

// Real pixels: every text's ink lies within its own slot, the gaps between
// slots and the margins stay clean, and nothing leaves the bar.
void expectSeparateTextsInside(int width, int height, const QStringList& texts, int sizeIndex) {
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    Picture picture = solidPicture(width, height, 0, 0, 0);
    const TextBarLayout layout = drawStrings(texts, picture, sizeIndex, 0, RgbaColor::white(0));
    ASSERT_EQ(layout.x.size(), size_t(texts.size()));
    const int barTop = height - int(std::ceil(layout.barHeight));
    const Plane above = plane(picture.image.crop(0, 0, width, barTop), 0);
    EXPECT_EQ(above.bytes, std::vector<unsigned char>(above.bytes.size(), 0)) << "ink above the bar";

    const std::vector<bool> ink = inkColumns(plane(picture.image, 0), 0);
    const int slack = 2; // anti-aliasing and side bearings
    std::vector<int> owner(size_t(width), -1);
    for (size_t i = 0; i < layout.x.size(); ++i) {
        const int from = std::max(0, int(std::floor(layout.x[i])) - slack);
        const int to = std::min(width, int(std::ceil(layout.x[i] + layout.widths[i])) + slack);
        bool any = false;
        for (int x = from; x < to; ++x) {
            EXPECT_EQ(owner[size_t(x)], -1) << "texts " << owner[size_t(x)] << " and " << i << " meet at " << x;
            owner[size_t(x)] = int(i);
            any = any || ink[size_t(x)];
        }
        EXPECT_TRUE(any) << "text " << i << " left no ink";
        if (i + 1 < layout.x.size()) {
            EXPECT_GE(layout.x[i + 1] - (layout.x[i] + layout.widths[i]), 10);
        }
    }
    for (int x = 0; x < width; ++x) {
        if (owner[size_t(x)] < 0) {
            EXPECT_FALSE(ink[size_t(x)]) << "stray ink at column " << x;
        }
    }
    EXPECT_EQ(layout.x.front(), 10);
    EXPECT_LE(layout.x.back() + layout.widths.back(), width - 10 + 1e-9);
}

TEST(TextWatermark, TextsAreJustifiedWithoutOverlapping) {
    expectSeparateTextsInside(800, 600, kExif, 2);
    expectSeparateTextsInside(300, 900, kExif, 4); // portrait, squeezed below the start size
    expectSeparateTextsInside(1200, 100, kExif + QStringList{QStringLiteral("2008:05:30 15:56:01")}, 4);
    expectSeparateTextsInside(400, 300, {QStringLiteral("IMG_0042")}, 2); // alone, at the left
}

// Below size 5 the search does not go: texts that never fit are drawn at 5,
// over the edges; a start below 5 is used as it is.
TEST(TextWatermark, SizeSearchStopsAtFive) {
    const QStringList caption{QStringLiteral("A caption far too long for a narrow picture")};
    Picture narrow = solidPicture(60, 1000, 0, 0, 0);
    EXPECT_EQ(drawStrings(caption, narrow, 4, 0, RgbaColor::white()).fontSize, 5);
    EXPECT_EQ(narrow.image.width(), 60);

    Picture low = solidPicture(100, 80, 0, 0, 0);
    EXPECT_EQ(drawStrings(caption, low, 4, 0, RgbaColor::white()).fontSize, 4); // 80 x 0.055 = 4.4
}

struct SearchCase {
    QStringList texts;
    int startSize;
    int width;
};

void PrintTo(const SearchCase& c, std::ostream* os) {
    *os << c.texts.size() << " texts from size " << c.startSize << " across " << c.width;
}

class SizeSearch : public ::testing::TestWithParam<SearchCase> {};

// The quick search skips sizes judged by the width at the start size; it must
// land on the very size the one-by-one search finds.
TEST_P(SizeSearch, QuickSearchAgreesWithTryingEverySize) {
    const SearchCase c = GetParam();
    const TextWatermarkStyle style = textWatermarkStyle(1);
    const StyledTexts quick = fitStrings(c.texts, c.startSize, c.width, style);
    const StyledTexts plain = fitStringsStepByStep(c.texts, c.startSize, c.width, style);
    EXPECT_EQ(quick.fontSize, plain.fontSize);
    EXPECT_EQ(quick.totalWidth, plain.totalWidth);
}

const QString kLong = QStringLiteral("Evening light over the harbour, seen from the old lighthouse steps");

INSTANTIATE_TEST_SUITE_P(
    Cases, SizeSearch,
    ::testing::Values(SearchCase{kExif, 60, 700}, SearchCase{kExif, 90, 151}, SearchCase{kExif, 12, 200},
                      SearchCase{{QStringLiteral("x")}, 40, 35}, SearchCase{{kLong}, 120, 600},
                      SearchCase{{kLong, kLong}, 70, 333}, SearchCase{{QString(), QString()}, 30, 10},
                      SearchCase{{QStringLiteral("iiiiiiiiii"), QStringLiteral("WWWWWWWWWW")}, 90, 400}));

// Shadows fall right and down, glows spread all round; the plain styles
// leave the picture around the glyphs alone.
TEST(TextWatermark, StylesColourTheTextAndItsShadow) {
    struct Outcome {
        int darkest;
        int lightest;
    };
    const auto draw = [](int style, Picture& picture) {
        drawStrings({QStringLiteral("H")}, picture, 4, style, RgbaColor::white(0));
        const Plane grey = plane(picture.image, 1);
        const auto [lo, hi] = std::minmax_element(grey.bytes.begin(), grey.bytes.end());
        return Outcome{*lo, *hi};
    };
    Picture plainWhite = solidPicture(400, 800, 128, 128, 128);
    const Outcome white = draw(0, plainWhite);
    EXPECT_EQ(white.darkest, 128);
    EXPECT_GT(white.lightest, 250);

    Picture plainBlack = solidPicture(400, 800, 128, 128, 128);
    const Outcome black = draw(2, plainBlack);
    EXPECT_LT(black.darkest, 5);
    EXPECT_EQ(black.lightest, 128);

    Picture glow = solidPicture(400, 800, 128, 128, 128);
    const Outcome glowing = draw(3, glow);
    EXPECT_LT(glowing.darkest, 5);
    EXPECT_GT(glowing.lightest, 150);

    // The shadow's darkening sits right of and below the white ink.
    Picture shadowed = solidPicture(400, 800, 128, 128, 128);
    const Outcome shadow = draw(1, shadowed);
    EXPECT_LT(shadow.darkest, 100);
    const Plane p = plane(shadowed.image, 1);
    double inkX = 0, inkY = 0, inkN = 0, darkX = 0, darkY = 0, darkN = 0;
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x) {
            const int v = p.at(x, y);
            if (v > 200)
                inkX += x, inkY += y, ++inkN;
            else if (v < 120)
                darkX += x, darkY += y, ++darkN;
        }
    ASSERT_GT(inkN, 0);
    ASSERT_GT(darkN, 0);
    EXPECT_GT(darkX / darkN, inkX / inkN + 0.5);
    EXPECT_GT(darkY / darkN, inkY / inkN + 0.3);
}

struct OddSize {
    int width;
    int height;
};

void PrintTo(const OddSize& size, std::ostream* os) { *os << size.width << " x " << size.height; }

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
            EXPECT_EQ(picture.image.bands(), 4);
            EXPECT_EQ(picture.image.format(), VIPS_FORMAT_UCHAR);
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

// Texts straight from EXIF may hold markup characters, line breaks, control
// codes or nothing at all; each is one line, measured by its advance.
TEST(TextWatermark, AwkwardTextsRenderOnOneLine) {
    const TextWatermarkRenderer renderer(20);
    const TextWatermarkStyle style = textWatermarkStyle(0);
    const StyledText empty = renderer.render(QString(), style);
    EXPECT_EQ(empty.width, 0);
    EXPECT_EQ(empty.height, renderer.lineHeight());
    const int a = renderer.render(QStringLiteral("a"), style).width;
    EXPECT_GT(renderer.render(QStringLiteral("  a"), style).width, a);
    EXPECT_GT(renderer.render(QStringLiteral("a  "), style).width, a);
    for (const QString& text : {QStringLiteral("<b>&amp; \"x\"</b>"), QStringLiteral("two\nlines"),
                                QStringLiteral("tab\tand\x01"), QStringLiteral("\u00e9t\u00e9 \u2713")}) {
        const StyledText styled = renderer.render(text, style);
        EXPECT_GT(styled.width, a * 3) << text.toStdString();
        EXPECT_EQ(styled.height, renderer.lineHeight()) << text.toStdString();
    }
}

// A text wider than one rendering surface allows (32767 pixels) is rendered
// in runs whose widths add up to what the pieces measure.
TEST(TextWatermark, VeryLongTextsAreRenderedInRuns) {
    const TextWatermarkRenderer renderer(60);
    const TextWatermarkStyle style = textWatermarkStyle(0);
    const QString unit = QStringLiteral("Hello World ");
    const StyledText one = renderer.render(unit, style);
    const StyledText many = renderer.render(unit.repeated(200), style);
    EXPECT_GT(many.width, 32767);
    EXPECT_GT(many.runs.size(), 1u);
    EXPECT_NEAR(many.width, 200.0 * one.width, 200.0 * one.width * 0.01);

    Picture picture = solidPicture(2000, 300, 0, 0, 0);
    ASSERT_NO_THROW(drawStrings({unit.repeated(200)}, picture, 2, 1, RgbaColor::white(0.2)));
    EXPECT_EQ(picture.image.width(), 2000);
    EXPECT_GT(picture.image.avg(), 0);
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
