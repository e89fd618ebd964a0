#include "metadata/exifeditor.h"

#include "exifblocks.h"
#include "metadata/jpegsegmentlist.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;
using namespace exifblocks;

namespace {

// IFD0 with a model, an orientation stored as LONG and an X resolution;
// an EXIF sub-directory with the capture date, whose offset must not move.
Bytes cameraBlock(bool motorola) {
    TiffBuilder t(motorola);
    t.addIfd();
    const int exif = t.addIfd();
    t.addAscii(0, 0x0110, "Camera 7");
    t.addLong(0, 0x0112, 6);
    t.addRational(0, 0x011A, 72, 1);
    t.addSubIfd(0, 0x8769, exif);
    t.addAscii(exif, 0x9003, "2020:01:02 03:04:05");
    return t.build();
}

class ExifEditorTest : public ::testing::TestWithParam<bool> {};

TEST_P(ExifEditorTest, TagsAreRewrittenInPlaceOrAddedWithoutMovingTheRest) {
    QUILLET_EXIFTOOL_OR_SKIP();
    const QByteArray block = toQ(cameraBlock(GetParam()));
    ExifEditor editor(block);
    ASSERT_TRUE(editor.isValid());
    EXPECT_EQ(editor.shortValue(ExifEditor::TagOrientation), 6u);

    // Present and of a fitting kind: same length, new values.
    ASSERT_TRUE(editor.setShort(ExifEditor::TagOrientation, 1));
    ASSERT_TRUE(editor.setRational(ExifEditor::TagXResolution, 300, 1));
    EXPECT_EQ(editor.tiff().size(), block.size());
    // Missing: IFD0 moves to the end with the tags added.
    ASSERT_TRUE(editor.setRational(ExifEditor::TagYResolution, 300, 1));
    ASSERT_TRUE(editor.setShort(ExifEditor::TagResolutionUnit, 2));
    EXPECT_GT(editor.tiff().size(), block.size());
    EXPECT_EQ(editor.tiff().left(4), block.left(4));

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("edited.jpg"));
    ASSERT_TRUE(testsupport::writeFile(
        path, toQ(jpeg({app1(Bytes(editor.tiff().begin(), editor.tiff().end())), sof(8, 8)}))));
    const QJsonObject tags = exiftool(path);
    EXPECT_EQ(tags[QStringLiteral("Model")].toString(), QStringLiteral("Camera 7"));
    EXPECT_EQ(tags[QStringLiteral("Orientation")].toInt(), 1);
    EXPECT_EQ(tags[QStringLiteral("XResolution")].toInt(), 300);
    EXPECT_EQ(tags[QStringLiteral("YResolution")].toInt(), 300);
    EXPECT_EQ(tags[QStringLiteral("ResolutionUnit")].toInt(), 2);
    EXPECT_EQ(tags[QStringLiteral("DateTimeOriginal")].toString(), QStringLiteral("2020:01:02 03:04:05"));
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, ExifEditorTest, ::testing::Values(false, true));

TEST(ExifEditor, BrokenBlocksAreLeftAlone) {
    for (const QByteArray& block : {QByteArray("II*\0", 4), QByteArray("XX*\0\x08\0\0\0\0\0", 10),
                                    QByteArray("II*\0\xF0\0\0\0\0\0", 10)}) {
        ExifEditor editor(block);
        EXPECT_FALSE(editor.isValid());
        EXPECT_FALSE(editor.setShort(ExifEditor::TagOrientation, 1));
        EXPECT_EQ(editor.tiff(), block);
    }
}

TEST(JpegSegmentList, LargeProfilesAreChunkedAndReassembled) {
    const QByteArray file = toQ(
        jpeg({segment(0xE0, {'J', 'F', 'I', 'F', 0, 1, 1, 0, 0, 1, 0, 1, 0, 0}), modelApp1("x"), sof(8, 8)}));
    auto list = JpegSegmentList::parse(file).value();
    QByteArray profile(150000, 'p');
    for (qsizetype i = 0; i < profile.size(); ++i)
        profile[i] = char(i * 7);
    list.setIccProfile(profile);
    const auto back = JpegSegmentList::parse(list.toBytes()).value();
    EXPECT_EQ(back.iccProfile(), profile);
    // Three chunks, after the JFIF and EXIF segments; the picture untouched.
    ASSERT_EQ(back.segments().size(), 6);
    EXPECT_EQ(back.segments()[2].marker, 0xE2);
    EXPECT_TRUE(list.toBytes().endsWith(file.mid(file.indexOf("\xFF\xDA"))));
    list.setIccProfile({});
    EXPECT_EQ(list.toBytes(), file);

    // Headers cut short or without SOI are not JPEGs to edit.
    EXPECT_FALSE(JpegSegmentList::parse(file.left(30)));
    EXPECT_FALSE(JpegSegmentList::parse(file.mid(2)));
}

} // namespace
