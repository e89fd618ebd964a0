#include "engine/watermark/textwatermarkfit.h"

#include <algorithm>
#include <cmath>

namespace quillet {

namespace {

// The smallest size the search tries, unless it starts below it.
constexpr int kSmallestSize = 5;

// Widths grow almost in proportion to the font size, but hinting moves small
// sizes by several percent either way and each text rounds to whole pixels.
constexpr double kHintingSpread = 0.15;
constexpr double kRoundingPerText = 2.0;

qint64 room(int pictureWidth, qsizetype count) {
    return qint64(pictureWidth) - 20 - qint64(count - 1) * 10;
}

} // namespace

StyledTexts attributedStringsForStrings(const QStringList& texts, int fontSize,
                                        const TextWatermarkStyle& style) {
    const TextWatermarkRenderer renderer(fontSize);
    StyledTexts styled;
    styled.fontSize = fontSize;
    styled.texts.reserve(size_t(texts.size()));
    for (const QString& text : texts) {
        styled.texts.push_back(renderer.render(text, style));
        styled.totalWidth += styled.texts.back().width;
    }
    return styled;
}

bool fitsAcross(const StyledTexts& styled, int pictureWidth) {
    return styled.totalWidth <= room(pictureWidth, qsizetype(styled.texts.size()));
}

StyledTexts fitStringsStepByStep(const QStringList& texts, int startSize, int pictureWidth,
                                 const TextWatermarkStyle& style) {
    int size = startSize;
    StyledTexts styled;
    do {
        styled = attributedStringsForStrings(texts, size, style);
        --size;
    } while (!fitsAcross(styled, pictureWidth) && size >= kSmallestSize);
    return styled;
}

StyledTexts fitStrings(const QStringList& texts, int startSize, int pictureWidth,
                       const TextWatermarkStyle& style) {
    StyledTexts styled = attributedStringsForStrings(texts, startSize, style);
    int next = startSize - 1;
    if (fitsAcross(styled, pictureWidth) || next < kSmallestSize)
        return styled;

    const qint64 space = room(pictureWidth, texts.size());
    if (space < 0) // nothing fits at any size, so the search runs out at the last size
        return attributedStringsForStrings(texts, kSmallestSize, style);

    // Sizes whose width, even at the low end of the spread, overshoots the
    // room would be tried and refused one by one; go straight below them.
    // (startSize is above 5 here, so it is also the pixel size rendered.)
    const double perPixel = double(styled.totalWidth) / startSize;
    if (perPixel > 0) {
        const double slack = kRoundingPerText * double(texts.size()) + 2;
        const double reachable = (double(space) + slack) / (perPixel * (1 - kHintingSpread));
        next = int(std::clamp(std::floor(reachable), double(kSmallestSize), double(next)));
    }
    for (int size = next;; --size) {
        styled = attributedStringsForStrings(texts, size, style);
        if (fitsAcross(styled, pictureWidth) || size - 1 < kSmallestSize)
            return styled;
    }
}

} // namespace quillet
