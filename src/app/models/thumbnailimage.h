#pragma once

#include <QImage>

#include <vips/vips8>

namespace quillet {

// A small libvips picture (the status thumbnail) as a QImage of its own: one
// or two bands become grey, three RGB, four RGBA; any sample format is cast
// to 8 bits. Safe on any thread.
QImage thumbnailImage(const vips::VImage& image);

} // namespace quillet
