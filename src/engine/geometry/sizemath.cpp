#include "engine/geometry/sizemath.h"

#include <algorithm>
#include <cmath>

namespace quillet {

namespace SizeMath {

bool isPortrait(float width, float height) {
    return height > width;
}

SizeF flipRatio(SizeF size) {
    return {size.height, size.width};
}

float aspectRatio(float width, float height) {
    return width / height;
}

float roundHalfAway(float value) {
    return std::round(value);
}

double roundHalfAway(double value) {
    return std::round(value);
}

SizeF targetBox(SizeF picture, SizeF box, bool flipForPortrait) {
    return flipForPortrait && isPortrait(picture.width, picture.height) ? flipRatio(box) : box;
}

namespace {

Layout wholeCanvas(SizeF picture, SizeF canvas) {
    return {canvas, {0, 0, picture.width, picture.height}, {0, 0, canvas.width, canvas.height}, false};
}

// A side computed from the picture's proportions or a percentage: rounded,
// and never under one pixel when there is any size at all, so a tiny or very
// thin picture still gets a canvas. A zero side (a box or a percentage of 0)
// stays zero and is refused where the canvas is made.
float roundedSide(float value) {
    return value > 0 ? std::max(1.0f, roundHalfAway(value)) : roundHalfAway(value);
}

double roundedSide(double value) {
    return value > 0 ? std::max(1.0, roundHalfAway(value)) : roundHalfAway(value);
}

bool coversPicture(SizeF picture, SizeF box) {
    return box.width >= picture.width && box.height >= picture.height;
}

} // namespace

Layout copyLayout(SizeF picture) {
    Layout layout = wholeCanvas(picture, picture);
    layout.copied = true;
    return layout;
}

Layout toWidthLayout(SizeF picture, float width, bool downOnly) {
    if (downOnly && width >= picture.width)
        return copyLayout(picture);
    const float r = aspectRatio(picture.width, picture.height);
    return wholeCanvas(picture, {width, roundedSide(width / r)});
}

Layout toHeightLayout(SizeF picture, float height, bool downOnly) {
    if (downOnly && height >= picture.height)
        return copyLayout(picture);
    const float r = aspectRatio(picture.width, picture.height);
    return wholeCanvas(picture, {roundedSide(r * height), height});
}

Layout fitLayout(SizeF picture, SizeF box, bool downOnly, bool flipForPortrait) {
    const SizeF target = targetBox(picture, box, flipForPortrait);
    if (downOnly && coversPicture(picture, target))
        return copyLayout(picture);
    const float r = aspectRatio(picture.width, picture.height);
    if (r > target.width / target.height)
        return wholeCanvas(picture, {target.width, roundedSide(target.width / r)});
    return wholeCanvas(picture, {roundedSide(r * target.height), target.height});
}

Layout fillLayout(SizeF picture, SizeF box, bool downOnly, bool flipForPortrait) {
    const SizeF target = targetBox(picture, box, flipForPortrait);
    if (downOnly && coversPicture(picture, target))
        return copyLayout(picture);
    const float r = aspectRatio(picture.width, picture.height);
    Layout layout = wholeCanvas(picture, target);
    if (r > target.width / target.height) {
        const float h = roundedSide(target.width / r);
        layout.destination = {0, (target.height - h) / 2, target.width, h};
    } else {
        const float w = roundedSide(r * target.height);
        layout.destination = {(target.width - w) / 2, 0, w, target.height};
    }
    return layout;
}

Layout stretchLayout(SizeF picture, SizeF box, bool downOnly, bool flipForPortrait) {
    const SizeF target = targetBox(picture, box, flipForPortrait);
    if (downOnly && coversPicture(picture, target))
        return copyLayout(picture);
    return wholeCanvas(picture, target);
}

Layout cropLayout(SizeF picture, SizeF box, int cropAreaPercentage, bool flipForPortrait) {
    const SizeF target = targetBox(picture, box, flipForPortrait);
    const float r = aspectRatio(picture.width, picture.height);
    const float boxRatio = target.width / target.height;
    const float c = float(cropAreaPercentage);
    float sw = 0;
    float sh = 0;
    if (r > boxRatio) {
        sh = picture.height * c / 100;
        sw = boxRatio * sh;
    } else {
        sw = c * picture.width / 100;
        sh = sw / boxRatio;
    }
    Layout layout = wholeCanvas(picture, target);
    layout.source = {(picture.width - sw) / 2, (picture.height - sh) / 2, sw, sh};
    return layout;
}

Layout percentLayout(SizeF picture, int percent) {
    const double factor = percent / 100.0;
    const SizeF canvas{float(roundedSide(double(picture.width) * factor)),
                       float(roundedSide(double(picture.height) * factor))};
    return wholeCanvas(picture, canvas);
}

} // namespace SizeMath

} // namespace quillet
