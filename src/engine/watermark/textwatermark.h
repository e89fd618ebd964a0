#pragma once

#include "engine/picture.h"
#include "engine/watermark/textwatermarkfit.h"
#include "settings/rgbacolor.h"

#include <QStringList>

#include <vector>

namespace quillet {

// Where the bar and its texts went, in pixels from the picture's left and
// bottom edges.
struct TextBarLayout {
    int fontSize = 0;
    double lineHeight = 0;
    double barHeight = 0;
    double spacing = 0;
    std::vector<double> x; // origin of each text
    std::vector<int> widths;
    // The picture asked for a larger size than the renderer draws, and the
    // texts would have fitted larger.
    bool sizeCapped = false;
};

// Fills a bar of 1.2 line heights across the bottom of the picture with the
// background (source over, so a transparent colour leaves the picture
// showing) and draws the texts on it anti-aliased, the first at initialX,
// each next one `spacing` after the previous one's end, all raised by a tenth
// of the line height. The first text's height is the line height. Texts
// running past the edges are clipped.
TextBarLayout drawAttributedStrings(const StyledTexts& styled, Picture& image, const RgbaColor& background,
                                    double initialX, double spacing);

// Draws the text watermark: picks the largest font size, starting from the
// picture's height times the size factor, at which the texts fit across the
// picture (never below 5 unless the start is), then justifies them from 10
// pixels inside the left edge to 10 pixels inside the right one. A single
// text stands at the left. The search starts at kLargestFontSize at most.
// Throws WatermarkError for an empty list of texts
// or when libvips refuses the drawing.
TextBarLayout drawStrings(const QStringList& texts, Picture& image, int sizeIndex, int style,
                          const RgbaColor& background);

} // namespace quillet
