#include "engine/geometry.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <cmath>

using testsupport::pixelAt;
using testsupport::solidImage;
using vips::VImage;

namespace {

const RgbaColor blue{0, 0, 1, 1};

// Pixels within this many levels count as equal on resampled output.
constexpr double Tolerance = 3;

void expectPixel(const VImage& image, int x, int y, std::vector<double> rgba, double tolerance = Tolerance) {
    const std::vector<double> p = pixelAt(image, x, y);
    ASSERT_EQ(p.size(), 4u);
    for (int b = 0; b < 4; ++b)
        EXPECT_NEAR(p[b], rgba[b], tolerance) << "band " << b << " at (" << x << ", " << y << ")";
}

Picture opaquePicture(int w, int h, int r, int g, int b) {
    Picture p = testsupport::solidPicture(w, h, r, g, b);
    p.opaque = true;
    return p;
}

// Four quadrants: red, green / blue, white (top-left, top-right / bottom-left, bottom-right).
Picture quadrants(int w, int h) {
    const int hw = w / 2, hh = h / 2;
    VImage top = solidImage(hw, hh, 255, 0, 0).join(solidImage(w - hw, hh, 0, 255, 0), VIPS_DIRECTION_HORIZONTAL);
    VImage bottom =
        solidImage(hw, h - hh, 0, 0, 255).join(solidImage(w - hw, h - hh, 255, 255, 255), VIPS_DIRECTION_HORIZONTAL);
    return Picture{top.join(bottom, VIPS_DIRECTION_VERTICAL), double(w), double(h), true};
}

struct TurnCase {
    const char* name;
    Picture (*turn)(const Picture&);
    int redX, redY; // where the red top-left quadrant of a 4 x 2 picture ends up
};

class GeometryTurn : public ::testing::TestWithParam<TurnCase> {};

TEST_P(GeometryTurn, MovesCornersAndKeepsPixelScale) {
    const TurnCase& c = GetParam();
    const Picture out = c.turn(quadrants(4, 2));
    const bool quarter = out.image.width() == 2;
    EXPECT_EQ(out.image.width(), quarter ? 2 : 4);
    EXPECT_EQ(out.image.height(), quarter ? 4 : 2);
    expectPixel(out.image, c.redX, c.redY, {255, 0, 0, 255}, 0);

    // A picture shrunk on load stays shrunk by the same factor.
    Picture shrunk{solidImage(30, 20, 1, 2, 3), 300, 200};
    const Picture turned = c.turn(shrunk);
    EXPECT_EQ(turned.width, quarter ? 200 : 300);
    EXPECT_DOUBLE_EQ(turned.pixelScale(), 0.1);
}

INSTANTIATE_TEST_SUITE_P(Turns, GeometryTurn,
                         ::testing::Values(TurnCase{"Clockwise", &Geometry::rotateImageCW, 1, 0},
                                           TurnCase{"CounterClockwise", &Geometry::rotateImageCCW, 0, 3},
                                           TurnCase{"HalfTurn", &Geometry::rotateImage180, 3, 1}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Geometry, AutomaticRotationFollowsOrientation) {
    const Picture picture = opaquePicture(30, 20, 10, 20, 30);
    struct Expect {
        int orientation;
        int width;
        bool turned;
    };
    for (const Expect e : {Expect{6, 20, true}, Expect{8, 20, true}, Expect{3, 30, true}, Expect{1, 30, false},
                           Expect{5, 30, false}, Expect{0, 30, false}}) {
        bool autoRotated = true;
        const Picture out = Geometry::processImage(picture, [&] { return e.orientation; }, Rotation::Automatic,
                                                   autoRotated, ScaleType::None, 0, 0, 0, false, 3, false, 0,
                                                   std::nullopt);
        EXPECT_EQ(out.image.width(), e.width) << "orientation " << e.orientation;
        EXPECT_EQ(autoRotated, e.turned) << "orientation " << e.orientation;
    }
    // A fixed turn is never reported as automatic.
    bool autoRotated = true;
    const Picture fixed = Geometry::processImage(picture, {}, Rotation::Clockwise, autoRotated, 4, 10, 10, 0, false,
                                                 3, false, 0, std::nullopt);
    EXPECT_FALSE(autoRotated);
    EXPECT_EQ(fixed.image.width(), 7);
    EXPECT_EQ(fixed.image.height(), 10);
}

// Mode 8 at 300 x 200 into 80 x 80: the picture is 80 x 53 at y = 13.5, so
// rows 13 and 66 are half band, half picture. Run for both pixel paths.
class GeometryFill : public ::testing::TestWithParam<bool> {};

TEST_P(GeometryFill, PlacesPictureAtFractionalOffset) {
    Picture red = testsupport::solidPicture(300, 200, 255, 0, 0);
    red.opaque = GetParam();
    const Picture out = Geometry::scaleImageToFill(red, {80, 80}, false, false, 3, blue);
    ASSERT_EQ(out.image.width(), 80);
    ASSERT_EQ(out.image.height(), 80);
    EXPECT_TRUE(out.opaque);
    for (int x : {0, 40, 79}) {
        expectPixel(out.image, x, 12, {0, 0, 255, 255});
        expectPixel(out.image, x, 13, {128, 0, 128, 255});
        expectPixel(out.image, x, 14, {255, 0, 0, 255});
        expectPixel(out.image, x, 65, {255, 0, 0, 255});
        expectPixel(out.image, x, 66, {128, 0, 128, 255});
        expectPixel(out.image, x, 67, {0, 0, 255, 255});
    }

    // Without a background the bands are transparent and the edge rows keep
    // the picture's colour at half coverage, not a darkened one.
    const Picture clear = Geometry::scaleImageToFill(red, {80, 80}, false, false, 3, std::nullopt);
    EXPECT_FALSE(clear.opaque);
    expectPixel(clear.image, 40, 5, {0, 0, 0, 0});
    expectPixel(clear.image, 40, 13, {255, 0, 0, 128});
    expectPixel(clear.image, 40, 40, {255, 0, 0, 255});
}

INSTANTIATE_TEST_SUITE_P(OpaqueHint, GeometryFill, ::testing::Bool());

TEST(Geometry, CropTakesCentredRectangle) {
    // 300 x 200 quadrants cropped to a square: the centred 200 x 200 keeps
    // all four quadrants, each 50 x 50 of the result.
    const Picture crop = Geometry::cropImageToFit(quadrants(300, 200), {100, 100}, 100, false, 3, std::nullopt);
    ASSERT_EQ(crop.image.width(), 100);
    ASSERT_EQ(crop.image.height(), 100);
    expectPixel(crop.image, 10, 10, {255, 0, 0, 255});
    expectPixel(crop.image, 90, 10, {0, 255, 0, 255});
    expectPixel(crop.image, 10, 90, {0, 0, 255, 255});
    expectPixel(crop.image, 90, 90, {255, 255, 255, 255});

    // More than 100 % reaches beyond the picture: the rest is background.
    const Picture wide = Geometry::cropImageToFit(quadrants(200, 200), {100, 100}, 200, false, 3, blue);
    ASSERT_EQ(wide.image.width(), 100);
    expectPixel(wide.image, 5, 5, {0, 0, 255, 255});
    expectPixel(wide.image, 30, 30, {255, 0, 0, 255});
    expectPixel(wide.image, 95, 50, {0, 0, 255, 255});
}

TEST(Geometry, ReductionDoesNotAlias) {
    // One-pixel stripes averaged down by ten are mid grey everywhere; point
    // sampling (interpolation "none") keeps hitting the same stripe colour.
    const VImage stripes = (VImage::xyz(1000, 100).extract_band(0).remainder_const({2}) * 255)
                               .cast(VIPS_FORMAT_UCHAR)
                               .bandjoin({VImage::xyz(1000, 100).extract_band(0).remainder_const({2}) * 255,
                                          VImage::xyz(1000, 100).extract_band(0).remainder_const({2}) * 255})
                               .cast(VIPS_FORMAT_UCHAR)
                               .bandjoin_const({255});
    const Picture picture{stripes, 1000, 100, true};
    for (int quality : {0, 2, 3}) {
        const Picture out = Geometry::scaleImageToWidth(picture, 100, false, quality, std::nullopt);
        EXPECT_NEAR(out.image.extract_band(0).avg(), 127.5, 4) << "quality " << quality;
        EXPECT_LT(out.image.extract_band(0).deviate(), 8) << "quality " << quality;
    }
    const Picture nearest = Geometry::scaleImageToWidth(picture, 100, false, ScaleQuality::None, std::nullopt);
    EXPECT_GT(std::abs(nearest.image.extract_band(0).avg() - 127.5), 100);

    // Enlarging without interpolation repeats whole pixels, each in its place.
    const VImage pair = solidImage(1, 1, 255, 0, 0).join(solidImage(1, 1, 0, 255, 0), VIPS_DIRECTION_HORIZONTAL);
    const Picture blocks = Geometry::scaleImageByPercent(Picture{pair, 2, 1, true}, 300, ScaleQuality::None, {});
    ASSERT_EQ(blocks.image.width(), 6);
    for (int x = 0; x < 6; ++x)
        expectPixel(blocks.image, x, 1, x < 3 ? std::vector<double>{255, 0, 0, 255} : std::vector<double>{0, 255, 0, 255}, 0);
}

TEST(Geometry, TransparentEdgesKeepTheirColour) {
    // Transparent black beside opaque white, halved: the seam pixel is white
    // at partial alpha, never grey.
    const VImage half = solidImage(10, 10, 0, 0, 0, 0).join(solidImage(10, 10, 255, 255, 255), VIPS_DIRECTION_HORIZONTAL);
    const Picture out = Geometry::scaleImageByPercent(Picture{half, 20, 10}, 50, 2, std::nullopt);
    ASSERT_EQ(out.image.width(), 10);
    const std::vector<double> seam = pixelAt(out.image, 5, 2);
    EXPECT_GT(seam[3], 10);
    EXPECT_NEAR(seam[0], 255, Tolerance);

    // Half-transparent red over white becomes opaque pink.
    const Picture pink = Geometry::copyImage(testsupport::solidPicture(4, 4, 255, 0, 0, 128), RgbaColor::white());
    EXPECT_TRUE(pink.opaque);
    expectPixel(pink.image, 1, 1, {255, 127, 127, 255}, 1);
}

TEST(Geometry, SixteenBitPixelsAreConvertedNotClipped) {
    const VImage rgb16 = VImage::black(8, 8, VImage::option()->set("bands", 3))
                             .cast(VIPS_FORMAT_USHORT)
                             .new_from_image({51400.0, 25700.0, 0.0})
                             .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
    const Picture out = Geometry::copyImage(Picture{rgb16, 8, 8}, std::nullopt);
    EXPECT_TRUE(out.opaque);
    expectPixel(out.image, 4, 4, {200, 100, 0, 255}, 1);
}

TEST(Geometry, ShrunkPictureSizesByItsLogicalSize) {
    // 3000 x 2000 decoded at a quarter of its size.
    Picture shrunk = quadrants(750, 500);
    shrunk.width = 3000;
    shrunk.height = 2000;
    const Picture fit = Geometry::scaleImageToFit(shrunk, {800, 600}, false, false, 3, std::nullopt);
    EXPECT_EQ(fit.image.width(), 800);
    EXPECT_EQ(fit.image.height(), 533);
    EXPECT_EQ(fit.width, 800);
    expectPixel(fit.image, 390, 260, {255, 0, 0, 255});
    expectPixel(fit.image, 410, 270, {255, 255, 255, 255});

    const Picture copy = Geometry::copyImage(shrunk, std::nullopt);
    EXPECT_EQ(copy.image.width(), 3000);
    EXPECT_EQ(copy.height, 2000);
}

TEST(Geometry, DownOnlyCopyStillDrawsOnBackground) {
    const Picture clear = testsupport::solidPicture(30, 20, 0, 0, 0, 0);
    const Picture out = Geometry::scaleImageToFit(clear, {4000, 3000}, true, false, 3, blue);
    EXPECT_EQ(out.image.width(), 30);
    EXPECT_EQ(out.image.height(), 20);
    expectPixel(out.image, 15, 10, {0, 0, 255, 255}, 0);

    const Picture thumb = Geometry::thumbnail(opaquePicture(300, 200, 1, 2, 3));
    EXPECT_EQ(thumb.image.width(), 64);
    EXPECT_EQ(thumb.image.height(), 43);
    EXPECT_EQ(Geometry::thumbnail(opaquePicture(30, 20, 1, 2, 3)).image.width(), 30);
}

TEST(Geometry, ImpossibleCanvasIsAnError) {
    const Picture picture = opaquePicture(300, 200, 1, 2, 3);
    EXPECT_THROW(Geometry::scaleImageToWidth(picture, 0, false, 3, std::nullopt), GeometryError);
    EXPECT_THROW(Geometry::scaleImageByPercent(picture, 0, 3, std::nullopt), GeometryError);
    EXPECT_THROW(Geometry::stretchImageToFit(picture, {-5, 10}, false, false, 3, std::nullopt), GeometryError);
    EXPECT_THROW(Geometry::stretchImageToFit(picture, {200000, 200000}, false, false, 3, std::nullopt), GeometryError);
    EXPECT_THROW(Geometry::copyImage(Picture{}, std::nullopt), GeometryError);
    EXPECT_THROW(Geometry::rotateImageCW(Picture{}), GeometryError);
    // A 0 % crop draws nothing; the box is only background.
    const Picture empty = Geometry::cropImageToFit(picture, {10, 10}, 0, false, 3, blue);
    expectPixel(empty.image, 5, 5, {0, 0, 255, 255}, 0);
}

TEST(Geometry, CameraPictureKeepsItsLook) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const VImage jpeg = VImage::new_from_file(path.toLocal8Bit().constData());
    const Picture picture{jpeg.bandjoin_const({255}), double(jpeg.width()), double(jpeg.height()), true};
    const Picture fit = Geometry::scaleImageToFit(picture, {40, 40}, false, false, 3, std::nullopt);
    const double r = double(jpeg.width()) / jpeg.height();
    EXPECT_EQ(fit.image.width(), 40);
    EXPECT_EQ(fit.image.height(), int(std::round(40 / r)));
    // Same average colour as the original, band by band.
    for (int b = 0; b < 3; ++b)
        EXPECT_NEAR(fit.image.extract_band(b).avg(), jpeg.extract_band(b).avg(), 2) << "band " << b;
}

} // namespace
