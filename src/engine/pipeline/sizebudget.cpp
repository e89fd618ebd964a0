#include "engine/pipeline/sizebudget.h"

#include <algorithm>
#include <cmath>

namespace quillet {

using vips::VImage;

namespace SizeBudget {

Picture scaled(const Picture& picture, double scale) {
    VImage image = picture.image;
    const bool alpha = image.bands() == 4 && !picture.opaque;
    if (alpha)
        image = image.premultiply();
    image = image.resize(scale, VImage::option()->set("kernel", VIPS_KERNEL_LANCZOS3));
    if (alpha)
        image = image.unpremultiply();
    image = image.cast(VIPS_FORMAT_UCHAR).copy_memory();
    return Picture{image, double(image.width()), double(image.height()), picture.opaque};
}

std::optional<Fitted> shrinkToFit(const Picture& picture,
                                  const std::function<QByteArray(const Picture&)>& encode, qint64 size,
                                  qint64 limit) {
    if (limit <= 0 || !picture.image.get_image())
        return std::nullopt;
    double scale = 1.0;
    for (int step = 0; step < MaxSteps; ++step) {
        // Bytes go roughly with the pixel count, so with the square root of
        // the ratio; a little more keeps the steps few.
        const double guess = std::sqrt(double(limit) / double(std::max<qint64>(size, 1))) * 0.95;
        scale *= std::clamp(guess, 0.3, 0.9);
        if (picture.image.width() * scale < 1 || picture.image.height() * scale < 1)
            return std::nullopt;
        try {
            const Picture smaller = scaled(picture, scale);
            const QByteArray bytes = encode(smaller);
            if (bytes.isEmpty())
                return std::nullopt;
            if (bytes.size() <= limit)
                return Fitted{bytes, smaller.image.width(), smaller.image.height()};
            size = bytes.size();
        } catch (const vips::VError&) {
            vips_error_clear();
            return std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace SizeBudget

} // namespace quillet
