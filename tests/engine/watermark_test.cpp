#include "engine/imagewatermark.h"
#include "support/activitylog.h"
#include "testsupport.h"

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
    QStringList lines, warnings;
};

// Each band within `tolerance` of {r, g, b, a}.
void expectPixel(const Picture& picture, int x, int y, std::vector<double> rgba, double tolerance = 0) {
    const std::vector<double> actual = pixelAt(picture.image, x, y);
    for (size_t band = 0; band < 4; ++band)
        EXPECT_NEAR(actual[band], rgba[band], tolerance)
            << "band " << band << " at (" << x << ", " << y << ")";
}

const std::vector<double> kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255}, kPurple{127.5, 0, 127.5, 255};

struct Placement {
    int location, left, top; // top-left corner of the drawn watermark, rows from the top
};

class WatermarkPlacement : public ::testing::TestWithParam<Placement> {};

// A 200 x 100 watermark on a 1000 x 800 picture covers exactly its rectangle.
TEST_P(WatermarkPlacement, CoversExactlyItsRectangle) {
    const Placement p = GetParam();
    Picture picture = solidPicture(1000, 800, 0, 0, 255);
    RecordingLog log;
    drawWatermark(solidPicture(200, 100, 255, 0, 0), picture, p.location, 100, log);
    EXPECT_TRUE(log.warnings.isEmpty());
    expectPixel(picture, p.left, p.top, kRed);
    expectPixel(picture, p.left + 199, p.top + 99, kRed);
    EXPECT_DOUBLE_EQ(picture.image.extract_band(0).avg(), 255.0 * 200 * 100 / (1000 * 800));
}

INSTANTIATE_TEST_SUITE_P(Locations, WatermarkPlacement,
                         ::testing::Values(Placement{1, 0, 700}, Placement{2, 800, 700}, Placement{3, 0, 0},
                                           Placement{4, 800, 0}, Placement{5, 400, 700}, Placement{6, 400, 0},
                                           Placement{7, 400, 350}, Placement{8, 0, 700},
                                           Placement{-3, 0, 700}));

// On an odd-sized picture a centred watermark straddles pixel boundaries: the
// edge pixels get partial coverage instead of the position being rounded.
TEST(Watermark, CentredPositionKeepsItsHalfPixels) {
    Picture picture = solidPicture(101, 51, 0, 0, 255);
    RecordingLog log;
    drawWatermark(solidPicture(10, 10, 255, 0, 0), picture, 7, 100, log);
    // Columns 45.5 to 55.5, rows 20.5 to 30.5 from the top.
    expectPixel(picture, 45, 25, kPurple, 1);
    expectPixel(picture, 46, 25, kRed);
    expectPixel(picture, 55, 25, kPurple, 1);
    expectPixel(picture, 50, 20, kPurple, 1);
    expectPixel(picture, 45, 30, {63.75, 0, 191.25, 255}, 1);
    expectPixel(picture, 56, 25, kBlue);
}

TEST(Watermark, OpacityAndAlphaBlendSourceOver) {
    RecordingLog log;
    Picture half = solidPicture(64, 48, 0, 0, 255);
    drawWatermark(solidPicture(64, 48, 255, 0, 0), half, 1, 50, log);
    expectPixel(half, 10, 10, kPurple, 1);

    Picture none = solidPicture(8, 8, 0, 0, 255); // location 0, then opacities out of range
    drawWatermark(solidPicture(8, 8, 255, 0, 0), none, 0, 100, log);
    drawWatermark(solidPicture(8, 8, 255, 0, 0), none, 1, -20, log);
    expectPixel(none, 3, 3, kBlue);
    drawWatermark(solidPicture(8, 8, 255, 0, 0), none, 1, 250, log);
    expectPixel(none, 3, 3, kRed);

    // Half-transparent over half-transparent: alpha 0.502 + 0.502 x 0.498.
    Picture clear = solidPicture(20, 20, 0, 0, 255, 128);
    drawWatermark(solidPicture(20, 20, 255, 0, 0, 128), clear, 4, 100, log);
    expectPixel(clear, 5, 5, {170.2, 0, 84.8, 191.8}, 1.5);
}

