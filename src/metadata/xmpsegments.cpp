#include "metadata/xmpsegments.h"

#include "metadata/xmptext.h"

#include <cctype>

namespace quillet {

namespace {

constexpr quint8 App1 = 0xE1;
constexpr qsizetype GuidSize = 32;

bool isGuid(const QByteArray& text) {
    if (text.size() != GuidSize)
        return false;
    for (const char c : text)
        if (!std::isxdigit(static_cast<unsigned char>(c)))
            return false;
    return true;
}

} // namespace

QList<XmpSegments::Segment> XmpSegments::of(const JpegSegmentList& list) {
    const qsizetype main = list.find(App1, JpegSegmentList::XmpSignature);
    if (main < 0)
        return {};
    const Segment& packet = list.segments()[main];
    QList<Segment> out{packet};
    const QByteArray guid = extendedGuid(packet.payload.mid(JpegSegmentList::XmpSignature.size()));
    if (guid.isEmpty())
        return out;
    // Writers put the extension after the main packet, but nothing forbids
    // the other way round; file order is kept either way.
    for (const Segment& segment : list.segments())
        if (guidOf(segment) == guid)
            out.append(segment);
    return out;
}

QByteArray XmpSegments::extendedGuid(const QByteArray& packet) {
    for (const XmpText::Value& value : XmpText::values(packet, {}, "HasExtendedXMP")) {
        const QByteArray guid = packet.mid(value.start, value.length);
        if (isGuid(guid))
            return guid;
    }
    return {};
}

QByteArray XmpSegments::guidOf(const Segment& segment) {
    const QByteArray& signature = JpegSegmentList::XmpExtensionSignature;
    // GUID, then the full length and this piece's offset, four bytes each.
    if (segment.marker != App1 || !segment.payload.startsWith(signature) ||
        segment.payload.size() < signature.size() + GuidSize + 8)
        return {};
    const QByteArray guid = segment.payload.mid(signature.size(), GuidSize);
    return isGuid(guid) ? guid : QByteArray();
}

bool XmpSegments::isMain(const Segment& segment) {
    return segment.marker == App1 && segment.payload.startsWith(JpegSegmentList::XmpSignature);
}

} // namespace quillet
