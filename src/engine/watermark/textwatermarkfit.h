#pragma once

#include "engine/watermark/textwatermarkrenderer.h"

#include <QStringList>

#include <vector>

namespace quillet {

// The texts of the bar rendered at one font size, with the sum of their widths.
struct StyledTexts {
    int fontSize = 0;
    std::vector<StyledText> texts;
    qint64 totalWidth = 0;
};

// Renders every text at the font size in the style's colour, its shadow
// attached for drawing (a shadow never adds to a width).
StyledTexts attributedStringsForStrings(const QStringList& texts, int fontSize,
                                        const TextWatermarkStyle& style);

// Whether the texts fit across a picture this wide: a 10-pixel margin at
// each end and at least 10 pixels between neighbours.
bool fitsAcross(const StyledTexts& styled, int pictureWidth);

// The font size search: from startSize down by one until the texts fit or
// size 5 has been tried; at size 5 they are kept even if they do not fit
// (a start of 5 or less is tried alone). Returns the texts at the size found.
// Skips sizes that cannot fit judging by the width at the start size, and
// gives the same size as fitStringsStepByStep.
StyledTexts fitStrings(const QStringList& texts, int startSize, int pictureWidth,
                       const TextWatermarkStyle& style);

// The same search trying every size in turn; slow for big pictures.
StyledTexts fitStringsStepByStep(const QStringList& texts, int startSize, int pictureWidth,
                                 const TextWatermarkStyle& style);

} // namespace quillet