TEST(Watermark, LargerThanThePictureWarnsAndIsClipped) {
    RecordingLog log;
    Picture picture = solidPicture(100, 50, 0, 0, 255);
    drawWatermark(solidPicture(300, 30, 255, 0, 0), picture, 7, 100, log);
    ASSERT_EQ(log.warnings, QStringList{QStringLiteral("\tWarning: watermark is larger than image\n")});
    EXPECT_TRUE(log.lines.isEmpty());
    expectPixel(picture, 0, 25, kRed);
    expectPixel(picture, 99, 25, kRed);
    expectPixel(picture, 50, 5, kBlue);
    drawWatermark(solidPicture(100, 50, 255, 0, 0), picture, 2, 100, log); // exactly as large
    EXPECT_EQ(log.warnings.size(), 1);
}

TEST(Watermark, OddPictureSizes) {
    RecordingLog log;
    Picture dot = solidPicture(1, 1, 0, 0, 255);
    drawWatermark(solidPicture(3, 3, 255, 0, 0), dot, 7, 100, log);
    expectPixel(dot, 0, 0, kRed);

    Picture strip = solidPicture(10000, 50, 0, 0, 255);
    drawWatermark(solidPicture(64, 64, 255, 0, 0), strip, 5, 100, log);
    expectPixel(strip, 4968, 49, kRed);
    expectPixel(strip, 5032, 25, kBlue);

    Picture portrait = solidPicture(30, 900, 0, 0, 255);
    drawWatermark(solidPicture(20, 20, 255, 0, 0), portrait, 6, 100, log);
    expectPixel(portrait, 24, 19, kRed);
    expectPixel(portrait, 10, 20, kBlue);

    Picture empty; // nothing loaded on either side: nothing happens
    drawWatermark(solidPicture(4, 4, 255, 0, 0), empty, 7, 100, log);
    drawWatermark(Picture{}, portrait, 7, 100, log);
}

TEST(Watermark, LoadsPicturesAsRgbaAndRefusesTheRest) {
    QTemporaryDir dir;
    // Brackets would read as libvips load options in a plain file name.
    const QString logo = dir.filePath(QStringLiteral("logo[1].png"));
    testsupport::solidImage(7, 5, 10, 20, 30, 40).write_to_file(logo.toLocal8Bit().constData());
    const std::optional<Picture> mark = initWatermark(logo);
    ASSERT_TRUE(mark);
    EXPECT_EQ(mark->width, 7);
    EXPECT_EQ(mark->height, 5);
    expectPixel(*mark, 6, 4, {10, 20, 30, 40});

    const QString grey = dir.filePath(QStringLiteral("grey.jpg"));
    vips::VImage::black(9, 4)
        .linear(1, 128)
        .cast(VIPS_FORMAT_UCHAR)
        .write_to_file(grey.toLocal8Bit().constData());
    ASSERT_TRUE(initWatermark(grey));
    expectPixel(*initWatermark(grey), 1, 1, {128, 128, 128, 255}, 2);

    const QString text = dir.filePath(QStringLiteral("notes.png"));
    ASSERT_TRUE(testsupport::writeFile(text, "not a picture at all"));
    for (const QString& path : {QString(), dir.filePath(QStringLiteral("missing.png")), text, dir.path()})
        EXPECT_FALSE(initWatermark(path)) << path.toStdString();
}

// A camera photo is drawn pixel for pixel; damaged files load as far as they
// decode, or not at all, but never bring the process down.
TEST(Watermark, CameraPhotosAsWatermarks) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const std::optional<Picture> mark = initWatermark(path);
    ASSERT_TRUE(mark);
    const vips::VImage reference = vips::VImage::new_from_file(path.toLocal8Bit().constData());
    RecordingLog log;
    Picture picture = solidPicture(reference.width() + 11, reference.height() + 7, 0, 0, 0);
    drawWatermark(*mark, picture, 4, 100, log);
    const std::vector<double> corner = pixelAt(reference, 0, 0);
    expectPixel(picture, 11, 0, {corner[0], corner[1], corner[2], 255});
    expectPixel(picture, 10, 0, {0, 0, 0, 255});

    for (const char* name : {"corrupted.jpg", "invalid-image01137.jpg", "invalid-image02206.jpg"})
        initWatermark(testsupport::samplePath(QString::fromLatin1(name)));
}

} // namespace
