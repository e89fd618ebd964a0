#include "metadata/xmporientation.h"

#include "metadata/xmptext.h"

namespace quillet {

bool XmpOrientation::resetToUpright(QByteArray& packet) {
    QList<QByteArray> prefixes{"tiff"};
    // The property belongs to the TIFF namespace; some writers put it under
    // the EXIF one, and readers take it from there too.
    for (const char* uri : {"http://ns.adobe.com/tiff/1.0/", "http://ns.adobe.com/exif/1.0/"})
        for (const QByteArray& prefix : XmpText::prefixesOf(packet, uri))
            if (!prefixes.contains(prefix))
                prefixes.append(prefix);
    const QList<XmpText::Value> values = XmpText::values(packet, prefixes, "Orientation");
    bool changed = false;
    // Last first: a value of another length then moves none still to come.
    for (auto value = values.crbegin(); value != values.crend(); ++value) {
        bool ok = false;
        if (packet.mid(value->start, value->length).toInt(&ok) <= 1 || !ok)
            continue;
        packet.replace(value->start, value->length, "1");
        changed = true;
    }
    return changed;
}

} // namespace quillet
