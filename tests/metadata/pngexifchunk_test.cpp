// A PNG's eXIf chunk after its pixel data, where ImageMagick and others
// write it and where libvips does not look.

#include "engine/pipeline/sourcemetadata.h"
#include "metadata/exifblocks.h"
#include "metadata/kvimageinfo.h"
#include "metadata/pngexifchunk.h"
#include "testsupport.h"

#include <QBuffer>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace quillet;
using namespace Qt::StringLiterals;

namespace {

quint32 crc32(const QByteArray& bytes) {
    quint32 crc = 0xFFFFFFFFu;
    for (char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

QByteArray chunk(const QByteArray& type, const QByteArray& data) {
    QByteArray out(4, '\0');
    qToBigEndian<quint32>(quint32(data.size()), out.data());
    QByteArray crc(4, '\0');
    qToBigEndian<quint32>(crc32(type + data), crc.data());
    return out + type + data + crc;
}

QByteArray cameraExif() {
    exifblocks::TiffBuilder t(false);
    const int ifd0 = t.addIfd(), exif = t.addIfd();
    t.addAscii(ifd0, 0x010F, "Quill Optics");
    t.addAscii(ifd0, 0x0110, "QX-100 Mark II");
    t.addSubIfd(ifd0, 0x8769, exif);
    t.addAscii(exif, 0x9003, "2019:06:01 12:34:56");
    return exifblocks::toQ(t.build());
}

// A small PNG whose eXIf chunk (holding `exif`) stands just before IEND.
QByteArray pngWithTrailingExif(const QByteArray& exif) {
    const vips::VImage picture = testsupport::solidImage(24, 16, 10, 20, 30);
    VipsBlob* blob = picture.pngsave_buffer();
    size_t size = 0;
    const void* data = vips_blob_get(blob, &size);
    QByteArray png(static_cast<const char*>(data), qsizetype(size));
    vips_area_unref(VIPS_AREA(blob));
    const qsizetype iend = png.size() - 12;
    EXPECT_EQ(png.mid(iend + 4, 4), "IEND");
    return png.insert(iend, chunk("eXIf", exif));
}

TEST(PngExifChunk, TrailingExifReachesTheRecordAndTheOutput) {
    const std::unique_ptr<QTemporaryDir> dir = testsupport::scratchDir(u"pngexif"_s);
    const QString path = dir->path() + u"/camera.png"_s;
    const QByteArray exif = cameraExif();
    ASSERT_TRUE(testsupport::writeFile(path, pngWithTrailingExif(exif)));

    EXPECT_EQ(PngExifChunk::fromFile(path), exif);
    EXPECT_EQ(SourceMetadata::read(path).exif, exif); // what a JPEG output is given
    const KVImageInfo info = KVImageInfo::fromFile(path, true, false).value();
    EXPECT_EQ(info.cameraModel(), u"QX-100 Mark II"_s);
    EXPECT_EQ(info.creationDate(), QDateTime(QDate(2019, 6, 1), QTime(12, 34, 56)));
}

TEST(PngExifChunk, DamagedOrForeignFilesGiveNothing) {
    const QByteArray png = pngWithTrailingExif(cameraExif());
    const auto read = [](QByteArray bytes) {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        return PngExifChunk::fromDevice(buffer);
    };
    EXPECT_FALSE(read(png).isEmpty());
    // Cut inside the pixel data, inside the chunk's header, inside its data.
    const qsizetype at = png.indexOf("eXIf");
    for (qsizetype cut : {qsizetype(40), at - 2, at + 10})
        EXPECT_TRUE(read(png.left(cut)).isEmpty()) << cut;
    EXPECT_TRUE(read("GIF89a" + png.mid(6)).isEmpty());

    // A chunk length past 2^31, or an eXIf too large to carry.
    QByteArray huge = png;
    qToBigEndian<quint32>(0x90000000u, huge.data() + at - 4);
    EXPECT_TRUE(read(huge).isEmpty());
    qToBigEndian<quint32>(0x00200000u, huge.data() + at - 4);
    EXPECT_TRUE(read(huge).isEmpty());
}

} // namespace
