#pragma once

#include "engine/picture.h"

#include <QPointF>
#include <QString>

#include <optional>

namespace quillet {

class ActivityLog;

// Location codes of the image watermark ("WatermarkLocation").
namespace WatermarkLocation {
enum : int {
    None = 0,
    BottomLeft = 1,
    BottomRight = 2,
    TopLeft = 3,
    TopRight = 4,
    BottomCentre = 5,
    TopCentre = 6,
    Centre = 7,
};
}

// Loads the watermark picture once per worker. Its logical size is its pixel
// size, so it is always drawn one watermark pixel per output pixel. Gives
// nothing for an empty path or a file that does not decode.
std::optional<Picture> initWatermark(const QString& path);

// Where a w x h watermark's bottom-left corner goes on a W x H picture, with
// the origin at the picture's bottom left. No margin, and the centred
// positions keep their half pixels. Unknown codes place it at the bottom left.
QPointF watermarkOrigin(double pictureWidth, double pictureHeight, double width, double height, int location);

// Draws the watermark over the picture at the location, source over, at
// opacity percent (clamped to 0..100). Location 0 draws nothing. A watermark
// wider or taller than the picture logs a warning and is drawn clipped.
// Throws WatermarkError when libvips refuses the drawing.
void drawWatermark(const Picture& watermark, Picture& image, int location, int opacity, ActivityLog& log);

} // namespace quillet
