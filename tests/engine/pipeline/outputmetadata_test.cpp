// Real camera and phone files through the whole batch (the command-line tool):
// colour profiles, EXIF from any format, upright pictures, a quiet run.

#include "engine/pipeline/outputmetadata.h"
#include "engine/pipeline/sourcemetadata.h"
#include "metadata/jpegsegmentlist.h"
#include "metadata/kvimageinfo.h"
#include "metadata/orientationtag.h"
#include "orientationset.h"
#include "testsupport.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>

#include <gtest/gtest.h>

using namespace quillet;
using namespace Qt::StringLiterals;

namespace {

class PhotoBatchTest : public ::testing::Test {
  protected:
    // Copies samples into "in" and converts "in" with the options into "out/in".
    int convert(const QStringList& samples, const QStringList& options) {
        QDir().mkpath(in());
        for (const QString& name : samples)
            QFile::copy(QDir(testsupport::samplesDir()).filePath(name), QDir(in()).filePath(name));
        return run(options + QStringList{u"--dest"_s, dir->path() + u"/out"_s, in()});
    }
    int run(const QStringList& args) {
        QProcess process;
        process.setProgram(testsupport::cliPath());
        process.setArguments(QStringList{u"process"_s, u"--on-conflict"_s, u"replace"_s} + args);
        process.setStandardInputFile(QProcess::nullDevice());
        process.start();
        process.waitForFinished(300000);
        out = QString::fromLocal8Bit(process.readAllStandardOutput());
        err = QString::fromLocal8Bit(process.readAllStandardError());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    QString in() const { return dir->path() + u"/in"_s; }
    QString output(const QString& name) const { return dir->path() + u"/out/in/"_s + name; }

    std::unique_ptr<QTemporaryDir> dir = testsupport::scratchDir(u"photos"_s);
    QString out, err;
};

TEST_F(PhotoBatchTest, ProfilesSurviveEveryFormatOrBecomeSrgbOnRequest) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "Canon_40D.jpg");
    const QStringList samples{u"Canon_40D.jpg"_s, u"orientation-landscape_2.jpg"_s}; // sRGB, Generic RGB
    for (const QString& format : {u"jpeg"_s, u"png"_s, u"tiff"_s}) {
        ASSERT_EQ(convert(samples, {u"--format"_s, format}), 0) << err.toStdString();
        for (const QString& name : samples) {
            const QString base = QFileInfo(name).completeBaseName();
            const QString written = output(base + (format == u"jpeg"_s ? u".jpg"_s : u"."_s + format));
            EXPECT_EQ(SourceMetadata::read(written).iccProfile,
                      SourceMetadata::read(QDir(in()).filePath(name)).iccProfile)
                << written.toStdString();
        }
    }
    ASSERT_EQ(convert(samples, {u"--srgb"_s}), 0);
    const QByteArray converted = SourceMetadata::read(output(u"orientation-landscape_2.jpg"_s)).iccProfile;
    EXPECT_TRUE(SourceMetadata::isSrgbProfile(converted));
    EXPECT_FALSE(SourceMetadata::isSrgbProfile(
        SourceMetadata::read(sample.replace(u"Canon_40D"_s, u"orientation-landscape_2"_s)).iccProfile));
}

TEST_F(PhotoBatchTest, HeicKeepsItsProfileAndCameraDataAndTheChosenResolution) {
    QString heic;
    QUILLET_SAMPLE_OR_SKIP(heic, "IMG_5195.HEIC");
    ASSERT_EQ(convert({u"IMG_5195.HEIC"_s}, {u"--keep-exif"_s, u"--dpi"_s, u"300"_s}), 0);
    const QString written = output(u"IMG_5195.jpg"_s);
    EXPECT_EQ(SourceMetadata::read(written).iccProfile, SourceMetadata::read(heic).iccProfile);
    const KVImageInfo info = KVImageInfo::fromFile(written, false, false).value();
    EXPECT_EQ(info.cameraMake(), u"Apple"_s);
    EXPECT_EQ(info.cameraModel(), u"iPhone 11 Pro Max"_s);
    EXPECT_EQ(info.creationDate(), QDateTime(QDate(2021, 4, 11), QTime(15, 47, 53)));
    const vips::VImage image = vips::VImage::new_from_file(QFile::encodeName(written).constData());
    EXPECT_EQ(std::string(image.get_string("exif-ifd0-XResolution")).rfind("300/1", 0), 0u);
    EXPECT_NEAR(image.xres() * 25.4, 300, 0.01);
}

