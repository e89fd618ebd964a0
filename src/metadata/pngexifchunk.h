#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QString>

namespace quillet {

// The EXIF of a PNG file: the data of its eXIf chunk, wherever the chunk
// stands. libvips reads one only before the pixel data, and common writers
// (ImageMagick among them) put it after.
namespace PngExifChunk {

// The chunk's data; empty when the file is no PNG, has no eXIf chunk before
// IEND, or holds one larger than any EXIF block we carry. The pixel data is
// skipped over, not read.
QByteArray fromFile(const QString& path);
QByteArray fromDevice(QIODevice& device);

} // namespace PngExifChunk

} // namespace quillet
