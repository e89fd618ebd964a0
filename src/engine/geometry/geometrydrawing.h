#pragma once

#include "engine/geometry/sizemath.h"
#include "engine/picture.h"
#include "settings/rgbacolor.h"

#include <optional>

namespace quillet {

// Draws part of a picture into a rectangle of a new canvas, the one primitive
// every sizing routine stands on. Rectangles keep their fractions: a picture
// placed at y = 133.5 lands there, its edge rows blending with the band.
namespace GeometryDrawing {

// Draws layout.source (logical pixels of the picture) into layout.destination
// of a layout.canvas sized canvas filled with the background (transparent when
// none), source-over. `interpolation` is the "ScaleQuality" code: 0 library
// default, 1 none (nearest), 2 low (linear), 3 high (lanczos3). The result's
// logical size equals its pixel size. Throws GeometryError on a canvas that
// cannot exist (a side below one pixel or absurdly large).
Picture draw(const Picture& picture, const SizeMath::Layout& layout, int interpolation,
             const std::optional<RgbaColor>& background);

} // namespace GeometryDrawing

} // namespace quillet
