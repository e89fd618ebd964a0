// The EXIF filter over blocks built byte by byte: what each policy leaves,
// that nothing it removed can still be found in the bytes, and what it
// counts. Both byte orders, since every value is read and written in the
// block's own.

#include "exifblocks.h"

#include "metadata/exifeditor.h"
#include "metadata/exiffilter.h"
#include "metadata/jpegsegmentlist.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;
using namespace quillet::exifblocks;

namespace {

// Canon's maker-note layout: a bare directory whose value offsets count
// from the TIFF header, placed at `at`: a field that is no serial, a serial
// as a LONG and another as text.
Bytes canonNote(const TiffBuilder& t, uint32_t at) {
    const std::string serial = "INTERNAL-SN-42";
    Bytes note = t.u16(3);
    const auto entry = [&](uint16_t tag, uint16_t format, uint32_t count, const Bytes& value) {
        for (const Bytes& b : {t.u16(tag), t.u16(format), t.u32(count), value})
            note.insert(note.end(), b.begin(), b.end());
    };
    Bytes shortField = t.u16(1234);
    shortField.resize(4, 0);
    entry(0x0001, 3, 1, shortField);
    entry(0x000C, 4, 1, t.u32(0x5E7A11u));
    entry(0x0096, 2, uint32_t(serial.size() + 1), t.u32(at + 2 + 3 * 12 + 4));
    note.insert(note.end(), 4, 0);
    note.insert(note.end(), serial.begin(), serial.end());
    note.push_back(0);
    return note;
}

struct Laid {
    Bytes block;
    uint32_t noteAt = 0;
    uint32_t thumbnailAt = 0;
};

// A Canon-like block: IFD0 with the camera, the orientation and the rights;
// the Exif directory with the date, a serial, an owner and a maker note; a
// GPS directory; a thumbnail.
Laid layOut(bool motorola, const Bytes& note, uint32_t thumbnailAt) {
    TiffBuilder t(motorola);
    const int ifd0 = t.addIfd(), exif = t.addIfd(), gps = t.addIfd(), ifd1 = t.addIfd();
    t.addAscii(ifd0, 0x010F, "Canon");
    t.addAscii(ifd0, 0x0110, "Canon EOS 40D");
    t.addShort(ifd0, 0x0112, 6);
    t.addAscii(ifd0, 0x013B, "Ann Artist");
    t.addAscii(ifd0, 0x8298, "(c) Ann Artist");
    t.addSubIfd(ifd0, 0x8769, exif);
    t.addSubIfd(ifd0, 0x8825, gps);
    t.link(ifd0, ifd1);
    t.addRational(exif, 0x829A, 1, 160);
    t.addAscii(exif, 0x9003, "2008:05:30 15:56:01");
    t.addAscii(exif, 0xA430, "Owner Olsen");
    t.addAscii(exif, 0xA431, "BODY-SERIAL-77");
    t.add(exif, {0x927C, 7, uint32_t(note.size()), note});
    t.addAscii(gps, 0x0001, "N");
    t.addRational(gps, 0x0002, 52, 1);
    t.addAscii(gps, 0x001D, "2011:11:11");
    t.addLong(ifd1, 0x0201, thumbnailAt);
    t.addLong(ifd1, 0x0202, 6);
    t.trailer = {'T', 'H', 'U', 'M', 'B', '!'};
    Laid out{t.build(), 0, t.trailerOffset};
    // The maker note's entry is the Exif directory's last.
    const size_t field = t.ifdOffsets[size_t(exif)] + 2 + 4 * 12 + 8;
    for (int i = 0; i < 4; ++i)
        out.noteAt = out.noteAt << 8 | out.block[field + size_t(motorola ? i : 3 - i)];
    return out;
}

// Laid out once with a stand-in of the note's size to learn where the note
// and the thumbnail go, then for real.
QByteArray cameraBlock(bool motorola) {
    const TiffBuilder order(motorola);
    const Laid first = layOut(motorola, Bytes(canonNote(order, 0).size(), 0), 0);
    return toQ(layOut(motorola, canonNote(order, first.noteAt), first.thumbnailAt).block);
}

class ExifFilterTest : public ::testing::TestWithParam<bool> {};

TEST_P(ExifFilterTest, KeepGivesTheBlockBackUntouched) {
    const QByteArray block = cameraBlock(GetParam());
    const ExifFilter::Result out = ExifFilter::filter(block, MetadataPolicy::Keep);
    EXPECT_EQ(out.tiff, block);
    EXPECT_EQ(out.removed.total(), 0);
}

TEST_P(ExifFilterTest, NoLocationLeavesNoTraceOfPlaceOrSerials) {
    const QByteArray block = cameraBlock(GetParam());
    const ExifFilter::Result out = ExifFilter::filter(block, MetadataPolicy::NoLocation);
    ASSERT_EQ(out.tiff.size(), block.size()) << "nothing moves";
    for (const char* gone : {"BODY-SERIAL-77", "Owner Olsen", "INTERNAL-SN-42", "2011:11:11", "THUMB!"})
        EXPECT_FALSE(out.tiff.contains(gone)) << gone;
    EXPECT_EQ(out.removed.location, 3);
    EXPECT_EQ(out.removed.identifying, 4); // owner, body serial, two maker-note serials
    EXPECT_EQ(out.removed.other, 2);       // the thumbnail's directory
    for (const char* kept : {"Canon EOS 40D", "(c) Ann Artist", "2008:05:30 15:56:01"})
        EXPECT_TRUE(out.tiff.contains(kept)) << kept;
    EXPECT_EQ(ExifEditor(out.tiff).shortValue(0x0112), 6u);
}

TEST_P(ExifFilterTest, MinimalKeepsOnlyOrientationDateAndRights) {
    const QByteArray block = cameraBlock(GetParam());
    const ExifFilter::Result out = ExifFilter::filter(block, MetadataPolicy::Minimal);
    for (const char* gone : {"Canon EOS 40D", "BODY-SERIAL-77", "INTERNAL-SN-42", "THUMB!"})
        EXPECT_FALSE(out.tiff.contains(gone)) << gone;
    for (const char* kept : {"Ann Artist", "(c) Ann Artist", "2008:05:30 15:56:01"})
        EXPECT_TRUE(out.tiff.contains(kept)) << kept;
    EXPECT_EQ(ExifEditor(out.tiff).shortValue(0x0112), 6u);
    EXPECT_EQ(out.removed.location, 3);
    EXPECT_EQ(out.removed.identifying, 2);
    EXPECT_EQ(out.removed.other, 6); // make, model, exposure, maker note, the thumbnail's two
}

TEST_P(ExifFilterTest, NoneKeepsNothingButCountsIt) {
    const ExifFilter::Result out = ExifFilter::filter(cameraBlock(GetParam()), MetadataPolicy::None);
    EXPECT_TRUE(out.tiff.isEmpty());
    EXPECT_EQ(out.removed.location, 3);
    EXPECT_EQ(out.removed.identifying, 2);
    EXPECT_GE(out.removed.other, 9);
}

TEST_P(ExifFilterTest, ExiftoolReadsTheFilteredBlock) {
    QUILLET_EXIFTOOL_OR_SKIP();
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("f.jpg"));
    const QByteArray tiff = ExifFilter::filter(cameraBlock(GetParam()), MetadataPolicy::NoLocation).tiff;
    Bytes app = app1(Bytes(tiff.begin(), tiff.end()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(toQ(jpeg({app, sof(8, 8)})));
    file.close();
    const QJsonObject tool = exiftool(path, {QStringLiteral("-EXIF:all")});
    EXPECT_EQ(tool.value(QStringLiteral("Model")).toString(), QStringLiteral("Canon EOS 40D"));
    EXPECT_EQ(tool.value(QStringLiteral("Orientation")).toInt(), 6);
    EXPECT_EQ(tool.value(QStringLiteral("DateTimeOriginal")).toString(),
              QStringLiteral("2008:05:30 15:56:01"));
    for (const char* gone : {"GPSLatitude", "GPSLatitudeRef", "SerialNumber", "OwnerName", "ThumbnailImage"})
        EXPECT_FALSE(tool.contains(QLatin1String(gone))) << gone;
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, ExifFilterTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Motorola" : "Intel"; });

TEST(ExifFilter, HostileBlocksAreDroppedOrSurvived) {
    // No TIFF header: what it holds cannot be told, so none of it goes out.
    const ExifFilter::Result garbage = ExifFilter::filter("not a tiff block", MetadataPolicy::NoLocation);
    EXPECT_TRUE(garbage.tiff.isEmpty());
    EXPECT_EQ(garbage.removed.other, 1);

    // A directory that is its own Exif directory and its own successor,
    // and a GPS pointer far past the end.
    TiffBuilder t(false);
    const int ifd0 = t.addIfd();
    t.addSubIfd(ifd0, 0x8769, ifd0);
    t.addLong(ifd0, 0x8825, 0xFFFFFFF0u);
    t.addAscii(ifd0, 0x010F, "Looping");
    t.link(ifd0, ifd0);
    const QByteArray looping = toQ(t.build());
    for (const MetadataPolicy policy :
         {MetadataPolicy::NoLocation, MetadataPolicy::Minimal, MetadataPolicy::None})
        EXPECT_LE(ExifFilter::filter(looping, policy).tiff.size(), looping.size());
}

// Real maker notes of two layouts: Olympus's, whose serials sit in a
// sub-directory with offsets from the note, and Panasonic's, with offsets
// from the TIFF header.
TEST(ExifFilter, CameraMakerNotesLoseTheirSerials) {
    const std::pair<const char*, QList<QByteArray>> cameras[] = {
        {"corrupted.jpg", {"F70501740", "0199802105663001"}}, {"Panasonic_DMC-FZ30.jpg", {"S010604030293"}}};
    for (const auto& [name, serials] : cameras) {
        SCOPED_TRACE(name);
        const QString path = testsupport::samplePath(QLatin1String(name));
        if (path.isEmpty())
            GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
        const std::optional<JpegSegmentList> list = JpegSegmentList::readHeader(path);
        ASSERT_TRUE(list);
        const qsizetype at = list->find(0xE1, JpegSegmentList::ExifSignature);
        ASSERT_GE(at, 0);
        const QByteArray block = list->segments()[at].payload.mid(JpegSegmentList::ExifSignature.size());
        for (const QByteArray& serial : serials)
            ASSERT_TRUE(block.contains(serial));
        const ExifFilter::Result out = ExifFilter::filter(block, MetadataPolicy::NoLocation);
        for (const QByteArray& serial : serials)
            EXPECT_FALSE(out.tiff.contains(serial)) << serial.constData();
        EXPECT_EQ(out.removed.identifying, serials.size());
        EXPECT_EQ(out.tiff.size(), block.size());
    }
}

} // namespace
