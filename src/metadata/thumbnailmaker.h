#pragma once

#include <vips/vips8>

#include <QString>

#include <optional>

namespace quillet {

// Thumbnails of at most a box's size, aspect kept, as 4-band sRGB uchar.
namespace thumbnailmaker {

// The size a w x h picture takes when fitted into a W x H box: the long side
// fills the box, the other is rounded to the nearest pixel (at least 1).
// Nothing when either side of the picture is 0.
std::optional<std::pair<int, int>> fitSize(int w, int h, int boxWidth, int boxHeight);

// Scales a whole picture to fit the box, up or down.
std::optional<vips::VImage> scaleImageToFit(const vips::VImage& image, int boxWidth, int boxHeight);

// Decodes a file or an encoded picture in memory (shrinking on load where the
// format allows) and fits it into the box. Nothing when it cannot be decoded.
std::optional<vips::VImage> thumbnailForPath(const QString& path, int boxWidth, int boxHeight);
std::optional<vips::VImage> thumbnailForBuffer(const void* data, size_t size, int boxWidth, int boxHeight);

} // namespace thumbnailmaker

} // namespace quillet
