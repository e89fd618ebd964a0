// A camera's TIFF through the whole batch (the command-line tool): its EXIF
// reaches the JPEG output, and its orientation still turns the picture.

#include "engine/pipeline/sourcemetadata.h"
#include "metadata/kvimageinfo.h"
#include "metadata/tifffiles.h"
#include "testsupport.h"

#include <QDir>
#include <QProcess>

#include <gtest/gtest.h>

using namespace quillet;
using namespace Qt::StringLiterals;

namespace {

std::string field(const vips::VImage& image, const char* name) {
    return vips_image_get_typeof(image.get_image(), name) ? image.get_string(name) : "(absent)";
}

class TiffInputTest : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        QDir().mkpath(in());
        ASSERT_TRUE(testsupport::writeFile(tiff(), tifffiles::cameraTiff(GetParam(), 16, 8, 6)));
    }
    // Converts "in" to JPEG at 300 dpi with the EXIF kept; the output read back.
    vips::VImage convert(const QString& rotation) {
        QProcess process;
        process.setProgram(testsupport::cliPath());
        process.setArguments({u"process"_s, u"--on-conflict"_s, u"replace"_s, u"--rotate"_s, rotation,
                              u"--keep-exif"_s, u"--dpi"_s, u"300"_s, u"--dest"_s, dir->path() + u"/out"_s,
                              in()});
        process.setStandardInputFile(QProcess::nullDevice());
        process.start();
        process.waitForFinished(120000);
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        const QByteArray written = QFile::encodeName(dir->path() + u"/out/in/camera.jpg"_s);
        const QByteArray bytes = testsupport::readFile(QFile::decodeName(written));
        return vips::VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "");
    }
    QString in() const { return dir->path() + u"/in"_s; }
    QString tiff() const { return in() + u"/camera.tif"_s; }

    std::unique_ptr<QTemporaryDir> dir = testsupport::scratchDir(u"tiffexif"_s);
};

TEST_P(TiffInputTest, JpegOutputGetsTheCameraExifGpsAndChosenResolution) {
    const vips::VImage turned = convert(u"auto"_s);
    EXPECT_EQ(std::pair(turned.width(), turned.height()), std::pair(8, 16));
    EXPECT_EQ(turned.get_int(VIPS_META_ORIENTATION), 1) << "turned pixels must not be turned again";
    EXPECT_EQ(field(turned, "exif-ifd0-Make").rfind("Quill Optics", 0), 0u);
    EXPECT_EQ(field(turned, "exif-ifd0-Model").rfind("QX-100 Mark II", 0), 0u);
    EXPECT_EQ(field(turned, "exif-ifd2-DateTimeOriginal").rfind(tifffiles::CaptureDate, 0), 0u);
    EXPECT_EQ(field(turned, "exif-ifd3-GPSLatitudeRef").rfind("N", 0), 0u);
    EXPECT_EQ(field(turned, "exif-ifd0-XResolution").rfind("300/1", 0), 0u);
    EXPECT_NEAR(turned.xres() * 25.4, 300, 0.01);

    // Left as it was, the picture keeps its orientation for viewers to apply.
    const vips::VImage kept = convert(u"none"_s);
    EXPECT_EQ(std::pair(kept.width(), kept.height()), std::pair(16, 8));
    EXPECT_EQ(kept.get_int(VIPS_META_ORIENTATION), 6);
    EXPECT_EQ(field(kept, "exif-ifd0-Model").rfind("QX-100 Mark II", 0), 0u);
}

// The record the watermark, the renamer and "quillet info" read.
TEST_P(TiffInputTest, ImageInfoHasTheCameraAndCaptureDate) {
    const KVImageInfo info = KVImageInfo::fromFile(tiff(), true, false).value();
    EXPECT_EQ(info.kind(), u"TIFF"_s);
    EXPECT_EQ(std::pair(info.width(), info.height()), std::pair(16, 8));
    EXPECT_EQ(info.cameraMake(), u"Quill Optics"_s);
    EXPECT_EQ(info.cameraModel(), u"QX-100 Mark II"_s);
    EXPECT_EQ(info.creationDate(), QDateTime(QDate(2019, 6, 1), QTime(12, 34, 56)));
    EXPECT_EQ(info.exposureTime(), u"1/250"_s);
    EXPECT_EQ(info.aperture(), u"f/2.8"_s);
    EXPECT_EQ(info.isoInt(), 400);
    EXPECT_EQ(SourceMetadata::read(tiff()).orientation, 6);
}

INSTANTIATE_TEST_SUITE_P(ByteOrders, TiffInputTest, testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Motorola" : "Intel"; });

} // namespace
