#pragma once

#include "engine/watermark/textwatermarkstyle.h"

#include <QString>

#include <vector>
#include <vips/vips8>

namespace quillet {

// One text of the watermark bar, rendered and measured at one font size.
struct StyledText {
    // A run of the text as a coverage mask (one band, 0..255). `x` is where
    // the mask's left edge sits relative to the text's origin; the mask's
    // bottom is the bottom of the line. Long texts come in several runs.
    struct Run {
        vips::VImage mask;
        double x = 0;
    };

    QString text;
    TextWatermarkStyle style;
    std::vector<Run> runs;
    int width = 0;  // advance width, leading and trailing blanks included
    int height = 0; // height of the line box
};

// Renders texts in the watermark font at one pixel size with libvips (Pango),
// so the widths used for the layout are those of the pixels drawn.
class TextWatermarkRenderer {
  public:
    // Sizes below 1 give the desktop's standard text size, 13 pixels.
    explicit TextWatermarkRenderer(int fontSize);

    int pixelSize() const { return m_pixelSize; }
    // Height of a line of text: ascent plus descent of the font.
    int lineHeight() const { return m_lineHeight; }

    // Control characters become blanks: the bar holds one line. A text too
    // wide for one rendering surface is rendered in runs.
    StyledText render(const QString& text, const TextWatermarkStyle& style) const;

  private:
    void renderRuns(const QString& text, StyledText& out) const;
    vips::VImage renderMarkup(const QString& markup) const;

    int m_pixelSize = 13;
    int m_strutWidth = 0;
    int m_lineHeight = 0;
};

} // namespace quillet
