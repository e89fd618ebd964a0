#include "metadata/tiffexifblock.h"

#include "metadata/pictureexif.h"
#include "testsupport.h"
#include "tifffiles.h"

#include <gtest/gtest.h>

using namespace quillet;
using namespace tifffiles;

namespace {

QByteArray blockOf(const QByteArray& tiff) {
    MemoryTiffSource source(tiff);
    return TiffExifBlock::fromSource(source);
}

// A real JPEG carrying the block, read back through libvips (libexif): a
// reader that shares nothing with the code under test.
vips::VImage jpegWith(const QByteArray& block) {
    void* data = nullptr;
    size_t size = 0;
    testsupport::solidImage(8, 8, 1, 2, 3).write_to_buffer(".jpg[strip]", &data, &size);
    const QByteArray plain(static_cast<const char*>(data), qsizetype(size));
    g_free(data);
    const QByteArray payload = QByteArray("Exif\0\0", 6) + block;
    const QByteArray app1 = QByteArray("\xFF\xE1", 2) + char((payload.size() + 2) >> 8) +
                            char((payload.size() + 2) & 0xFF) + payload;
    const QByteArray jpeg = plain.left(2) + app1 + plain.mid(2);
    return vips::VImage::new_from_buffer(jpeg.constData(), size_t(jpeg.size()), "");
}

std::string field(const vips::VImage& image, const char* name) {
    if (!vips_image_get_typeof(image.get_image(), name))
        return "(absent)";
    return image.get_string(name);
}

class TiffExifBlockTest : public testing::TestWithParam<bool> {};

TEST_P(TiffExifBlockTest, CarriesCameraExifAndGpsButNotThePixelLayout) {
    const QByteArray tiff = cameraTiff(GetParam());
    const QByteArray block = blockOf(tiff);
    ASSERT_FALSE(block.isEmpty());
    EXPECT_EQ(block.left(2), GetParam() ? "MM" : "II");

    const vips::VImage image = jpegWith(block);
    EXPECT_EQ(field(image, "exif-ifd0-Make").rfind("Quill Optics", 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd0-Model").rfind("QX-100 Mark II", 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd0-Artist").rfind("A. Photographer", 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd0-XResolution").rfind("72/1", 0), 0u);
    EXPECT_EQ(image.get_int(VIPS_META_ORIENTATION), 6);
    EXPECT_EQ(field(image, "exif-ifd2-DateTimeOriginal").rfind(CaptureDate, 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd3-GPSLatitudeRef").rfind("N", 0), 0u);
    EXPECT_NE(field(image, "exif-ifd3-GPSLatitude").find("(48, 51, 30,"), std::string::npos)
        << field(image, "exif-ifd3-GPSLatitude");
    EXPECT_EQ(field(image, "exif-ifd4-InteroperabilityIndex").rfind("R98", 0), 0u);
    for (const char* layout :
         {"exif-ifd0-ImageWidth", "exif-ifd0-ImageLength", "exif-ifd0-BitsPerSample", "exif-ifd0-Compression",
          "exif-ifd0-PhotometricInterpretation", "exif-ifd0-StripOffsets", "exif-ifd0-StripByteCounts",
          "exif-ifd0-SamplesPerPixel", "exif-ifd0-RowsPerStrip"})
        EXPECT_EQ(field(image, layout), "(absent)") << layout;

    // Exposure values reach the EXIF parser as from a JPEG's block.
    JpegContext ctx;
    PictureExif::parse(ctx, block);
    EXPECT_FLOAT_EQ(ctx.Info.ExposureTime, 0.004f);
    EXPECT_FLOAT_EQ(ctx.Info.ApertureFNumber, 2.8f);
    EXPECT_EQ(ctx.Info.ISOequivalent, 400);
    EXPECT_STREQ(ctx.Info.CameraModel, "QX-100 Mark II");

    // Maker notes may count offsets from the TIFF header: this one keeps its place.
    const QByteArray note(40, 'Z');
    EXPECT_EQ(block.indexOf(note), tiff.indexOf(note));
}

// Too much for one APP1 segment: the maker note goes first, then the
// biggest entries, and everything else stays.
TEST_P(TiffExifBlockTest, AnOversizedBlockDropsTheMakerNoteAndTheBiggestEntries) {
    const QByteArray tiff = cameraTiff(GetParam(), 16, 8, 1, [](TiffBuilder& t) {
        t.add(0, {0x9C9C, 1, 30000, Bytes(30000, 'c')}); // XPComment
        t.add(0, {0x9C9E, 1, 20000, Bytes(20000, 'k')}); // XPKeywords
        Bytes id(24999, 'u');
        id.push_back(0);
        t.add(1, {0xA420, 2, 25000, id}); // ImageUniqueID
    });
    const QByteArray block = blockOf(tiff);
    ASSERT_FALSE(block.isEmpty());
    EXPECT_LE(block.size(), TiffExifBlock::MaxSize);
    EXPECT_FALSE(block.contains(QByteArray(40, 'Z'))) << "maker note kept";
    EXPECT_FALSE(block.contains(QByteArray(30000, 'c'))) << "biggest entry kept";
    EXPECT_TRUE(block.contains(QByteArray(20000, 'k')));
    EXPECT_TRUE(block.contains(QByteArray(24999, 'u')));
    const vips::VImage image = jpegWith(block);
    EXPECT_EQ(field(image, "exif-ifd0-Model").rfind("QX-100 Mark II", 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd2-DateTimeOriginal").rfind(CaptureDate, 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd3-GPSLatitudeRef").rfind("N", 0), 0u);
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, TiffExifBlockTest, testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Motorola" : "Intel"; });

// Counts what is read, to show that a hostile file cannot make the reader
// take more than a bounded amount.
class CountingSource final : public TiffSource {
  public:
    explicit CountingSource(QByteArray bytes) : m_inner(std::move(bytes)) {}
    bool readAt(quint64 offset, char* into, qsizetype n) override {
        bytesRead += n;
        return m_inner.readAt(offset, into, n);
    }
    qint64 bytesRead = 0;

  private:
    MemoryTiffSource m_inner;
};

TEST(TiffExifBlockHostile, DamagedOrLoopingDirectoriesGiveNothingOrLess) {
    const QByteArray tiff = cameraTiff(false);
    // Every truncation: nothing breaks, and whatever comes out is a block.
    for (qsizetype n = 0; n <= tiff.size(); n++) {
        const QByteArray block = blockOf(tiff.left(n));
        EXPECT_LE(block.size(), TiffExifBlock::MaxSize);
        EXPECT_TRUE(block.isEmpty() || !blockOf(block).isEmpty()) << n;
    }
    EXPECT_TRUE(blockOf(tiff.left(40)).isEmpty()) << "first directory cut short";

    // GPS linking back to the first directory, Interoperability to the Exif
    // directory that holds the link, the Exif link given twice: each
    // directory is read once, and only where it first appears.
    TiffBuilder loops(true);
    const int ifd0 = loops.addIfd(), exif = loops.addIfd();
    loops.addAscii(ifd0, 0x0110, "Looper");
    loops.addSubIfd(ifd0, 0x8769, exif);
    loops.addSubIfd(ifd0, 0x8769, exif);
    loops.addSubIfd(ifd0, 0x8825, ifd0);
    loops.addAscii(exif, 0x9003, CaptureDate);
    loops.addSubIfd(exif, 0xA005, exif);
    const QByteArray block = blockOf(exifblocks::toQ(loops.build()));
    ASSERT_FALSE(block.isEmpty());
    const vips::VImage image = jpegWith(block);
    EXPECT_EQ(field(image, "exif-ifd0-Model").rfind("Looper", 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd2-DateTimeOriginal").rfind(CaptureDate, 0), 0u);
    gchar** fields = vips_image_get_fields(image.get_image());
    for (gchar** f = fields; *f; f++) {
        const std::string name(*f);
        EXPECT_FALSE(name.rfind("exif-ifd3", 0) == 0 || name.rfind("exif-ifd4", 0) == 0) << name;
    }
    g_strfreev(fields);

    // An entry count beyond any real directory; a BigTIFF; not a TIFF at all.
    EXPECT_TRUE(blockOf(QByteArray("II*\0\x08\0\0\0\xFF\xFF", 10) + QByteArray(12 * 1100, '\0')).isEmpty());
    EXPECT_TRUE(
        blockOf(QByteArray("II+\0\x08\0\0\0\0\0\x10\0\0\0\0\0", 16) + QByteArray(64, '\0')).isEmpty());
    EXPECT_TRUE(blockOf(QByteArray(64, 'x')).isEmpty());
}

TEST(TiffExifBlockHostile, ValuesTooLargeOrOutsideTheFileAreLeftOutAndReadsStayBounded) {
    TiffBuilder t(false);
    const int ifd0 = t.addIfd();
    t.addAscii(ifd0, 0x010F, "Maker");
    t.add(ifd0, {0x010E, 2, 0xFFFFFFFF, t.u32(0)});   // four gigabytes of description
    t.add(ifd0, {0x0110, 2, 100, t.u32(0x7FFFFFF0)}); // a model past the end of the file
    t.add(ifd0, {0x013B, 99, 1, t.u32(0)});           // an unknown type
    const vips::VImage image = jpegWith(blockOf(exifblocks::toQ(t.build())));
    EXPECT_EQ(field(image, "exif-ifd0-Make").rfind("Maker", 0), 0u);
    EXPECT_EQ(field(image, "exif-ifd0-ImageDescription"), "(absent)");
    EXPECT_EQ(field(image, "exif-ifd0-Model"), "(absent)");
    EXPECT_EQ(field(image, "exif-ifd0-Artist"), "(absent)");

    // A thousand entries, each pointing at 60000 bytes of the file.
    QByteArray tiff = QByteArray("II*\0\x08\0\0\0", 8) + char(1000 & 0xFF) + char(1000 >> 8);
    for (int k = 0; k < 1000; k++)
        tiff += QByteArray("\x0E\x01\x07\0\x60\xEA\0\0\0\0\0\0", 12);
    tiff += QByteArray(4 + 60000, 'd');
    CountingSource source(tiff);
    const QByteArray block = TiffExifBlock::fromSource(source);
    EXPECT_LE(block.size(), TiffExifBlock::MaxSize);
    EXPECT_LT(source.bytesRead, 5 * TiffExifBlock::MaxSize);
}

// What libvips writes for a plain picture (sizes, layout, resolution, a
// plain orientation) is nothing worth carrying into a JPEG.
TEST(TiffExifBlock, APlainTiffGivesNothing) {
    void* data = nullptr;
    size_t size = 0;
    testsupport::solidImage(8, 8, 1, 2, 3).write_to_buffer(".tif", &data, &size);
    const QByteArray tiff(static_cast<const char*>(data), qsizetype(size));
    g_free(data);
    EXPECT_TRUE(blockOf(tiff).isEmpty());
}

} // namespace
