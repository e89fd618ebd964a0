#include "engine/textwatermark.h"
#include "engine/textwatermarkrenderer.h"
#include "testsupport.h"

#include <gtest/gtest.h>

namespace {

// Texts straight from EXIF may hold markup characters, line breaks, control
// codes, blanks at the ends or nothing at all; each is one line, measured by
// its advance.
TEST(TextWatermarkRenderer, AwkwardTextsRenderOnOneLine) {
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

// A text wider than one rendering surface allows (32767 pixels) comes in
// runs whose widths add up, and draws.
TEST(TextWatermarkRenderer, VeryLongTextsAreRenderedInRuns) {
    const TextWatermarkRenderer renderer(60);
    const TextWatermarkStyle style = textWatermarkStyle(0);
    const QString unit = QStringLiteral("Hello World ");
    const StyledText one = renderer.render(unit, style);
    const StyledText many = renderer.render(unit.repeated(200), style);
    EXPECT_GT(many.width, 32767);
    EXPECT_GT(many.runs.size(), 1u);
    EXPECT_NEAR(many.width, 200.0 * one.width, 200.0 * one.width * 0.01);

    Picture picture = testsupport::solidPicture(2000, 300, 0, 0, 0);
    ASSERT_NO_THROW(drawStrings({unit.repeated(200)}, picture, 2, 1, RgbaColor::white(0.2)));
    EXPECT_GT(picture.image.avg(), 0);
}

} // namespace
