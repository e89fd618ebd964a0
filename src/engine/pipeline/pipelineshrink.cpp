#include "engine/pipeline/pipelineshrink.h"

#include "engine/geometry/sizemath.h"
#include "engine/pipeline/pictureloader.h"

#include <cmath>

namespace quillet {

namespace {

using SizeMath::SizeF;

// The sizing step's layout for the picture, none for modes that copy.
std::optional<SizeMath::Layout> layoutFor(const ProcessingParams& params, SizeF picture) {
    const SizeF box{float(params.intValue(ParamKey::Width)), float(params.intValue(ParamKey::Height))};
    const bool downOnly = params.boolValue(ParamKey::ScaleDownOnly);
    const bool flip = params.boolValue(ParamKey::FlipRatio);
    switch (params.intValue(ParamKey::ScaleType)) {
    case ScaleType::ToWidth:
        return SizeMath::toWidthLayout(picture, box.width, downOnly);
    case ScaleType::ToHeight:
        return SizeMath::toHeightLayout(picture, box.height, downOnly);
    case ScaleType::Fit:
        return SizeMath::fitLayout(picture, box, downOnly, flip);
    case ScaleType::Fill:
        return SizeMath::fillLayout(picture, box, downOnly, flip);
    case ScaleType::Stretch:
        return SizeMath::stretchLayout(picture, box, downOnly, flip);
    case ScaleType::Crop:
        return SizeMath::cropLayout(picture, box, params.intValue(ParamKey::CropAreaPercentage), flip);
    case ScaleType::Percent:
        return SizeMath::percentLayout(picture, params.intValue(ParamKey::ScalePercent));
    default:
        return std::nullopt;
    }
}

} // namespace

int pipelineShrinkFactor(const ProcessingParams& params, int width, int height) {
    if (width <= 0 || height <= 0 || params.intValue(ParamKey::ScaleQuality) == ScaleQuality::None)
        return 1;
    const auto layout = layoutFor(params, SizeF{float(width), float(height)});
    if (!layout || layout->copied || layout->source.width <= 0 || layout->source.height <= 0)
        return 1;
    // The whole picture drawn at the scale that maps the source rectangle
    // onto the destination (a crop draws it larger than its canvas).
    const double drawnWidth = double(width) * layout->destination.width / layout->source.width;
    const double drawnHeight = double(height) * layout->destination.height / layout->source.height;
    if (!std::isfinite(drawnWidth) || !std::isfinite(drawnHeight))
        return 1;
    return PictureLoader::jpegShrinkFor(width, height, std::ceil(drawnWidth), std::ceil(drawnHeight));
}

} // namespace quillet
