#include "engine/watermark/textwatermarkstyle.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quillet {

TextWatermarkStyle textWatermarkStyle(int style, bool shadowsAvailable) {
    TextWatermarkStyle result;
    switch (style) {
    case 0:
        result.color = RgbaColor::white();
        break;
    case 1:
        result.color = RgbaColor::white();
        if (shadowsAvailable)
            result.shadow = TextShadow{1.5, -1.0, 3.0, RgbaColor::black(0.9)};
        break;
    case 3:
        result.color = RgbaColor::black();
        if (shadowsAvailable)
            result.shadow = TextShadow{0, 0, 4.0, RgbaColor::white()};
        break;
    default:
        // Style 2, and the plain black a text gets when no colour is set.
        result.color = RgbaColor::black();
        break;
    }
    return result;
}

double fontSizeFactor(int sizeIndex) {
    static constexpr std::array<double, 5> factors{0.01, 0.021, 0.027, 0.037, 0.055};
    return factors[std::clamp(sizeIndex, 0, int(factors.size()) - 1)];
}

int startFontSize(double pictureHeight, int sizeIndex) {
    return int(std::lround(pictureHeight * fontSizeFactor(sizeIndex)));
}

} // namespace quillet
