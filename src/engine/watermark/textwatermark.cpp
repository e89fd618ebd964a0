#include "engine/watermark/textwatermark.h"

#include "engine/watermark/textwatermarkstyle.h"
#include "engine/watermark/watermarkoverlay.h"
#include "support/systemutility.h"

#include <algorithm>
#include <cmath>

namespace quillet {

using vips::VImage;

namespace {

constexpr double kBarPerLine = 1.2;
constexpr double kMargin = 10;

// A shadow's blur radius is read as two standard deviations of the Gaussian
// that spreads it, the usual meaning in desktop drawing libraries.
double blurSigma(double radius) {
    return radius / 2;
}

void drawShadow(VImage& pixels, const VImage& mask, const TextShadow& shadow, double left, double top) {
    const double sigma = blurSigma(shadow.blurRadius);
    VImage spread = mask;
    int margin = 0;
    if (sigma > 0) {
        margin = int(std::ceil(3 * sigma)) + 1;
        spread = mask.embed(margin, margin, mask.width() + 2 * margin, mask.height() + 2 * margin)
                     .cast(VIPS_FORMAT_FLOAT)
                     .gaussblur(sigma, VImage::option()->set("min_ampl", 0.01));
    }
    // The offset's y points up; pixel rows run down.
    watermarkoverlay::drawOver(pixels, watermarkoverlay::layerFromMask(spread, shadow.color),
                               left - margin + shadow.offsetX, top - margin - shadow.offsetY);
}

} // namespace

TextBarLayout drawAttributedStrings(const StyledTexts& styled, Picture& image, const RgbaColor& background,
                                    double initialX, double spacing) {
    TextBarLayout layout;
    layout.fontSize = styled.fontSize;
    layout.spacing = spacing;
    if (styled.texts.empty() || !image.image.get_image())
        return layout;

    VImage pixels = watermarkoverlay::toRgba8(image.image);
    const double height = pixels.height();
    layout.lineHeight = styled.texts.front().height;
    layout.barHeight = layout.lineHeight * kBarPerLine;
    const int barRows = int(std::ceil(layout.barHeight));
    watermarkoverlay::drawOver(pixels, watermarkoverlay::solidLayer(pixels.width(), barRows, background), 0,
                               height - layout.barHeight);

    const double baseline = height - (layout.barHeight - layout.lineHeight) / 2;
    double x = initialX;
    for (const StyledText& text : styled.texts) {
        layout.x.push_back(x);
        layout.widths.push_back(text.width);
        for (const StyledText::Run& run : text.runs) {
            const double left = x + run.x;
            const double top = baseline - run.mask.height();
            if (text.style.shadow)
                drawShadow(pixels, run.mask, *text.style.shadow, left, top);
            watermarkoverlay::drawOver(pixels, watermarkoverlay::layerFromMask(run.mask, text.style.color),
                                       left, top);
        }
        x += text.width + spacing;
    }
    image.image = pixels;
    return layout;
}

TextBarLayout drawStrings(const QStringList& texts, Picture& image, int sizeIndex, int style,
                          const RgbaColor& background) {
    if (texts.isEmpty())
        throw WatermarkError(QStringLiteral("_drawString: numStrings=%1").arg(texts.size()).toStdString());
    if (!image.image.get_image())
        return {};
    try {
        const int width = image.image.width();
        const int wanted = startFontSize(image.image.height(), sizeIndex);
        const int startSize = std::min(wanted, kLargestFontSize);
        const StyledTexts styled =
            fitStrings(texts, startSize, width, textWatermarkStyle(style, SystemUtility::drawsTextShadows()));
        const qsizetype count = texts.size();
        const double spacing =
            count > 1 ? double(width - styled.totalWidth - 2 * kMargin) / double(count - 1) : 0;
        TextBarLayout layout = drawAttributedStrings(styled, image, background, kMargin, spacing);
        layout.sizeCapped = wanted > startSize && styled.fontSize == startSize;
        return layout;
    } catch (const vips::VError& error) {
        throw WatermarkError(error.what());
    }
}

} // namespace quillet
