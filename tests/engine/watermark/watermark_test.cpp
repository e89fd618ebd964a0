#include "engine/watermark/imagewatermark.h"
#include "support/activitylog.h"
#include "testsupport.h"

#include <QStringList>

#include <array>

using namespace quillet;

using testsupport::pixelAt;
using testsupport::solidPicture;

namespace {

struct RecordingLog : ActivityLog {
    void writeActivity(const QString& line) override { lines.append(line); }
    void writeWarningActivity(const QString& line) override { warnings.append(line); }
    QStringList lines, warnings;
};

void expectPixel(const Picture& p, int x, int y, std::vector<double> rgba, double tolerance = 0) {
    for (size_t band = 0; band < 4; ++band)
        EXPECT_NEAR(pixelAt(p.image, x, y)[band], rgba[band], tolerance) << band << " at " << x << ", " << y;
}

const std::vector<double> kRed{255, 0, 0, 255}, kBlue{0, 0, 255, 255}, kPurple{127.5, 0, 127.5, 255};

// A red mark drawn on a blue picture.
Picture redOnBlue(int width, int height, int markWidth, int markHeight, int location, ActivityLog& log,
                  int opacity = 100) {
    Picture picture = solidPicture(width, height, 0, 0, 255);
    drawWatermark(solidPicture(markWidth, markHeight, 255, 0, 0), picture, location, opacity, log);
    return picture;
}

// Location, then the top-left corner of the drawn mark, rows from the top.
using Placement = std::array<int, 3>;
class WatermarkPlacement : public ::testing::TestWithParam<Placement> {};

// A 200 x 100 mark on a 1000 x 800 picture covers exactly its rectangle.
TEST_P(WatermarkPlacement, CoversExactlyItsRectangle) {
    const auto [location, left, top] = GetParam();
    RecordingLog log;
    const Picture picture = redOnBlue(1000, 800, 200, 100, location, log);
    EXPECT_TRUE(log.warnings.isEmpty());
    expectPixel(picture, left, top, kRed);
    expectPixel(picture, left + 199, top + 99, kRed);
    EXPECT_DOUBLE_EQ(picture.image.extract_band(0).avg(), 255.0 * 200 * 100 / (1000 * 800));
}

INSTANTIATE_TEST_SUITE_P(Locations, WatermarkPlacement,
                         ::testing::Values(Placement{1, 0, 700}, Placement{2, 800, 700}, Placement{3, 0, 0},
                                           Placement{4, 800, 0}, Placement{5, 400, 700}, Placement{6, 400, 0},
                                           Placement{7, 400, 350}, Placement{8, 0, 700},
                                           Placement{-3, 0, 700}));

// Centred on an odd-sized picture, the mark straddles pixel boundaries: edge
// pixels get partial coverage instead of the position being rounded.
TEST(Watermark, CentredPositionKeepsItsHalfPixels) {
    RecordingLog log;
    const Picture picture = redOnBlue(101, 51, 10, 10, 7, log); // columns 45.5-55.5, rows 20.5-30.5
    expectPixel(picture, 45, 25, kPurple, 1);
    expectPixel(picture, 46, 25, kRed);
    expectPixel(picture, 50, 20, kPurple, 1);
    expectPixel(picture, 45, 30, {63.75, 0, 191.25, 255}, 1);
    expectPixel(picture, 56, 25, kBlue);
}

TEST(Watermark, OpacityAndAlphaBlendSourceOver) {
    RecordingLog log;
    expectPixel(redOnBlue(64, 48, 64, 48, 1, log, 50), 10, 10, kPurple, 1);
    expectPixel(redOnBlue(8, 8, 8, 8, 0, log), 3, 3, kBlue); // location 0: no mark
    expectPixel(redOnBlue(8, 8, 8, 8, 1, log, -20), 3, 3, kBlue);
    expectPixel(redOnBlue(8, 8, 8, 8, 1, log, 250), 3, 3, kRed);
    // Half-transparent over half-transparent: alpha 0.502 + 0.502 x 0.498.
    Picture clear = solidPicture(20, 20, 0, 0, 255, 128);
    drawWatermark(solidPicture(20, 20, 255, 0, 0, 128), clear, 4, 100, log);
    expectPixel(clear, 5, 5, {170.2, 0, 84.8, 191.8}, 1.5);
}

TEST(Watermark, LargerThanThePictureWarnsAndIsClipped) {
    RecordingLog log;
    Picture picture = redOnBlue(100, 50, 300, 30, 7, log);
    ASSERT_EQ(log.warnings, QStringList{QStringLiteral("\tWarning: watermark is larger than image\n")});
    EXPECT_TRUE(log.lines.isEmpty());
    expectPixel(picture, 0, 25, kRed);
    expectPixel(picture, 50, 5, kBlue);
    drawWatermark(solidPicture(100, 50, 255, 0, 0), picture, 2, 100, log); // exactly as large
    EXPECT_EQ(log.warnings.size(), 1);
}

TEST(Watermark, OddPictureSizes) {
    RecordingLog log;
    expectPixel(redOnBlue(1, 1, 3, 3, 7, log), 0, 0, kRed);
    const Picture strip = redOnBlue(10000, 50, 64, 64, 5, log);
    expectPixel(strip, 4968, 49, kRed);
    expectPixel(strip, 5032, 25, kBlue);
    Picture portrait = redOnBlue(30, 900, 20, 20, 6, log);
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
    expectPixel(*mark, 6, 4, {10, 20, 30, 40});

    const QString text = dir.filePath(QStringLiteral("notes.png"));
    ASSERT_TRUE(testsupport::writeFile(text, "not a picture at all"));
    for (const QString& path : {QString(), dir.filePath(QStringLiteral("missing.png")), text, dir.path()})
        EXPECT_FALSE(initWatermark(path)) << path.toStdString();
}

} // namespace
