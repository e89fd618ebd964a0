#pragma once

#include "metadata/tiffbytes.h"

#include <QByteArray>

namespace quillet {

// Blanks the maker-note fields known to hold the camera's or the lens's
// serial number or the owner's name. A maker note is the camera maker's own
// directory inside the EXIF block, laid out differently by each maker; only
// the layouts recognised here are touched, and only the values of those
// fields, so the note keeps its size and every offset in it stays valid.
class MakerNoteScrubber {
  public:
    // `at` and `size` place the maker note in `tiff`; `make` is the camera
    // maker from IFD0. Returns how many fields held something.
    static int scrub(TiffBytes& tiff, qint64 at, qint64 size, const QByteArray& make);
};

} // namespace quillet
