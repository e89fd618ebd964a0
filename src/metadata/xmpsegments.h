#pragma once

#include "metadata/jpegsegmentlist.h"

#include <QByteArray>
#include <QList>

namespace quillet {

// The XMP of a JPEG as the segments that hold it. A packet too large for one
// segment is split by its writer: the main packet names the rest by a GUID in
// its HasExtendedXMP property, and each extension segment carries that GUID
// (32 hex digits), the full length of the rest, its own offset in it and one
// piece of it.
class XmpSegments {
  public:
    using Segment = JpegSegmentList::Segment;

    // The first main packet's segment, then the extension segments that carry
    // the GUID it names, in file order. Extensions under another GUID (left by
    // an editor that rewrote the main packet) do not belong to it. Empty when
    // the file has no main packet.
    static QList<Segment> of(const JpegSegmentList& list);

    // The GUID a packet names in HasExtendedXMP (attribute or element form,
    // any prefix); empty when it names none.
    static QByteArray extendedGuid(const QByteArray& packet);
    // The GUID an extension segment carries; empty when it is not one.
    static QByteArray guidOf(const Segment& segment);

    static bool isMain(const Segment& segment);
};

} // namespace quillet