TEST_F(PhotoBatchTest, EveryOrientationComesOutUpright) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "orientation-landscape_1.jpg");
    QDir().mkpath(in());
    const vips::VImage upright = orientationset::write(in(), sample);
    // The camera's own files, of which orientations 1, 2, 3, 6 and 8 exist.
    const QStringList real{u"orientation-landscape_2.jpg"_s, u"orientation-landscape_3.jpg"_s,
                           u"orientation-landscape_6.jpg"_s, u"orientation-landscape_8.jpg"_s};
    for (const QString& name : real)
        QFile::copy(QDir(testsupport::samplesDir()).filePath(name), QDir(in()).filePath(name));
    ASSERT_EQ(run({u"--rotate"_s, u"auto"_s, u"--keep-exif"_s, u"--quality"_s, u"95"_s, u"--dest"_s,
                   dir->path() + u"/out"_s, in()}),
              0);
    // Within re-encoding noise of the upright picture; a mirror image or a
    // wrong turn differs by 40 levels or more.
    const double tolerance = 4;
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QString written = output(u"o%1.jpg"_s.arg(orientation));
        const vips::VImage image = jpegfixtures::decode(written);
        ASSERT_EQ(std::pair(image.width(), image.height()), std::pair(592, 448)) << orientation;
        EXPECT_LT(orientationset::meanDifference(image, upright), tolerance) << orientation;
        EXPECT_EQ(readExifOrientation(QFile::encodeName(written).constData()), 1) << orientation;
    }
    // The camera's files were encoded apart from its upright one (another
    // subsampling, a profile): they differ from it by about 15 levels.
    const vips::VImage camera = jpegfixtures::decode(sample);
    for (const QString& name : real) {
        const vips::VImage image = jpegfixtures::decode(output(name));
        ASSERT_EQ(std::pair(image.width(), image.height()), std::pair(600, 450)) << name.toStdString();
        EXPECT_LT(orientationset::meanDifference(image, camera), 25) << name.toStdString();
    }
}

TEST_F(PhotoBatchTest, ARunOverTheSamplesPrintsOnlyItsProgress) {
    if (testsupport::samplesDir().isEmpty())
        GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
    ASSERT_EQ(run({u"--rotate"_s, u"auto"_s, u"--keep-exif"_s, u"--dest"_s, dir->path() + u"/out"_s,
                   testsupport::samplesDir()}),
              0);
    const QRegularExpression progress(u"^\\[\\d+/\\d+\\] (Processing|Copying|Skipping) '[^']+'$"_s);
    for (const QString& line : err.split(u'\n', Qt::SkipEmptyParts))
        EXPECT_TRUE(progress.match(line).hasMatch()) << line.toStdString();
    EXPECT_FALSE(out.contains(u"Damaged metadata"_s)) << out.toStdString();
}

// The XMP segments of a JPEG file (main packet and extensions), in file order.
QList<QByteArray> xmpPayloads(const QString& path) {
    const JpegSegmentList list = JpegSegmentList::parse(testsupport::readFile(path)).value();
    QList<QByteArray> out;
    for (const JpegSegmentList::Segment& segment : list.segments())
        if (segment.marker == 0xE1 && segment.payload.startsWith("http://ns.adobe.com/x"))
            out.append(segment.payload);
    return out;
}

TEST_F(PhotoBatchTest, ExtendedXmpGoesAcrossWholeAndInOrder) {
    using namespace jpegfixtures;
    // Two pieces near the segment limit, as depth maps and Lightroom edits
    // are split; a stale piece of an earlier edit between them.
    const QByteArray guid("0123456789ABCDEF0123456789ABCDEF"), stale("FEDCBA9876543210FEDCBA9876543210");
    const QByteArray main = xmpSegment(xmpPacket("xmpNote:HasExtendedXMP=\"" + guid + "\">"));
    const QByteArray first = xmpExtension(guid, 120000, 0, QByteArray(60000, 'a'));
    const QByteArray second = xmpExtension(guid, 120000, 60000, QByteArray(60000, 'b'));
    const QByteArray other = xmpExtension(stale, 5, 0, "stale");
    QDir().mkpath(in());
    ASSERT_TRUE(
        testsupport::writeFile(in() + u"/deep.jpg"_s, markedJpeg(1, true, main + first + other + second)));
    ASSERT_EQ(run({u"--keep-exif"_s, u"--dest"_s, dir->path() + u"/out"_s, in()}), 0) << err.toStdString();
    EXPECT_EQ(xmpPayloads(output(u"deep.jpg"_s)),
              (QList<QByteArray>{main.mid(4), first.mid(4), second.mid(4)}));
}

