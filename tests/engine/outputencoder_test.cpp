#include "engine/outputencoder.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QStringList>

using vips::VImage;

namespace {

constexpr qint64 KB = 1024;

class RecordingLog : public ActivityLog {
  public:
    void writeActivity(const QString& line) override { lines << line; }
    void writeWarningActivity(const QString& line) override { lines << "WARNING" + line; }
    QStringList lines;
};

// Decoded at once: the loader reads the buffer lazily and the bytes may be a temporary.
VImage decode(const QByteArray& bytes) {
    return VImage::new_from_buffer(bytes.constData(), size_t(bytes.size()), "").copy_memory();
}

struct StepCase {
    qint64 size, limit;
    int factor, next;
};

class NextFactor : public ::testing::TestWithParam<StepCase> {};

TEST_P(NextFactor, StepsDownByHowFarOff) {
    const StepCase& c = GetParam();
    EXPECT_EQ(OutputEncoder::nextFactorWithSize(c.size, c.limit, c.factor), c.next);
}

// Every bound is strict: exactly 3, 1.75 or 1.05 falls to the next rule.
INSTANTIATE_TEST_SUITE_P(
    Ratios, NextFactor,
    ::testing::Values(StepCase{900 * KB, 200 * KB, 90, 40}, StepCase{700 * KB, 200 * KB, 70, 30},
                      StepCase{700 * KB, 200 * KB, 50, 20}, StepCase{600 * KB, 200 * KB, 90, 70},
                      StepCase{350 * KB, 200 * KB, 90, 80}, StepCase{210 * KB, 200 * KB, 90, 85},
                      StepCase{211 * KB, 200 * KB, 90, 80}, StepCase{100 * KB, 200 * KB, 90, 85},
                      StepCase{900 * KB, 0, 90, 90}));

// Runs the search over an encoder giving sizeAt(q) bytes; returns the qualities tried.
QList<int> search(std::function<qint64(int)> sizeAt, int quality, qint64 limit, RecordingLog& log,
                  qint64* kept = nullptr) {
    QList<int> asked;
    const QByteArray bytes = OutputEncoder::searchJpegQuality(
        [&](int q) { return asked << q, QByteArray(int(sizeAt(q)), 'x'); }, quality, limit, log);
    if (kept)
        *kept = bytes.size();
    return asked;
}

TEST(OutputEncoder, SizeSearchLogsTheNextQualityNotTheKeptOne) {
    RecordingLog log;
    qint64 kept = 0;
    EXPECT_EQ(search([](int q) { return q >= 90 ? 900 * KB : 190 * KB; }, 90, 200 * KB, log, &kept),
              (QList<int>{90, 40}));
    EXPECT_EQ(kept, 190 * KB);
    EXPECT_EQ(log.lines, QStringList{"\tJPEG quality: 35\n"});

    // Out of quality: the last bytes are kept, with the warning.
    RecordingLog stuck;
    EXPECT_EQ(search([](int) { return 300 * KB; }, 10, 200 * KB, stuck, &kept), QList<int>{10});
    EXPECT_EQ(kept, 300 * KB);
    EXPECT_EQ(stuck.lines,
              (QStringList{"\tJPEG quality: 0\n", "WARNING\tUnable to make file size under 200 KB\n"}));
    // ... even when that last try fits.
    RecordingLog fits;
    EXPECT_EQ(search([](int q) { return q > 5 ? 250 * KB : 100 * KB; }, 15, 200 * KB, fits),
              (QList<int>{15, 5}));
    EXPECT_EQ(fits.lines.size(), 2);

    RecordingLog unlimited;
    search([](int) { return 5000 * KB; }, 80, 0, unlimited);
    EXPECT_EQ(unlimited.lines, QStringList{"\tJPEG quality: 80\n"});
    // An encoder that never gives bytes ends the search with nothing.
    EXPECT_EQ(search([](int) { return 0; }, 80, 0, unlimited), QList<int>{80});
    EXPECT_EQ(search([](int) { return 0; }, 80, 200 * KB, unlimited).size(), 16);
}

TEST(OutputEncoder, RealSearchMeetsLimitOnCameraPicture) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const VImage jpeg = VImage::new_from_file(path.toLocal8Bit().constData());
    const Picture picture{jpeg.bandjoin_const({255}), double(jpeg.width()), double(jpeg.height()), true};
    NullActivityLog log;
    const qint64 limit = OutputEncoder::jpegDataForImage(picture, 72, 100).size() / 4;
    const QByteArray small = OutputEncoder::dataForImage(picture, FileFormat::Jpeg, 72, 100, limit, log);
    EXPECT_LE(small.size(), limit);
    EXPECT_NEAR(decode(small).avg(), jpeg.avg(), 2);
}

