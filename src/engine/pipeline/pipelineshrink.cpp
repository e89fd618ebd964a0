#include "engine/pipeline/pipelineshrink.h"

#include "engine/geometry/sizinglayout.h"
#include "engine/pipeline/pictureloader.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace quillet {

namespace {

// The whole picture's size when drawn at the scale that maps the source
// rectangle onto the destination (a crop draws it larger than its canvas);
// none when the sizing keeps the file's own pixels.
std::optional<std::pair<double, double>> drawnSize(const Sizing& sizing, int width, int height) {
    if (width <= 0 || height <= 0 || sizing.interpolation == ScaleQuality::None)
        return std::nullopt;
    const SizeMath::Layout layout = sizingLayout(sizing, SizeMath::SizeF{float(width), float(height)});
    if (layout.copied || layout.source.width <= 0 || layout.source.height <= 0)
        return std::nullopt;
    const double drawnWidth = double(width) * layout.destination.width / layout.source.width;
    const double drawnHeight = double(height) * layout.destination.height / layout.source.height;
    if (!std::isfinite(drawnWidth) || !std::isfinite(drawnHeight) || drawnWidth <= 0 || drawnHeight <= 0)
        return std::nullopt;
    return std::pair(std::ceil(drawnWidth), std::ceil(drawnHeight));
}

} // namespace

int pipelineShrinkFactor(const Sizing& sizing, int width, int height) {
    const auto drawn = drawnSize(sizing, width, height);
    if (!drawn)
        return 1;
    return std::min(2, PictureLoader::jpegShrinkFor(width, height, drawn->first, drawn->second));
}

int pipelineBoxShrink(const Sizing& sizing, int width, int height, int decoded) {
    const auto drawn = drawnSize(sizing, width, height);
    if (!drawn || decoded < 1)
        return 1;
    const double ratio = std::min(std::ceil(double(width) / decoded) / drawn->first,
                                  std::ceil(double(height) / decoded) / drawn->second);
    // Beyond the range of a sane picture the factor is of no use anyway.
    return std::isfinite(ratio) ? int(std::clamp(std::floor(ratio / 2), 1.0, 1e6)) : 1;
}

} // namespace quillet
