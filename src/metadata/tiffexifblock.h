#pragma once

#include "metadata/tiffsource.h"

#include <QByteArray>
#include <QString>

namespace quillet {

// The EXIF data of a TIFF file as a standalone block (the TIFF structure that
// follows "Exif\0\0" in a JPEG), built from the file's first directory: the
// tags there that describe the picture rather than the file's pixel layout,
// with the Exif directory (and its Interoperability directory) and the GPS
// directory. Values are copied and re-pointed, in the file's byte order.
class TiffExifBlock {
  public:
    // The most a block may hold: one APP1 segment less its signature.
    static constexpr qsizetype MaxSize = 65533 - 6;

    // The block of the TIFF at `path`; empty when the file is no classic TIFF
    // (BigTIFF included), its first directory cannot be read, or it holds
    // nothing worth carrying over.
    static QByteArray fromFile(const QString& path);
    static QByteArray fromSource(TiffSource& source);
};

} // namespace quillet
