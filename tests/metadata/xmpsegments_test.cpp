#include "metadata/xmpsegments.h"

#include "inplace/jpegfixtures.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;
using namespace jpegfixtures;

namespace {

const QByteArray Guid("0123456789ABCDEF0123456789ABCDEF");
const QByteArray Other("FEDCBA9876543210FEDCBA9876543210");

// The payloads of `segments`, in order.
QList<QByteArray> payloads(const QList<JpegSegmentList::Segment>& segments) {
    QList<QByteArray> out;
    for (const JpegSegmentList::Segment& segment : segments)
        out.append(segment.payload);
    return out;
}

QList<QByteArray> xmpOf(const QByteArray& segments) {
    return payloads(XmpSegments::of(JpegSegmentList::parse(markedJpeg(1, true, segments)).value()));
}

QByteArray payloadOf(const QByteArray& segment) {
    return segment.mid(4);
}

TEST(XmpSegments, TheMainPacketTakesOnlyTheExtensionItNames) {
    const QByteArray main = xmpSegment(xmpPacket("xmpNote:HasExtendedXMP=\"" + Guid + "\">"));
    const QByteArray first = xmpExtension(Guid, 10, 0, "<x:a>"), second = xmpExtension(Guid, 10, 5, "</x:a");
    // A stale extension of an earlier edit sits between the pieces; an ICC
    // profile between the main packet and its extension.
    const QByteArray stale = xmpExtension(Other, 4, 0, "gone");
    const QByteArray icc = segment(0xE2, QByteArray("ICC_PROFILE\0\x01\x01", 14) + "not read");
    EXPECT_EQ(xmpOf(main + icc + first + stale + second),
              (QList<QByteArray>{payloadOf(main), payloadOf(first), payloadOf(second)}));

    // Named in the element form, with another prefix.
    const QByteArray element = xmpSegment(xmpPacket(
        "xmlns:n='http://ns.adobe.com/xmp/note/'>\n<n:HasExtendedXMP> " + Other + " </n:HasExtendedXMP>"));
    EXPECT_EQ(xmpOf(element + first + stale), (QList<QByteArray>{payloadOf(element), payloadOf(stale)}));

    // A packet that names none has no extension; without a packet, nothing.
    const QByteArray alone = xmpSegment(xmpPacket(">"));
    EXPECT_EQ(xmpOf(alone + first + second), QList<QByteArray>{payloadOf(alone)});
    EXPECT_TRUE(xmpOf(first + second).isEmpty());
}

} // namespace

TEST(XmpSegments, AHeaderReadFromTheFileHoldsTheSegmentsOfTheWholeFile) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "xmp-BlueSquare.jpg");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::optional<JpegSegmentList> whole = JpegSegmentList::parse(file.readAll());
    const std::optional<JpegSegmentList> header = JpegSegmentList::readHeader(path);
    ASSERT_TRUE(whole && header);
    ASSERT_EQ(header->segments().size(), whole->segments().size());
    for (qsizetype i = 0; i < whole->segments().size(); ++i) {
        EXPECT_EQ(header->segments()[i].marker, whole->segments()[i].marker);
        EXPECT_EQ(header->segments()[i].payload, whole->segments()[i].payload);
    }
    EXPECT_EQ(XmpSegments::of(*header).size(), 1);

    // A header cut short, or a file that is no JPEG, gives nothing.
    QTemporaryDir dir;
    const QString cut = dir.filePath(QStringLiteral("cut.jpg"));
    testsupport::writeFile(cut, whole->toBytes().left(200));
    EXPECT_FALSE(JpegSegmentList::readHeader(cut));
    EXPECT_FALSE(JpegSegmentList::readHeader(dir.filePath(QStringLiteral("missing.jpg"))));
}
