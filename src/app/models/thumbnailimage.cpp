#include "app/models/thumbnailimage.h"

namespace quillet {

QImage thumbnailImage(const vips::VImage& source) {
    try {
        vips::VImage image = source;
        if (image.interpretation() == VIPS_INTERPRETATION_RGB16 ||
            image.interpretation() == VIPS_INTERPRETATION_GREY16)
            image = image.colourspace(image.bands() < 3 ? VIPS_INTERPRETATION_B_W : VIPS_INTERPRETATION_sRGB);
        if (image.format() != VIPS_FORMAT_UCHAR)
            image = image.cast(VIPS_FORMAT_UCHAR);
        if (image.bands() <= 2) {
            const vips::VImage grey = image.extract_band(0);
            std::vector<vips::VImage> bands{grey, grey, grey};
            if (image.bands() == 2)
                bands.push_back(image.extract_band(1));
            image = vips::VImage::bandjoin(bands);
        }
        if (image.bands() > 4)
            image = image.extract_band(0, vips::VImage::option()->set("n", 4));
        const bool alpha = image.bands() == 4;
        size_t size = 0;
        void* pixels = image.write_to_memory(&size);
        const int width = image.width();
        const int height = image.height();
        const int stride = width * image.bands();
        // Copied so the QImage owns its pixels and the buffer can go.
        QImage result = QImage(static_cast<const uchar*>(pixels), width, height, stride,
                               alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888)
                            .copy();
        g_free(pixels);
        return result;
    } catch (const vips::VError&) {
        return {};
    }
}

} // namespace quillet