class EncodedFormat : public ::testing::TestWithParam<std::pair<int, const char*>> {};

TEST_P(EncodedFormat, RecordsResolutionAndKeepsPixels) {
    const auto [format, loader] = GetParam();
    const Picture picture = testsupport::solidPicture(120, 80, 200, 100, 50);
    NullActivityLog log;
    const VImage decoded = decode(OutputEncoder::dataForImage(picture, format, 300, 90, 0, log));
    EXPECT_EQ(decoded.width(), 120);
    EXPECT_EQ(decoded.height(), 80);
    EXPECT_STREQ(decoded.get_string("vips-loader"), loader);
    EXPECT_NEAR(decoded.xres() * 25.4, 300, 0.5);
    EXPECT_NEAR(decoded.yres() * 25.4, 300, 0.5);
    EXPECT_EQ(decoded.bands(), 3); // fully opaque: no alpha band
    const std::vector<double> p = testsupport::pixelAt(decoded, 60, 40);
    EXPECT_NEAR(p[0], 200, 3);
    EXPECT_NEAR(p[2], 50, 3);
}

INSTANTIATE_TEST_SUITE_P(Formats, EncodedFormat,
                         ::testing::Values(std::pair{int(FileFormat::Jpeg), "jpegload_buffer"},
                                           std::pair{int(FileFormat::Png), "pngload_buffer"},
                                           std::pair{int(FileFormat::Tiff), "tiffload_buffer"}));

TEST(OutputEncoder, TransparencySurvivesPngAndUncompressedTiff) {
    const Picture clear = testsupport::solidPicture(20, 20, 255, 0, 0, 100);
    for (const QByteArray& bytes :
         {OutputEncoder::pngDataForImage(clear, 72), OutputEncoder::tiffDataForImage(clear, 72)})
        EXPECT_EQ(testsupport::pixelAt(decode(bytes), 5, 5), (std::vector<double>{255, 0, 0, 100}));
    EXPECT_GE(OutputEncoder::tiffDataForImage(clear, 72).size(), 20 * 20 * 4);
}

TEST(OutputEncoder, BrokenInputGivesNoBytes) {
    NullActivityLog log;
    EXPECT_TRUE(OutputEncoder::dataForImage(Picture{}, FileFormat::Jpeg, 72, 80, 0, log).isEmpty());
    EXPECT_TRUE(
        OutputEncoder::dataForImage(testsupport::solidPicture(4, 4, 0, 0, 0), 104, 72, 80, 0, log).isEmpty());
    // A damaged JPEG opens, and only fails in the encoder when its pixels are needed.
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "corrupted.jpg");
    const VImage lazy = VImage::new_from_file(path.toLocal8Bit().constData(),
                                              VImage::option()->set("fail_on", VIPS_FAIL_ON_ERROR));
    const Picture picture{lazy.bandjoin_const({255}), double(lazy.width()), double(lazy.height())};
    EXPECT_TRUE(OutputEncoder::dataForImage(picture, FileFormat::Jpeg, 72, 80, 0, log).isEmpty());
    EXPECT_TRUE(OutputEncoder::dataForImage(picture, FileFormat::Png, 72, 80, 0, log).isEmpty());
}

} // namespace
