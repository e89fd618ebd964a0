#include "engine/pipeline/pipelineshrink.h"

#include "engine/geometry/sizinglayout.h"
#include "engine/pipeline/pictureloader.h"

#include <cmath>

namespace quillet {

int pipelineShrinkFactor(const Sizing& sizing, int width, int height) {
    if (width <= 0 || height <= 0 || sizing.interpolation == ScaleQuality::None)
        return 1;
    const SizeMath::Layout layout = sizingLayout(sizing, SizeMath::SizeF{float(width), float(height)});
    if (layout.copied || layout.source.width <= 0 || layout.source.height <= 0)
        return 1;
    // The whole picture drawn at the scale that maps the source rectangle
    // onto the destination (a crop draws it larger than its canvas).
    const double drawnWidth = double(width) * layout.destination.width / layout.source.width;
    const double drawnHeight = double(height) * layout.destination.height / layout.source.height;
    if (!std::isfinite(drawnWidth) || !std::isfinite(drawnHeight))
        return 1;
    return PictureLoader::jpegShrinkFor(width, height, std::ceil(drawnWidth), std::ceil(drawnHeight));
}

} // namespace quillet
