#pragma once

#include <QByteArray>

namespace quillet {

// The orientation an XMP packet records for its picture (tiff:Orientation),
// which viewers that read XMP obey as they do the EXIF tag.
class XmpOrientation {
  public:
    // Sets every orientation the packet records to 1 (upright) where it says
    // something else, in the attribute and in the element form, under any
    // prefix bound to the TIFF (or EXIF) namespace and under "tiff". A
    // one-digit value is replaced by one digit, so the packet keeps its length.
    // Returns whether anything changed.
    static bool resetToUpright(QByteArray& packet);
};

} // namespace quillet
