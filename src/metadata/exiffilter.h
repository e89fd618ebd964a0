#pragma once

#include "metadata/metadatapolicy.h"

#include <QByteArray>

namespace quillet {

// Takes out of an EXIF block (the TIFF structure that follows "Exif\0\0")
// what a metadata policy leaves out. Entries are taken out of their
// directory and their values overwritten with zeros where they lie, so no
// offset in the block moves (maker notes keep working) and nothing removed
// can be read back from the bytes.
//
// NoLocation drops the GPS directory and the serial-number, owner and
// unique-ID tags, and blanks the maker-note fields known to hold serials.
// Minimal keeps orientation, resolution, copyright, artist, the capture date
// with its sub-seconds and time zone, and the colour space; no maker note.
// Both drop the thumbnail, a picture of the input before it was edited.
// None keeps nothing.
class ExifFilter {
  public:
    struct Result {
        QByteArray tiff; // empty when nothing is left
        MetadataRemoval removed;
    };

    // Keep gives the block back untouched. A block whose header or first
    // directory cannot be read is dropped whole by every other policy: what
    // it holds cannot be told.
    static Result filter(const QByteArray& tiff, MetadataPolicy policy);
};

} // namespace quillet