TEST_F(PhotoBatchTest, AnAutomaticTurnSetsTheXmpOrientationUprightWithTheExifOne) {
    using namespace jpegfixtures;
    const auto attribute = [](char value) {
        return xmpPacket("tiff:Orientation=\"" + QByteArray(1, value) + "\">");
    };
    const auto element = [](char value) {
        return xmpPacket("><tiff:Orientation>" + QByteArray(1, value) + "</tiff:Orientation>");
    };
    QDir().mkpath(in());
    ASSERT_TRUE(
        testsupport::writeFile(in() + u"/attribute.jpg"_s, markedJpeg(6, false, xmpSegment(attribute('6')))));
    ASSERT_TRUE(
        testsupport::writeFile(in() + u"/element.jpg"_s, markedJpeg(6, false, xmpSegment(element('6')))));
    for (const bool turn : {true, false}) {
        ASSERT_EQ(run({u"--rotate"_s, turn ? u"auto"_s : u"none"_s, u"--keep-exif"_s, u"--dest"_s,
                       dir->path() + u"/out"_s, in()}),
                  0)
            << err.toStdString();
        const char expected = turn ? '1' : '6';
        for (const auto& [name, packet] : {std::pair(u"attribute.jpg"_s, attribute(expected)),
                                           std::pair(u"element.jpg"_s, element(expected))}) {
            const QString written = output(name);
            EXPECT_EQ(xmpPayloads(written), QList<QByteArray>{JpegSegmentList::XmpSignature + packet})
                << name.toStdString() << (turn ? " turned" : " as it was");
            EXPECT_EQ(readExifOrientation(QFile::encodeName(written).constData()), expected - '0');
            EXPECT_EQ(jpegfixtures::decode(written).width(), turn ? 48 : 64);
        }
    }
}

TEST_F(PhotoBatchTest, RealXmpGoesAcrossByteForByte) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "xmp-BlueSquare.jpg"); // upright: nothing to reset
    ASSERT_EQ(convert({u"xmp-BlueSquare.jpg"_s},
                      {u"--rotate"_s, u"auto"_s, u"--keep-exif"_s, u"--width"_s, u"100"_s}),
              0)
        << err.toStdString();
    const QList<QByteArray> xmp = xmpPayloads(sample);
    ASSERT_EQ(xmp.size(), 1);
    EXPECT_EQ(xmpPayloads(output(u"xmp-BlueSquare.jpg"_s)), xmp);
}

// Resolution and orientation in a JPEG's own metadata, on bytes made here.
TEST(OutputMetadata, ResolutionReachesJfifAndExifAndOrientationIsReset) {
    void* data = nullptr;
    size_t size = 0;
    testsupport::solidImage(32, 16, 10, 20, 30).write_to_buffer(".jpg[strip]", &data, &size);
    const QByteArray plain(static_cast<const char*>(data), qsizetype(size));
    g_free(data);
    const QByteArray jfif("\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00", 18);
    // The EXIF block holds an orientation but no resolution tags at all.
    const QByteArray jpeg = plain.left(2) + jfif + jpegfixtures::exifSegment(6) + plain.mid(2);
    const QByteArray out = OutputMetadata::withResolution(jpeg, 240, true);
    const vips::VImage image = vips::VImage::new_from_buffer(out.constData(), size_t(out.size()), "");
    EXPECT_EQ(std::string(image.get_string("exif-ifd0-XResolution")).rfind("240/1", 0), 0u);
    EXPECT_EQ(std::string(image.get_string("exif-ifd0-YResolution")).rfind("240/1", 0), 0u);
    EXPECT_EQ(image.get_int(VIPS_META_ORIENTATION), 1);
    EXPECT_NEAR(image.xres() * 25.4, 240, 0.01);
    EXPECT_EQ(std::string(image.get_string("exif-ifd0-ResolutionUnit")).rfind("2", 0), 0u);
    EXPECT_EQ(OutputMetadata::withResolution(out, 240, true), out) << "nothing left to change";
}

} // namespace
