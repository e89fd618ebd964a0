#include "engine/imagewatermark.h"
#include "support/activitylog.h"
#include "testsupport.h"

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using testsupport::pixelAt;
using testsupport::solidPicture;

namespace {

class RecordingLog : public ActivityLog {
public:
    void writeActivity(const QString& line) override { lines.append(line); }
    void writeWarningActivity(const QString& line) override { warnings.append(line); }
    QStringList lines;
    QStringList warnings;
};

// Expects the pixel to be within `tolerance` of {r, g, b, a} on every band.
void expectPixel(const vips::VImage& image, int x, int y, std::vector<double> rgba, double tolerance = 0) {
    const std::vector<double> actual = pixelAt(image, x, y);
    ASSERT_EQ(actual.size(), 4u);
    for (size_t band = 0; band < 4; ++band)
        EXPECT_NEAR(actual[band], rgba[band], tolerance) << "band " << band << " at (" << x << ", " << y << ")";
}

const std::vector<double> kRed{255, 0, 0, 255};
const std::vector<double> kBlue{0, 0, 255, 255};

struct Placement {
    int location;
    int left; // top-left corner of the drawn watermark in pixel rows
    int top;
};

class WatermarkPlacement : public ::testing::TestWithParam<Placement> {};

// A 200 x 100 watermark on a 1000 x 800 picture: the watermark covers exactly
// its rectangle, corners included, and nothing around it.
TEST_P(WatermarkPlacement, CoversExactlyItsRectangle) {
    const Placement p = GetParam();
    Picture picture = solidPicture(1000, 800, 0, 0, 255);
    RecordingLog log;
    drawWatermark(solidPicture(200, 100, 255, 0, 0), picture, p.location, 100, log);

    EXPECT_EQ(picture.image.width(), 1000);
    EXPECT_EQ(picture.image.height(), 800);
    EXPECT_TRUE(log.warnings.isEmpty());
    const vips::VImage& image = picture.image;
    expectPixel(image, p.left, p.top, kRed);
    expectPixel(image, p.left + 199, p.top + 99, kRed);
    if (p.left > 0)
        expectPixel(image, p.left - 1, p.top, kBlue);
    if (p.left + 200 < 1000)
        expectPixel(image, p.left + 200, p.top + 99, kBlue);
    if (p.top > 0)
        expectPixel(image, p.left, p.top - 1, kBlue);
    if (p.top + 100 < 800)
        expectPixel(image, p.left + 199, p.top + 100, kBlue);
    EXPECT_NEAR(image.extract_band(0).avg(), 255.0 * 200 * 100 / (1000 * 800), 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Locations, WatermarkPlacement,
                         ::testing::Values(Placement{1, 0, 700}, Placement{2, 800, 700}, Placement{3, 0, 0},
                                           Placement{4, 800, 0}, Placement{5, 400, 700}, Placement{6, 400, 0},
                                           Placement{7, 400, 350}, Placement{8, 0, 700},
                                           Placement{-3, 0, 700}));

TEST(Watermark, OriginsAreBottomUpAndKeepHalfPixels) {
    EXPECT_EQ(watermarkOrigin(1000, 800, 200, 100, 7), QPointF(400, 350));
    EXPECT_EQ(watermarkOrigin(1000, 800, 200, 100, 2), QPointF(800, 0));
    EXPECT_EQ(watermarkOrigin(101, 51, 10, 10, 7), QPointF(45.5, 20.5));
    EXPECT_EQ(watermarkOrigin(101, 51, 10, 10, 6), QPointF(45.5, 41));
}

TEST(Watermark, LocationZeroDrawsNothing) {
    Picture picture = solidPicture(50, 40, 0, 0, 255);
    RecordingLog log;
    drawWatermark(solidPicture(80, 80, 255, 0, 0), picture, 0, 100, log);
    EXPECT_EQ(picture.image.extract_band(0).max(), 0);
    EXPECT_TRUE(log.warnings.isEmpty()); // nothing drawn, nothing to warn about
}

// A centred watermark on an odd-sized picture straddles pixel boundaries: the
// edge columns and rows get half coverage instead of being rounded.
TEST(Watermark, CentredPositionIsNotRounded) {
    Picture picture = solidPicture(101, 51, 0, 0, 255);
    RecordingLog log;
    drawWatermark(solidPicture(10, 10, 255, 0, 0), picture, 7, 100, log);
    // x from 45.5 to 55.5; rows from 51 - 20.5 - 10 = 20.5 to 30.5.
    expectPixel(picture.image, 45, 25, {127.5, 0, 127.5, 255}, 1);
    expectPixel(picture.image, 46, 25, kRed);
    expectPixel(picture.image, 54, 25, kRed);
    expectPixel(picture.image, 55, 25, {127.5, 0, 127.5, 255}, 1);
    expectPixel(picture.image, 50, 20, {127.5, 0, 127.5, 255}, 1);
    expectPixel(picture.image, 50, 30, {127.5, 0, 127.5, 255}, 1);
    expectPixel(picture.image, 45, 20, {63.75, 0, 191.25, 255}, 1);
    expectPixel(picture.image, 44, 25, kBlue);
    expectPixel(picture.image, 56, 25, kBlue);
    // Total red equals the watermark's area exactly.
    EXPECT_NEAR(picture.image.extract_band(0).avg() * 101 * 51, 255.0 * 100, 255.0 * 0.1);
}

TEST(Watermark, OpacityScalesTheWatermarkOverThePicture) {
    RecordingLog log;
    Picture half = solidPicture(64, 48, 0, 0, 255);
    drawWatermark(solidPicture(64, 48, 255, 0, 0), half, 1, 50, log);
    expectPixel(half.image, 10, 10, {127.5, 0, 127.5, 255}, 1);

    Picture quarter = solidPicture(64, 48, 200, 200, 200);
    drawWatermark(solidPicture(64, 48, 0, 0, 0), quarter, 1, 25, log);
    expectPixel(quarter.image, 10, 10, {150, 150, 150, 255}, 1);

    // Beyond the range the opacity is held to full or none.
    Picture over = solidPicture(8, 8, 0, 0, 255);
    drawWatermark(solidPicture(8, 8, 255, 0, 0), over, 1, 250, log);
    expectPixel(over.image, 3, 3, kRed);
    Picture none = solidPicture(8, 8, 0, 0, 255);
    drawWatermark(solidPicture(8, 8, 255, 0, 0), none, 1, -20, log);
    expectPixel(none.image, 3, 3, kBlue);
}

// The watermark's own transparency and a transparent picture both blend
// source over: the picture shows through, and alpha adds up.
TEST(Watermark, BlendsSourceOverWithStraightAlpha) {
    RecordingLog log;
    Picture picture = solidPicture(20, 20, 0, 0, 255);
    drawWatermark(solidPicture(20, 20, 255, 0, 0, 0), picture, 4, 100, log);
    expectPixel(picture.image, 5, 5, kBlue);

    Picture clear = solidPicture(20, 20, 0, 0, 0, 0);
    drawWatermark(solidPicture(20, 20, 255, 255, 255, 128), clear, 4, 100, log);
    expectPixel(clear.image, 5, 5, {255, 255, 255, 128}, 1);

    Picture halfClear = solidPicture(20, 20, 0, 0, 255, 128);
    drawWatermark(solidPicture(20, 20, 255, 0, 0, 128), halfClear, 4, 100, log);
    // alpha 0.502 + 0.502 * 0.498 = 0.752; red carries 0.502 / 0.752 of it.
    expectPixel(halfClear.image, 5, 5, {170.2, 0, 84.8, 191.8}, 1.5);
}

TEST(Watermark, LargerThanThePictureWarnsAndIsClipped) {
    RecordingLog log;
    Picture picture = solidPicture(100, 50, 0, 0, 255);
    drawWatermark(solidPicture(300, 30, 255, 0, 0), picture, 7, 100, log);
    ASSERT_EQ(log.warnings, QStringList{QStringLiteral("\tWarning: watermark is larger than image\n")});
    EXPECT_TRUE(log.lines.isEmpty());
    EXPECT_EQ(picture.image.width(), 100);
    EXPECT_EQ(picture.image.height(), 50);
    expectPixel(picture.image, 0, 25, kRed);
    expectPixel(picture.image, 99, 25, kRed);
    expectPixel(picture.image, 50, 5, kBlue);

    // Only taller, and exactly as large: warned once, then not at all.
    log.warnings.clear();
    drawWatermark(solidPicture(10, 51, 255, 0, 0), picture, 2, 100, log);
    EXPECT_EQ(log.warnings.size(), 1);
    drawWatermark(solidPicture(100, 50, 255, 0, 0), picture, 2, 100, log);
    EXPECT_EQ(log.warnings.size(), 1);
}

// Pictures of odd shapes: nothing crashes, the size never changes, and the
// watermark lands where the corner arithmetic says.
TEST(Watermark, OddPictureSizes) {
    RecordingLog log;
    Picture dot = solidPicture(1, 1, 0, 0, 255);
    drawWatermark(solidPicture(3, 3, 255, 0, 0), dot, 7, 100, log);
    EXPECT_EQ(dot.image.width(), 1);
    EXPECT_EQ(dot.image.height(), 1);
    expectPixel(dot.image, 0, 0, kRed);

    Picture strip = solidPicture(10000, 50, 0, 0, 255);
    drawWatermark(solidPicture(64, 64, 255, 0, 0), strip, 5, 100, log);
    expectPixel(strip.image, 4968, 0, kRed);
    expectPixel(strip.image, 5031, 49, kRed);
    expectPixel(strip.image, 4967, 25, kBlue);
    expectPixel(strip.image, 5032, 25, kBlue);

    Picture portrait = solidPicture(30, 900, 0, 0, 255);
    drawWatermark(solidPicture(20, 20, 255, 0, 0), portrait, 6, 100, log);
    expectPixel(portrait.image, 5, 0, kRed);
    expectPixel(portrait.image, 24, 19, kRed);
    expectPixel(portrait.image, 4, 10, kBlue);
    expectPixel(portrait.image, 25, 10, kBlue);
    expectPixel(portrait.image, 10, 20, kBlue);
}

TEST(Watermark, LoadsAnyDecodablePictureAsOpaqueOrTransparentRgba) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString brackets = dir.filePath(QStringLiteral("logo[1].png"));
    testsupport::solidImage(7, 5, 10, 20, 30, 40).write_to_file(brackets.toLocal8Bit().constData());
    const std::optional<Picture> logo = initWatermark(brackets);
    ASSERT_TRUE(logo);
    EXPECT_EQ(logo->width, 7);
    EXPECT_EQ(logo->height, 5);
    expectPixel(logo->image, 6, 4, {10, 20, 30, 40});

    const QString grey = dir.filePath(QStringLiteral("grey.jpg"));
    vips::VImage::black(9, 4).linear(1, 128).cast(VIPS_FORMAT_UCHAR).write_to_file(grey.toLocal8Bit().constData());
    const std::optional<Picture> greyMark = initWatermark(grey);
    ASSERT_TRUE(greyMark);
    EXPECT_EQ(greyMark->image.bands(), 4);
    expectPixel(greyMark->image, 1, 1, {128, 128, 128, 255}, 2);

    const QString deep = dir.filePath(QStringLiteral("deep.png"));
    vips::VImage::black(3, 3, vips::VImage::option()->set("bands", 3))
        .linear(1, 65535)
        .cast(VIPS_FORMAT_USHORT)
        .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16))
        .write_to_file(deep.toLocal8Bit().constData());
    const std::optional<Picture> deepMark = initWatermark(deep);
    ASSERT_TRUE(deepMark);
    EXPECT_EQ(deepMark->image.format(), VIPS_FORMAT_UCHAR);
    expectPixel(deepMark->image, 0, 0, {255, 255, 255, 255}, 1);
}

