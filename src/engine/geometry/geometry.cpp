#include "engine/geometry/geometry.h"

#include "engine/geometry/geometrydrawing.h"
#include "engine/geometry/sizinglayout.h"
#include "settings/processingparams.h"

#include <string>

namespace quillet {

using vips::VImage;

namespace Geometry {

namespace {

SizeF logicalSize(const Picture& picture) {
    return {float(picture.width), float(picture.height)};
}

Picture draw(const Picture& picture, const SizeMath::Layout& layout, int interpolation,
             const Background& background) {
    return GeometryDrawing::draw(picture, layout, interpolation, background);
}

// Turns are exact pixel moves; the pixel scale of a shrunk picture carries
// over so that the sizing step still works in the original's pixels.
Picture rotated(const Picture& picture, VipsAngle angle, bool quarter) {
    if (!picture.image.get_image())
        throw GeometryError("No picture to rotate");
    try {
        return Picture{picture.image.rot(angle), quarter ? picture.height : picture.width,
                       quarter ? picture.width : picture.height, picture.opaque};
    } catch (const vips::VError& e) {
        throw GeometryError(std::string("Rotation failed: ") + e.what());
    }
}

// A mirror image across the vertical (horizontal flip) or horizontal axis.
Picture flipped(const Picture& picture, VipsDirection direction) {
    if (!picture.image.get_image())
        throw GeometryError("No picture to flip");
    try {
        return Picture{picture.image.flip(direction), picture.width, picture.height, picture.opaque};
    } catch (const vips::VError& e) {
        throw GeometryError(std::string("Flip failed: ") + e.what());
    }
}

} // namespace

Picture uprightFromOrientation(const Picture& picture, int orientation) {
    switch (orientation) {
    case 2:
        return flipped(picture, VIPS_DIRECTION_HORIZONTAL);
    case 3:
        return rotateImage180(picture);
    case 4:
        return flipped(picture, VIPS_DIRECTION_VERTICAL);
    case 5: // transpose: a quarter turn clockwise, then mirrored
        return flipped(rotateImageCW(picture), VIPS_DIRECTION_HORIZONTAL);
    case 6:
        return rotateImageCW(picture);
    case 7: // transverse: a quarter turn clockwise, then upside down
        return flipped(rotateImageCW(picture), VIPS_DIRECTION_VERTICAL);
    case 8:
        return rotateImageCCW(picture);
    default:
        return picture;
    }
}

Picture rotateImageCW(const Picture& picture) {
    return rotated(picture, VIPS_ANGLE_D90, true);
}
Picture rotateImageCCW(const Picture& picture) {
    return rotated(picture, VIPS_ANGLE_D270, true);
}
Picture rotateImage180(const Picture& picture) {
    return rotated(picture, VIPS_ANGLE_D180, false);
}

Picture copyImage(const Picture& picture, const Background& background) {
    // Copies keep the interpolation at its default; it only matters for a
    // picture that was shrunk on load.
    return draw(picture, SizeMath::copyLayout(logicalSize(picture)), ScaleQuality::Default, background);
}

Picture scaleImageToWidth(const Picture& picture, int width, bool downOnly, int interpolation,
                          const Background& background) {
    return draw(picture, SizeMath::toWidthLayout(logicalSize(picture), float(width), downOnly), interpolation,
                background);
}

Picture scaleImageToHeight(const Picture& picture, int height, bool downOnly, int interpolation,
                           const Background& background) {
    return draw(picture, SizeMath::toHeightLayout(logicalSize(picture), float(height), downOnly),
                interpolation, background);
}

Picture scaleImageToFit(const Picture& picture, SizeF box, bool downOnly, bool flipForPortrait,
                        int interpolation, const Background& background) {
    return draw(picture, SizeMath::fitLayout(logicalSize(picture), box, downOnly, flipForPortrait),
                interpolation, background);
}

Picture scaleImageToFill(const Picture& picture, SizeF box, bool downOnly, bool flipForPortrait,
                         int interpolation, const Background& background) {
    return draw(picture, SizeMath::fillLayout(logicalSize(picture), box, downOnly, flipForPortrait),
                interpolation, background);
}

Picture stretchImageToFit(const Picture& picture, SizeF box, bool downOnly, bool flipForPortrait,
                          int interpolation, const Background& background) {
    return draw(picture, SizeMath::stretchLayout(logicalSize(picture), box, downOnly, flipForPortrait),
                interpolation, background);
}

Picture cropImageToFit(const Picture& picture, SizeF box, int cropAreaPercentage, bool flipForPortrait,
                       int interpolation, const Background& background) {
    return draw(picture, SizeMath::cropLayout(logicalSize(picture), box, cropAreaPercentage, flipForPortrait),
                interpolation, background);
}

Picture scaleImageByPercent(const Picture& picture, int percent, int interpolation,
                            const Background& background) {
    return draw(picture, SizeMath::percentLayout(logicalSize(picture), percent), interpolation, background);
}

Picture thumbnail(const Picture& picture, int width, int height) {
    return scaleImageToFit(picture, {float(width), float(height)}, true, false, ScaleQuality::None,
                           std::nullopt);
}

namespace {

Picture turned(const Picture& picture, int rotation, const OrientationSource& orientation,
               bool& autoRotated) {
    switch (rotation) {
    case Rotation::Clockwise:
        return rotateImageCW(picture);
    case Rotation::CounterClockwise:
        return rotateImageCCW(picture);
    case Rotation::HalfTurn:
        return rotateImage180(picture);
    case Rotation::Automatic: {
        const int tag = orientation ? orientation() : 1;
        autoRotated = tag >= 2 && tag <= 8;
        return uprightFromOrientation(picture, tag);
    }
    default:
        return picture;
    }
}

} // namespace

Processed processImage(const Picture& picture, const OrientationSource& orientation, int rotation,
                       const Sizing& sizing, const Background& background) {
    Processed out;
    const Picture upright = turned(picture, rotation, orientation, out.autoRotated);
    // A plain copy keeps the default interpolation whatever "ScaleQuality"
    // says; it only matters for a picture shrunk on load.
    if (sizing.scaleType == ScaleType::None)
        out.picture = copyImage(upright, background);
    else
        out.picture =
            draw(upright, sizingLayout(sizing, logicalSize(upright)), sizing.interpolation, background);
    return out;
}

} // namespace Geometry

} // namespace quillet
