#include "engine/outputencoder.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QStringList>

using vips::VImage;

namespace {

class RecordingLog : public ActivityLog {
public:
    void writeActivity(const QString& line) override { lines << line; }
    void writeWarningActivity(const QString& line) override { lines << QStringLiteral("WARNING") + line; }
    QStringList lines;
};

VImage decode(const QByteArray& bytes) {
    return VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "");
}

// An encoder that answers with a given number of bytes per quality and notes
// the qualities asked for.
struct FakeEncoder {
    std::function<qint64(int)> sizeAt;
    QList<int> asked;
    QByteArray operator()(int q) {
        asked << q;
        return QByteArray(int(sizeAt(q)), 'x');
    }
};

struct StepCase {
    qint64 size, limit;
    int factor, next;
};

class NextFactor : public ::testing::TestWithParam<StepCase> {};

TEST_P(NextFactor, StepsDownByHowFarOff) {
    const StepCase& c = GetParam();
    EXPECT_EQ(OutputEncoder::nextFactorWithSize(c.size, c.limit, c.factor), c.next);
}

const qint64 KB = 1024;

INSTANTIATE_TEST_SUITE_P(
    Ratios, NextFactor,
    ::testing::Values(StepCase{900 * KB, 200 * KB, 90, 40},  // ratio 4.5: a jump to 40 from 80 and above
                      StepCase{700 * KB, 200 * KB, 70, 30},  // 3.5 from 60..79: minus 40
                      StepCase{700 * KB, 200 * KB, 50, 20},  // 3.5 below 60: minus 30
                      StepCase{600 * KB, 200 * KB, 90, 70},  // exactly 3: not above it, minus 20
                      StepCase{350 * KB, 200 * KB, 90, 80},  // exactly 1.75: minus 10
                      StepCase{210 * KB, 200 * KB, 90, 85},  // exactly 1.05: minus 5
                      StepCase{211 * KB, 200 * KB, 90, 80},  // just above 1.05
                      StepCase{100 * KB, 200 * KB, 90, 85},  // already fits: still minus 5
                      StepCase{900 * KB, 0, 90, 90}));       // no limit: unchanged

TEST(OutputEncoder, SizeSearchKeepsFirstFitAndLogsNextQuality) {
    // 900 KB at 90 against 200 KB: 40 next, which gives 190 KB and stops; the
    // line shows 35 and no warning follows.
    FakeEncoder encoder{[](int q) { return q >= 90 ? 900 * KB : 190 * KB; }, {}};
    RecordingLog log;
    const QByteArray bytes = OutputEncoder::searchJpegQuality(std::ref(encoder), 90, 200 * KB, log);
    EXPECT_EQ(bytes.size(), 190 * KB);
    EXPECT_EQ(encoder.asked, (QList<int>{90, 40}));
    EXPECT_EQ(log.lines, QStringList{"\tJPEG quality: 35\n"});
}

TEST(OutputEncoder, SizeSearchGivesUpAtZeroQuality) {
    FakeEncoder encoder{[](int) { return 300 * KB; }, {}};
    RecordingLog log;
    const QByteArray bytes = OutputEncoder::searchJpegQuality(std::ref(encoder), 10, 200 * KB, log);
    EXPECT_EQ(bytes.size(), 300 * KB);
    EXPECT_EQ(encoder.asked, QList<int>{10});
    EXPECT_EQ(log.lines, (QStringList{"\tJPEG quality: 0\n", "WARNING\tUnable to make file size under 200 KB\n"}));

    // The warning comes whenever the search ran out, even when the last try fits.
    FakeEncoder fits{[](int q) { return q > 5 ? 250 * KB : 100 * KB; }, {}};
    RecordingLog log2;
    OutputEncoder::searchJpegQuality(std::ref(fits), 15, 200 * KB, log2);
    EXPECT_EQ(fits.asked, (QList<int>{15, 5}));
    EXPECT_EQ(log2.lines.size(), 2);
    EXPECT_EQ(log2.lines.at(0), "\tJPEG quality: 0\n");
}

TEST(OutputEncoder, SizeSearchWithoutLimitOrWithFailingEncoder) {
    FakeEncoder encoder{[](int) { return 5 * 1024 * KB; }, {}};
    RecordingLog log;
    OutputEncoder::searchJpegQuality(std::ref(encoder), 80, 0, log);
    EXPECT_EQ(encoder.asked, QList<int>{80});
    EXPECT_EQ(log.lines, QStringList{"\tJPEG quality: 80\n"});

    // An encoder that never gives bytes ends the search with nothing.
    FakeEncoder broken{[](int) { return 0; }, {}};
    RecordingLog quiet;
    EXPECT_TRUE(OutputEncoder::searchJpegQuality(std::ref(broken), 80, 0, quiet).isEmpty());
    EXPECT_TRUE(OutputEncoder::searchJpegQuality(std::ref(broken), 80, 200 * KB, quiet).isEmpty());
}