TEST(Watermark, UnloadablePathsGiveNoWatermark) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString text = dir.filePath(QStringLiteral("notes.png"));
    ASSERT_TRUE(testsupport::writeFile(text, "not a picture at all"));
    const QString empty = dir.filePath(QStringLiteral("empty.png"));
    ASSERT_TRUE(testsupport::writeFile(empty, QByteArray()));

    EXPECT_FALSE(initWatermark(QString()));
    EXPECT_FALSE(initWatermark(dir.filePath(QStringLiteral("missing.png"))));
    EXPECT_FALSE(initWatermark(text));
    EXPECT_FALSE(initWatermark(empty));
    EXPECT_FALSE(initWatermark(dir.path()));
}

TEST(Watermark, CameraPhotoAsWatermark) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const std::optional<Picture> mark = initWatermark(path);
    ASSERT_TRUE(mark);
    const vips::VImage reference = vips::VImage::new_from_file(path.toLocal8Bit().constData());
    EXPECT_EQ(mark->image.width(), reference.width());
    EXPECT_EQ(mark->image.height(), reference.height());

    RecordingLog log;
    Picture picture = solidPicture(reference.width() + 11, reference.height() + 7, 0, 0, 0);
    drawWatermark(*mark, picture, 4, 100, log);
    EXPECT_TRUE(log.warnings.isEmpty());
    // Top right, pixel for pixel: the photo's own top-left pixel lands 11 in.
    const std::vector<double> corner = pixelAt(reference, 0, 0);
    expectPixel(picture.image, 11, 0, {corner[0], corner[1], corner[2], 255}, 0);
    expectPixel(picture.image, 10, 0, {0, 0, 0, 255});
}

TEST(Watermark, DamagedFilesNeverCrash) {
    for (const char* name : {"corrupted.jpg", "invalid-image01137.jpg", "invalid-image02206.jpg"}) {
        const QString path = testsupport::samplePath(QString::fromLatin1(name));
        if (path.isEmpty())
            GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
        const std::optional<Picture> mark = initWatermark(path);
        if (mark) {
            EXPECT_EQ(mark->image.bands(), 4) << name;
            EXPECT_EQ(mark->width, mark->image.width()) << name;
        }
    }
}

} // namespace
