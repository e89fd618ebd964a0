#pragma once

#include "settings/rgbacolor.h"

#include <optional>

namespace quillet {

// A text shadow as the drawing code is given it: offset with y pointing up
// (bottom-left origin), blur radius in pixels, and colour.
struct TextShadow {
    double offsetX = 0;
    double offsetY = 0;
    double blurRadius = 0;
    RgbaColor color;
};

// Colour and optional shadow of the text watermark's glyphs.
struct TextWatermarkStyle {
    RgbaColor color;
    std::optional<TextShadow> shadow;
};

// Style codes 0-3 of "DynWatermarkStyle"; other codes draw black text without
// a shadow. Without shadow support styles 1 and 3 lose their shadow only.
// Every system we run on draws shadows.
TextWatermarkStyle textWatermarkStyle(int style, bool shadowsAvailable = true);

// Font size factor of a size index 0-4; indices outside are taken as the
// nearest end of the table.
double fontSizeFactor(int sizeIndex);

// First font size tried for a picture of the given height: height x factor,
// halves rounded away from zero.
int startFontSize(double pictureHeight, int sizeIndex);

// The largest font size, in pixels, the text renderer draws. Text is drawn
// on cairo surfaces, which end at 32767 pixels a side; a line box of the
// tallest fallback fonts stays inside that up to about this size.
constexpr int kLargestFontSize = 20000;

} // namespace quillet