TEST(OutputEncoder, RealSearchMeetsLimitOnCameraPicture) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const VImage jpeg = VImage::new_from_file(path.toLocal8Bit().constData());
    const Picture picture{jpeg.bandjoin_const({255}), double(jpeg.width()), double(jpeg.height()), true};
    RecordingLog log;
    const QByteArray full = OutputEncoder::dataForImage(picture, FileFormat::Jpeg, 72, 100, 0, log);
    const qint64 limit = full.size() / 4;
    const QByteArray small = OutputEncoder::dataForImage(picture, FileFormat::Jpeg, 72, 100, limit, log);
    EXPECT_LE(small.size(), limit);
    const VImage decoded = decode(small);
    EXPECT_EQ(decoded.width(), jpeg.width());
    EXPECT_NEAR(decoded.avg(), jpeg.avg(), 2);
}

struct FormatCase {
    int format;
    const char* loader; // prefix of the vips loader name
};

class EncodedFormat : public ::testing::TestWithParam<FormatCase> {};

TEST_P(EncodedFormat, RecordsResolutionAndKeepsPixels) {
    const FormatCase& c = GetParam();
    Picture picture = testsupport::solidPicture(120, 80, 200, 100, 50);
    picture.opaque = c.format == FileFormat::Jpeg;
    NullActivityLog log;
    const QByteArray bytes = OutputEncoder::dataForImage(picture, c.format, 300, 90, 0, log);
    ASSERT_FALSE(bytes.isEmpty());
    const VImage decoded = decode(bytes);
    EXPECT_EQ(decoded.width(), 120);
    EXPECT_EQ(decoded.height(), 80);
    EXPECT_STREQ(decoded.get_string("vips-loader"), c.loader);
    EXPECT_NEAR(decoded.xres() * 25.4, 300, 0.5);
    EXPECT_NEAR(decoded.yres() * 25.4, 300, 0.5);
    // Opaque pictures are written without an alpha band.
    EXPECT_EQ(decoded.bands(), 3);
    const std::vector<double> p = testsupport::pixelAt(decoded, 60, 40);
    EXPECT_NEAR(p[0], 200, 3);
    EXPECT_NEAR(p[1], 100, 3);
    EXPECT_NEAR(p[2], 50, 3);
}

INSTANTIATE_TEST_SUITE_P(Formats, EncodedFormat,
                         ::testing::Values(FormatCase{FileFormat::Jpeg, "jpegload_buffer"},
                                           FormatCase{FileFormat::Png, "pngload_buffer"},
                                           FormatCase{FileFormat::Tiff, "tiffload_buffer"}));

TEST(OutputEncoder, TransparencySurvivesPngAndTiffOnly) {
    const Picture clear = testsupport::solidPicture(20, 20, 255, 0, 0, 100);
    NullActivityLog log;
    for (int format : {FileFormat::Png, FileFormat::Tiff}) {
        const QByteArray bytes = OutputEncoder::dataForImage(clear, format, 72, 80, 0, log);
        const VImage decoded = decode(bytes);
        ASSERT_EQ(decoded.bands(), 4) << format;
        EXPECT_EQ(testsupport::pixelAt(decoded, 5, 5), (std::vector<double>{255, 0, 0, 100})) << format;
    }
    // TIFF is written uncompressed: at least one byte per sample.
    EXPECT_GE(OutputEncoder::tiffDataForImage(clear, 72).size(), 20 * 20 * 4);
    EXPECT_EQ(decode(OutputEncoder::jpegDataForImage(clear, 72, 80)).bands(), 3);
}

TEST(OutputEncoder, BrokenInputGivesNoBytes) {
    NullActivityLog log;
    EXPECT_TRUE(OutputEncoder::dataForImage(Picture{}, FileFormat::Jpeg, 72, 80, 0, log).isEmpty());
    EXPECT_TRUE(OutputEncoder::dataForImage(Picture{}, FileFormat::Png, 72, 80, 0, log).isEmpty());
    EXPECT_TRUE(OutputEncoder::dataForImage(testsupport::solidPicture(4, 4, 0, 0, 0), 104, 72, 80, 0, log).isEmpty());

    // A damaged JPEG opens, and only fails when its pixels are needed: in the encoder.
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "corrupted.jpg");
    const VImage lazy = VImage::new_from_file(path.toLocal8Bit().constData(),
                                              VImage::option()->set("fail_on", VIPS_FAIL_ON_ERROR));
    const Picture picture{lazy.bandjoin_const({255}), double(lazy.width()), double(lazy.height())};
    EXPECT_TRUE(OutputEncoder::dataForImage(picture, FileFormat::Jpeg, 72, 80, 0, log).isEmpty());
    EXPECT_TRUE(OutputEncoder::dataForImage(picture, FileFormat::Png, 72, 80, 0, log).isEmpty());
}

} // namespace
