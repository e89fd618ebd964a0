#include "engine/textwatermark.h"
#include "engine/textwatermarkfit.h"
#include "testsupport.h"

#include <gtest/gtest.h>

using testsupport::solidPicture;

namespace {

const QStringList kExif{QStringLiteral("Canon 40D"), QStringLiteral("1/250"), QStringLiteral("f/8.0"),
                        QStringLiteral("iso100")};

TEST(TextWatermarkFit, StartSizeIsHeightTimesFactorRoundedHalfAway) {
    EXPECT_EQ(startFontSize(2000, 2), 54);
    EXPECT_EQ(startFontSize(100, 4), 6); // 5.5
    EXPECT_EQ(startFontSize(100, 9), 6); // past the table: its last factor
}

// At the exact width where the texts fit with 10-pixel margins and gaps the
// size is kept and the texts reach from 10 to W - 10; one pixel less and a
// smaller size is taken.
TEST(TextWatermarkFit, ChoosesTheLargestSizeThatFits) {
    const TextWatermarkStyle style = textWatermarkStyle(2);
    const qint64 at24 = attributedStringsForStrings(kExif, 24, style).totalWidth;
    ASSERT_LT(at24, attributedStringsForStrings(kExif, 25, style).totalWidth);
    const int width = int(at24 + 20 + 3 * 10);

    Picture exact = solidPicture(width, 1000, 0, 0, 0);
    const TextBarLayout layout = drawStrings(kExif, exact, 4, 2, RgbaColor::white());
    EXPECT_EQ(layout.fontSize, 24);
    EXPECT_DOUBLE_EQ(layout.spacing, 10);
    EXPECT_DOUBLE_EQ(layout.x.back() + layout.widths.back(), width - 10);

    Picture narrower = solidPicture(width - 1, 1000, 0, 0, 0);
    EXPECT_LT(drawStrings(kExif, narrower, 4, 2, RgbaColor::white()).fontSize, 24);
}

// Texts that never fit are drawn at size 5, over the edges; a start below 5
// is used as it is.
TEST(TextWatermarkFit, StopsAtSizeFive) {
    const QStringList caption{QStringLiteral("A caption far too long for a narrow picture")};
    Picture narrow = solidPicture(60, 1000, 0, 0, 0);
    EXPECT_EQ(drawStrings(caption, narrow, 4, 0, RgbaColor::white()).fontSize, 5);
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
// land on the very size that trying every size finds.
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

} // namespace
