#pragma once

namespace quillet {

// Size arithmetic of the sizing modes, kept apart from the pixels so that the
// rounding can be checked on its own. Everything is single precision except
// the percentage mode, which works in double; results depend on it.
namespace SizeMath {

struct SizeF {
    float width = 0;
    float height = 0;
    friend bool operator==(const SizeF&, const SizeF&) = default;
};

struct RectF {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    friend bool operator==(const RectF&, const RectF&) = default;
};

// True when the picture is taller than wide; a square is not portrait.
bool isPortrait(float width, float height);
SizeF flipRatio(SizeF size);
float aspectRatio(float width, float height);
// Nearest, halves away from zero (50.5 -> 51, -0.5 -> -1).
float roundHalfAway(float value);
double roundHalfAway(double value);

// One sizing routine's drawing: a canvas, the part of the picture taken (in
// the picture's logical pixels) and the rectangle it is drawn into. Neither
// rectangle is rounded. `copied` says the routine fell back to a plain copy.
struct Layout {
    SizeF canvas;
    RectF source;
    RectF destination;
    bool copied = false;
};

// The target box, with width and height swapped for a portrait picture when
// flipForPortrait is on.
SizeF targetBox(SizeF picture, SizeF box, bool flipForPortrait);

Layout copyLayout(SizeF picture);
Layout toWidthLayout(SizeF picture, float width, bool downOnly);
Layout toHeightLayout(SizeF picture, float height, bool downOnly);
Layout fitLayout(SizeF picture, SizeF box, bool downOnly, bool flipForPortrait);
// Fit inside the box, then pad the box; the offsets keep their fractions.
Layout fillLayout(SizeF picture, SizeF box, bool downOnly, bool flipForPortrait);
Layout stretchLayout(SizeF picture, SizeF box, bool downOnly, bool flipForPortrait);
// Cuts the centred rectangle of the box's proportions, scaled by the
// percentage, and draws it over the whole box.
Layout cropLayout(SizeF picture, SizeF box, int cropAreaPercentage, bool flipForPortrait);
Layout percentLayout(SizeF picture, int percent);

} // namespace SizeMath

} // namespace quillet
