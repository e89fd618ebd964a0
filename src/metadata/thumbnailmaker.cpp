#include "metadata/thumbnailmaker.h"

#include <QFile>

#include <cmath>
#include <functional>
#include <memory>

namespace quillet {

namespace thumbnailmaker {

namespace {

vips::VImage toRgba(vips::VImage image) {
    if (image.interpretation() != VIPS_INTERPRETATION_sRGB)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    if (image.bands() == 3)
        image = image.bandjoin_const({255});
    if (image.bands() > 4)
        image = image.extract_band(0, vips::VImage::option()->set("n", 4));
    return image.copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
}

// Exactly w x h: resize can land a pixel off when the scale rounds.
vips::VImage exactSize(const vips::VImage& image, int w, int h) {
    if (image.width() == w && image.height() == h)
        return image;
    return image.gravity(VIPS_COMPASS_DIRECTION_NORTH_WEST, w, h,
                         vips::VImage::option()->set("extend", VIPS_EXTEND_COPY));
}

// libvips's thumbnail forced to the fitted size: the shrink-on-load keeps
// big pictures cheap and the rounding is ours.
std::optional<vips::VImage> forcedThumbnail(const vips::VImage& header,
                                            const std::function<vips::VImage(int, vips::VOption*)>& make,
                                            int boxWidth, int boxHeight) {
    const auto size = fitSize(header.width(), header.height(), boxWidth, boxHeight);
    if (!size)
        return std::nullopt;
    vips::VImage thumb = make(size->first, (vips::VImage::option()
                                                ->set("height", size->second)
                                                ->set("size", VIPS_SIZE_FORCE)
                                                ->set("no_rotate", true)));
    // Decoded here, inside the caller's try: a damaged file must fail now,
    // not later in whoever draws the thumbnail.
    return exactSize(toRgba(thumb), size->first, size->second).copy_memory();
}

} // namespace

std::optional<std::pair<int, int>> fitSize(int w, int h, int boxWidth, int boxHeight) {
    if (w <= 0 || h <= 0 || boxWidth <= 0 || boxHeight <= 0)
        return std::nullopt;
    const double aspect = double(w) / h;
    int width = boxWidth;
    int height = boxHeight;
    if (aspect > double(boxWidth) / boxHeight)
        height = int(std::lround(boxWidth / aspect));
    else
        width = int(std::lround(aspect * boxHeight));
    return std::make_pair(std::max(width, 1), std::max(height, 1));
}

std::optional<vips::VImage> scaleImageToFit(const vips::VImage& image, int boxWidth, int boxHeight) {
    const auto size = fitSize(image.width(), image.height(), boxWidth, boxHeight);
    if (!size)
        return std::nullopt;
    try {
        const vips::VImage rgba = toRgba(image);
        const vips::VImage scaled =
            rgba.premultiply()
                .resize(double(size->first) / image.width(),
                        vips::VImage::option()->set("vscale", double(size->second) / image.height()))
                .unpremultiply()
                .cast(VIPS_FORMAT_UCHAR);
        return exactSize(scaled, size->first, size->second).copy_memory();
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

std::optional<vips::VImage> thumbnailForPath(const QString& path, int boxWidth, int boxHeight) {
    const QByteArray native = QFile::encodeName(path);
    try {
        const vips::VImage header = vips::VImage::new_from_file(native.constData());
        return forcedThumbnail(
            header,
            [&native](int width, vips::VOption* options) {
                return vips::VImage::thumbnail(native.constData(), width, options);
            },
            boxWidth, boxHeight);
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

std::optional<vips::VImage> thumbnailForBuffer(const void* data, size_t size, int boxWidth, int boxHeight) {
    try {
        const vips::VImage header = vips::VImage::new_from_buffer(data, size, "");
        return forcedThumbnail(
            header,
            [data, size](int width, vips::VOption* options) {
                const std::unique_ptr<VipsBlob, void (*)(VipsBlob*)> blob(
                    vips_blob_new(nullptr, data, size), [](VipsBlob* b) { vips_area_unref(VIPS_AREA(b)); });
                // The blob does not own the bytes: decode now, while they live.
                return vips::VImage::thumbnail_buffer(blob.get(), width, options).copy_memory();
            },
            boxWidth, boxHeight);
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

} // namespace thumbnailmaker

} // namespace quillet
