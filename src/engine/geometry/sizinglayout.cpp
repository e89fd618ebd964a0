#include "engine/geometry/sizinglayout.h"

namespace quillet {

SizeMath::Layout sizingLayout(const Sizing& s, SizeMath::SizeF picture) {
    const SizeMath::SizeF box{float(s.width), float(s.height)};
    switch (s.scaleType) {
    case ScaleType::ToWidth:
        return SizeMath::toWidthLayout(picture, box.width, s.downOnly);
    case ScaleType::ToHeight:
        return SizeMath::toHeightLayout(picture, box.height, s.downOnly);
    case ScaleType::Fit:
        return SizeMath::fitLayout(picture, box, s.downOnly, s.flipForPortrait);
    case ScaleType::Fill:
        return SizeMath::fillLayout(picture, box, s.downOnly, s.flipForPortrait);
    case ScaleType::Stretch:
        return SizeMath::stretchLayout(picture, box, s.downOnly, s.flipForPortrait);
    case ScaleType::Crop:
        return SizeMath::cropLayout(picture, box, s.cropAreaPercentage, s.flipForPortrait);
    case ScaleType::Percent:
        return SizeMath::percentLayout(picture, s.percent);
    default:
        return SizeMath::copyLayout(picture);
    }
}

} // namespace quillet
