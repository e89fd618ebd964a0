#pragma once

#include "metadata/metadatapolicy.h"

#include <QByteArray>

namespace quillet {

// Takes out of an XMP packet the properties a metadata policy leaves out,
// cutting their text out of the packet and leaving every other byte as it
// was. A property is a child element or an attribute of a top-level
// rdf:Description, removed with all it holds.
//
// NoLocation removes the GPS properties, the IPTC place names and
// locations, and the serial-number, owner and unique-ID properties. Minimal
// keeps orientation, capture date, copyright, usage rights and creator. Both
// remove the pointer to an Extended XMP, which the outputs no longer carry.
// None removes the packet.
class XmpFilter {
  public:
    struct Result {
        QByteArray packet; // empty when nothing is left
        MetadataRemoval removed;
    };

    // Keep gives the packet back untouched. A packet that is not well-formed
    // XML is dropped whole by every other policy.
    static Result filter(const QByteArray& packet, MetadataPolicy policy);
};

} // namespace quillet
