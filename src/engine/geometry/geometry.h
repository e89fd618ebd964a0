#pragma once

#include "engine/geometry/geometryerror.h"
#include "engine/geometry/sizemath.h"
#include "engine/picture.h"
#include "settings/processingrequest.h"
#include "settings/rgbacolor.h"

#include <functional>
#include <optional>

namespace quillet {

// Rotation and the eight sizing modes of the batch. Every routine takes a
// picture and returns a new one whose logical size equals its pixel size
// (rotations excepted: they keep the picture's pixel scale); the input is
// never changed. `interpolation` is the "ScaleQuality" code (0 default,
// 1 none, 2 low, 3 high). `background` fills the new canvas; none leaves it
// transparent. Routines throw GeometryError when no picture can be made (no
// pixels, or a canvas side below one pixel, as a width of 0 gives).
namespace Geometry {

using SizeMath::SizeF;
using Background = std::optional<RgbaColor>;
// Gives the source file's EXIF orientation (1 when it has none); asked only
// for automatic rotation.
using OrientationSource = std::function<int()>;

// What processImage made: the picture, and whether rotation code 4 turned it.
struct Processed {
    Picture picture;
    bool autoRotated = false;
};

// Rotation by the "Rotation" code, then the sizing step. Code 4 turns and
// mirrors the picture upright by its EXIF orientation (2 to 8) and only then
// counts as an automatic turn; unknown codes mean no rotation.
Processed processImage(const Picture& picture, const OrientationSource& orientation, int rotation,
                       const Sizing& sizing, const Background& background);

// Quarter and half turns; the canvas is transparent and exactly covered.
Picture rotateImageCW(const Picture& picture);
Picture rotateImageCCW(const Picture& picture);
Picture rotateImage180(const Picture& picture);
// The picture as it is meant to be seen, for an EXIF orientation of 1 to 8;
// any other value leaves it as it is.
Picture uprightFromOrientation(const Picture& picture, int orientation);

Picture copyImage(const Picture& picture, const Background& background);
Picture scaleImageToWidth(const Picture& picture, int width, bool downOnly, int interpolation,
                          const Background& background);
Picture scaleImageToHeight(const Picture& picture, int height, bool downOnly, int interpolation,
                           const Background& background);
Picture scaleImageToFit(const Picture& picture, SizeF box, bool downOnly, bool flipForPortrait,
                        int interpolation, const Background& background);
// Fit inside the box, then pad it to the box with the background.
Picture scaleImageToFill(const Picture& picture, SizeF box, bool downOnly, bool flipForPortrait,
                         int interpolation, const Background& background);
Picture stretchImageToFit(const Picture& picture, SizeF box, bool downOnly, bool flipForPortrait,
                          int interpolation, const Background& background);
Picture cropImageToFit(const Picture& picture, SizeF box, int cropAreaPercentage, bool flipForPortrait,
                       int interpolation, const Background& background);
Picture scaleImageByPercent(const Picture& picture, int percent, int interpolation,
                            const Background& background);

// The status thumbnail: fit inside width x height, never enlarged, no flip,
// no interpolation, transparent canvas.
Picture thumbnail(const Picture& picture, int width = 64, int height = 64);

} // namespace Geometry

} // namespace quillet
