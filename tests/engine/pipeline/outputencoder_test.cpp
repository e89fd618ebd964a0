#include "engine/pipeline/outputencoder.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QStringList>

using namespace quillet;

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

// Every bound is strict: exactly 3, 1.75 or 1.05 falls to the next rule.
TEST(OutputEncoder, NextFactorStepsDownByHowFarOff) {
    for (const auto& [size, limit, factor, next] : {std::tuple{900 * KB, 200 * KB, 90, 40},
                                                    {700 * KB, 200 * KB, 70, 30},
                                                    {700 * KB, 200 * KB, 50, 20},
                                                    {600 * KB, 200 * KB, 90, 70},
                                                    {350 * KB, 200 * KB, 90, 80},
                                                    {210 * KB, 200 * KB, 90, 85},
                                                    {211 * KB, 200 * KB, 90, 80},
                                                    {100 * KB, 200 * KB, 90, 85},
                                                    {900 * KB, qint64(0), 90, 90}})
        EXPECT_EQ(OutputEncoder::nextFactorWithSize(size, limit, factor), next) << size << " " << factor;
}

// The search over an encoder giving sizeAt(q) bytes: qualities tried, bytes kept, log.
// The log names the next quality, not the kept one; out of quality the last bytes
// are kept with a warning, even when that last try fits.
TEST(OutputEncoder, SizeSearch) {
    const QString warning = "WARNING\tUnable to make file size under 200 KB\n";
    const struct {
        std::function<qint64(int)> sizeAt;
        int quality;
        qint64 limit;
        QList<int> asked;
        qint64 kept;
        QStringList lines;
    } cases[] = {
        {[](int q) { return q >= 90 ? 900 * KB : 190 * KB; },
         90,
         200 * KB,
         {90, 40},
         190 * KB,
         {"\tJPEG quality: 35\n"}},
        {[](int) { return 300 * KB; }, 10, 200 * KB, {10}, 300 * KB, {"\tJPEG quality: 0\n", warning}},
        {[](int q) { return q > 5 ? 250 * KB : 100 * KB; },
         15,
         200 * KB,
         {15, 5},
         100 * KB,
         {"\tJPEG quality: 0\n", warning}},
        {[](int) { return 5000 * KB; }, 80, 0, {80}, 5000 * KB, {"\tJPEG quality: 80\n"}},
        // An encoder that never gives bytes ends the search with nothing.
        {[](int) { return 0; }, 80, 0, {80}, 0, {}},
        {[](int) { return 0; }, 20, 200 * KB, {20, 15, 10, 5}, 0, {}},
    };
    for (const auto& c : cases) {
        RecordingLog log;
        QList<int> asked;
        const QByteArray bytes = OutputEncoder::searchJpegQuality(
            [&](int q) { return asked << q, QByteArray(int(c.sizeAt(q)), 'x'); }, c.quality, c.limit, log);
        EXPECT_EQ(asked, c.asked) << c.quality;
        EXPECT_EQ(bytes.size(), c.kept) << c.quality;
        EXPECT_EQ(log.lines, c.lines) << c.quality;
    }
}

TEST(OutputEncoder, RecordsResolutionAndKeepsPixels) {
    const Picture picture = testsupport::solidPicture(120, 80, 200, 100, 50);
    NullActivityLog log;
    for (const auto& [format, loader] : {std::pair{int(FileFormat::Jpeg), "jpegload_buffer"},
                                         {int(FileFormat::Png), "pngload_buffer"},
                                         {int(FileFormat::Tiff), "tiffload_buffer"}}) {
        const VImage decoded = decode(OutputEncoder::dataForImage(picture, format, 300, 90, 0, log));
        EXPECT_EQ(std::pair(decoded.width(), decoded.height()), std::pair(120, 80)) << loader;
        EXPECT_STREQ(decoded.get_string("vips-loader"), loader);
        EXPECT_NEAR(decoded.xres() * 25.4, 300, 0.5) << loader;
        EXPECT_NEAR(decoded.yres() * 25.4, 300, 0.5) << loader;
        EXPECT_EQ(decoded.bands(), 3) << loader; // fully opaque: no alpha band
        EXPECT_NEAR(testsupport::pixelAt(decoded, 60, 40)[0], 200, 3) << loader;
    }
}

