#include "engine/watermark/imagewatermark.h"

#include "engine/watermark/watermarkoverlay.h"
#include "support/activitylog.h"

#include <QFile>

namespace quillet {

std::optional<Picture> initWatermark(const QString& path) {
    if (path.isEmpty())
        return std::nullopt;
    // Read through a buffer: libvips would take "[...]" in a file name for
    // load options.
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    if (bytes.isEmpty())
        return std::nullopt;
    try {
        const vips::VImage decoded =
            vips::VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "");
        // Decode now, while the bytes are alive, and keep the pixels: the
        // watermark is drawn over every picture of the batch.
        const vips::VImage pixels = watermarkoverlay::toRgba8(decoded).copy_memory();
        return Picture{pixels, double(pixels.width()), double(pixels.height())};
    } catch (const vips::VError&) {
        return std::nullopt;
    }
}

QPointF watermarkOrigin(double pictureWidth, double pictureHeight, double width, double height,
                        int location) {
    const double right = pictureWidth - width;
    const double top = pictureHeight - height;
    switch (location) {
    case WatermarkLocation::BottomRight:
        return {right, 0};
    case WatermarkLocation::TopLeft:
        return {0, top};
    case WatermarkLocation::TopRight:
        return {right, top};
    case WatermarkLocation::BottomCentre:
        return {right / 2, 0};
    case WatermarkLocation::TopCentre:
        return {right / 2, top};
    case WatermarkLocation::Centre:
        return {right / 2, top / 2};
    default:
        return {0, 0};
    }
}

void drawWatermark(const Picture& watermark, Picture& image, int location, int opacity, ActivityLog& log) {
    // An empty picture on either side has nothing to draw or draw on.
    if (location == WatermarkLocation::None || !watermark.image.get_image() || !image.image.get_image())
        return;
    const int pictureWidth = image.image.width();
    const int pictureHeight = image.image.height();
    const int width = watermark.image.width();
    const int height = watermark.image.height();
    if (width > pictureWidth || height > pictureHeight)
        log.writeWarningActivity(QStringLiteral("\tWarning: watermark is larger than image\n"));

    const QPointF origin = watermarkOrigin(pictureWidth, pictureHeight, width, height, location);
    // The origin above is bottom-up; pixels run top-down.
    const double top = pictureHeight - origin.y() - height;
    try {
        vips::VImage pixels = watermarkoverlay::toRgba8(image.image);
        const vips::VImage layer =
            watermarkoverlay::layerFromRgba(watermarkoverlay::toRgba8(watermark.image), opacity / 100.0);
        watermarkoverlay::drawOver(pixels, layer, origin.x(), top);
        image.image = pixels;
    } catch (const vips::VError& error) {
        throw WatermarkError(error.what());
    }
}

} // namespace quillet