// Optimised Huffman tables change only how the coefficients are coded.
TEST(OutputEncoder, OptimisedTablesKeepPixelsInFewerBytes) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const VImage photo = VImage::new_from_file(path.toLocal8Bit().constData()).copy_memory();
    const Picture picture{photo, double(photo.width()), double(photo.height())};
    const QByteArray standard =
        OutputEncoder::jpegDataForImage(picture, 72, 80, {}, OutputEncoder::HuffmanTables::Standard);
    const QByteArray optimised = OutputEncoder::jpegDataForImage(picture, 72, 80);
    ASSERT_FALSE(standard.isEmpty());
    EXPECT_LT(optimised.size(), standard.size());
    EXPECT_EQ(decode(optimised).subtract(decode(standard)).abs().max(), 0.0);
}

// Noise no quality squeezes under the limit: without shrinking the search
// ends with its warning, with it the picture is made smaller until the file,
// and the metadata still to come, fit.
TEST(OutputEncoder, ShrinkToFitReplacesTheWarningBySmallerPixels) {
    const auto band = [](double mean) {
        return VImage::gaussnoise(400, 300, VImage::option()->set("sigma", 60)->set("mean", mean));
    };
    const VImage noise =
        band(128).bandjoin(band(90)).bandjoin(band(160)).cast(VIPS_FORMAT_UCHAR).copy_memory();
    const Picture picture{noise, 400, 300, true};
    OutputEncoder::Encoding encoding;
    encoding.quality = 80;
    encoding.byteLimit = 4 * KB;
    const QString warning = "WARNING\tUnable to make file size under 4 KB\n";

    RecordingLog plain;
    EXPECT_GT(OutputEncoder::dataForImage(picture, encoding, plain).size(), 4 * KB);
    EXPECT_EQ(plain.lines.last(), warning);

    encoding.shrinkToFit = true;
    encoding.addedLater = KB;
    RecordingLog shrunk;
    const QByteArray bytes = OutputEncoder::dataForImage(picture, encoding, shrunk);
    EXPECT_LE(bytes.size(), 3 * KB);
    const VImage decoded = decode(bytes);
    EXPECT_LT(decoded.width(), 400);
    EXPECT_NEAR(double(decoded.width()) / decoded.height(), 4.0 / 3.0, 0.02);
    EXPECT_FALSE(shrunk.lines.contains(warning));
    EXPECT_EQ(
        shrunk.lines.last(),
        QStringLiteral("\tMade smaller to fit 4 KB: %1 x %2\n").arg(decoded.width()).arg(decoded.height()));
    // The quality lines are those of the search without shrinking.
    EXPECT_EQ(shrunk.lines.first(), plain.lines.first());
}

TEST(OutputEncoder, TransparencySurvivesPngAndUncompressedTiff) {
    const Picture clear = testsupport::solidPicture(20, 20, 255, 0, 0, 100);
    const QByteArray tiff = OutputEncoder::tiffDataForImage(clear, 72);
    for (const QByteArray& bytes : {OutputEncoder::pngDataForImage(clear, 72), tiff})
        EXPECT_EQ(testsupport::pixelAt(decode(bytes), 5, 5), (std::vector<double>{255, 0, 0, 100}));
    EXPECT_GE(tiff.size(), 20 * 20 * 4);
}

TEST(OutputEncoder, BrokenInputGivesNoBytes) {
    NullActivityLog log; // nothing to encode, an unknown format
    EXPECT_TRUE(OutputEncoder::dataForImage(Picture{}, FileFormat::Jpeg, 72, 80, 0, log).isEmpty());
    const Picture black = testsupport::solidPicture(4, 4, 0, 0, 0);
    EXPECT_TRUE(OutputEncoder::dataForImage(black, 199, 72, 80, 0, log).isEmpty());
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
