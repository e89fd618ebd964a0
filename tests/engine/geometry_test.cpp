#include "engine/geometry.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

using testsupport::pixelAt;
using testsupport::solidImage;
using vips::VImage;

namespace {

const RgbaColor blue{0, 0, 1, 1};
using Rgba = std::vector<double>;

// Resampled pixels within this many levels count as equal.
void expectPixel(const VImage& image, int x, int y, Rgba rgba, double tolerance = 3) {
    const Rgba p = pixelAt(image, x, y);
    for (int b = 0; b < 4; ++b)
        EXPECT_NEAR(p[b], rgba[b], tolerance) << "band " << b << " at (" << x << ", " << y << ")";
}

// Red, green / blue, white quadrants.
Picture quadrants(int w, int h) {
    const int hw = w / 2, hh = h / 2;
    const VImage top =
        solidImage(hw, hh, 255, 0, 0).join(solidImage(w - hw, hh, 0, 255, 0), VIPS_DIRECTION_HORIZONTAL);
    const VImage bottom = solidImage(hw, h - hh, 0, 0, 255)
                              .join(solidImage(w - hw, h - hh, 255, 255, 255), VIPS_DIRECTION_HORIZONTAL);
    return Picture{top.join(bottom, VIPS_DIRECTION_VERTICAL), double(w), double(h), true};
}

TEST(Geometry, TurnsMoveCornersAndKeepPixelScale) {
    struct Turn {
        Picture (*turn)(const Picture&);
        int redX, redY; // where the red top-left of a 4 x 2 picture lands
    };
    for (const Turn t : {Turn{&Geometry::rotateImageCW, 1, 0}, Turn{&Geometry::rotateImageCCW, 0, 3},
                         Turn{&Geometry::rotateImage180, 3, 1}}) {
        const Picture out = t.turn(quadrants(4, 2));
        expectPixel(out.image, t.redX, t.redY, {255, 0, 0, 255}, 0);
        // Shrunk on load: logical size turns with the pixels.
        const Picture shrunk = t.turn(Picture{solidImage(30, 20, 1, 2, 3), 300, 200});
        EXPECT_EQ(shrunk.height, out.image.height() == 4 ? 300 : 200);
        EXPECT_DOUBLE_EQ(shrunk.pixelScale(), 0.1);
    }
}

TEST(Geometry, AutomaticRotationFollowsOrientation) {
    const Picture picture = quadrants(30, 20);
    for (const auto& [orientation, width] : {std::pair{6, 20}, {8, 20}, {3, 30}, {1, 30}, {5, 30}}) {
        bool autoRotated = false;
        const Picture out =
            Geometry::processImage(picture, [o = orientation] { return o; }, Rotation::Automatic, autoRotated,
                                   ScaleType::None, 0, 0, 0, false, 3, false, 0, {});
        EXPECT_EQ(out.image.width(), width) << orientation;
        EXPECT_EQ(autoRotated, width == 20 || orientation == 3) << orientation;
    }
    bool autoRotated = true;
    const Picture fixed = Geometry::processImage(picture, {}, Rotation::Clockwise, autoRotated,
                                                 ScaleType::Fit, 10, 10, 0, false, 3, false, 0, {});
    EXPECT_FALSE(autoRotated);
    EXPECT_EQ(fixed.image.width(), 7);
}

// 3:2 padded into 80 x 80: the picture is 80 x 53 at y = 13.5, so rows 13
// and 66 are half band. Reduced and enlarged, opaque and premultiplied.
class GeometryFill : public ::testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(GeometryFill, PlacesPictureAtFractionalOffset) {
    const auto [width, opaque] = GetParam();
    Picture red = testsupport::solidPicture(width, width * 2 / 3, 255, 0, 0);
    red.opaque = opaque;
    const Picture out = Geometry::scaleImageToFill(red, {80, 80}, false, false, 3, blue);
    ASSERT_EQ(out.image.width(), 80);
    ASSERT_EQ(out.image.height(), 80);
    for (const auto& [y, colour] : {std::pair{12, Rgba{0, 0, 255, 255}},
                                    {13, Rgba{128, 0, 128, 255}},
                                    {14, Rgba{255, 0, 0, 255}},
                                    {66, Rgba{128, 0, 128, 255}},
                                    {67, Rgba{0, 0, 255, 255}}})
        expectPixel(out.image, 40, y, colour);
    // Transparent bands; the edge rows keep the colour at half coverage.
    const Picture clear = Geometry::scaleImageToFill(red, {80, 80}, false, false, 3, std::nullopt);
    expectPixel(clear.image, 40, 5, {0, 0, 0, 0});
    expectPixel(clear.image, 40, 13, {255, 0, 0, 128});
}

INSTANTIATE_TEST_SUITE_P(SizesAndHint, GeometryFill,
                         ::testing::Combine(::testing::Values(300, 30), ::testing::Bool()));

TEST(Geometry, CropTakesCentredRectangle) {
    const Picture crop =
        Geometry::cropImageToFit(quadrants(300, 200), {100, 100}, 100, false, 3, std::nullopt);
    ASSERT_EQ(crop.image.width(), 100);
    expectPixel(crop.image, 10, 10, {255, 0, 0, 255});
    expectPixel(crop.image, 90, 90, {255, 255, 255, 255});
    // Beyond 100 % the rectangle reaches past the picture: background there.
    const Picture wide = Geometry::cropImageToFit(quadrants(200, 200), {100, 100}, 200, false, 3, blue);
    expectPixel(wide.image, 5, 5, {0, 0, 255, 255});
    expectPixel(wide.image, 30, 30, {255, 0, 0, 255});
}

TEST(Geometry, ReductionDoesNotAliasButNoneSamplesPoints) {
    // One-pixel stripes reduced tenfold are grey; point sampling hits one stripe.
    const VImage stripe = (VImage::xyz(1000, 50)[0].remainder_const({2}) * 255).cast(VIPS_FORMAT_UCHAR);
    const Picture stripes{stripe.bandjoin({stripe, stripe}).bandjoin_const({255}), 1000, 50, true};
    for (int quality : {0, 2, 3}) {
        const VImage out = Geometry::scaleImageToWidth(stripes, 100, false, quality, {}).image[0];
        EXPECT_NEAR(out.avg(), 127.5, 4) << quality;
        EXPECT_LT(out.deviate(), 8) << quality;
    }
    EXPECT_GT(std::abs(Geometry::scaleImageToWidth(stripes, 100, false, 1, {}).image[0].avg() - 127.5), 100);
    // Enlarged without interpolation, whole pixels repeat in place.
    const VImage pair =
        solidImage(1, 1, 255, 0, 0).join(solidImage(1, 1, 0, 255, 0), VIPS_DIRECTION_HORIZONTAL);
    const VImage blocks = Geometry::scaleImageByPercent(Picture{pair, 2, 1, true}, 300, 1, {}).image;
    for (int x = 0; x < 6; ++x)
        expectPixel(blocks, x, 1, x < 3 ? Rgba{255, 0, 0, 255} : Rgba{0, 255, 0, 255}, 0);
}

TEST(Geometry, TransparencyBlendsWithoutDarkening) {
    // Transparent black beside opaque white, halved: the seam is white, part alpha.
    const VImage half =
        solidImage(10, 10, 0, 0, 0, 0).join(solidImage(10, 10, 255, 255, 255), VIPS_DIRECTION_HORIZONTAL);
    const Rgba seam = pixelAt(Geometry::scaleImageByPercent(Picture{half, 20, 10}, 50, 2, {}).image, 5, 2);
    EXPECT_GT(seam[3], 10);
    EXPECT_NEAR(seam[0], 255, 3);
    // Half-transparent red over white is opaque pink; a down-only copy too.
    const Picture pink = Geometry::scaleImageToFit(testsupport::solidPicture(4, 4, 255, 0, 0, 128), {40, 40},
                                                   true, false, 3, RgbaColor::white());
    EXPECT_EQ(pink.image.width(), 4);
    EXPECT_TRUE(pink.opaque);
    expectPixel(pink.image, 1, 1, {255, 127, 127, 255}, 1);
}

TEST(Geometry, PicturesOfOtherKindsAndSizes) {
    // Shrunk on load to a quarter: sizes follow the logical 3000 x 2000.
    Picture shrunk = quadrants(750, 500);
    shrunk.width = 3000;
    shrunk.height = 2000;
    const Picture fit = Geometry::scaleImageToFit(shrunk, {800, 600}, false, false, 3, {});
    EXPECT_EQ(fit.image.width(), 800);
    EXPECT_EQ(fit.image.height(), 533);
    expectPixel(fit.image, 410, 270, {255, 255, 255, 255});
    EXPECT_EQ(Geometry::thumbnail(shrunk).image.height(), 43);
    // 16-bit pixels are converted, not clipped.
    const VImage rgb16 = VImage::black(8, 8, VImage::option()->set("bands", 3))
                             .cast(VIPS_FORMAT_USHORT)
                             .new_from_image({51400.0, 25700.0, 0.0})
                             .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_RGB16));
    expectPixel(Geometry::copyImage(Picture{rgb16, 8, 8}, {}).image, 4, 4, {200, 100, 0, 255}, 1);
}

TEST(Geometry, ImpossibleCanvasIsAnError) {
    const Picture picture = quadrants(300, 200);
    EXPECT_THROW(Geometry::scaleImageToWidth(picture, 0, false, 3, {}), GeometryError);
    EXPECT_THROW(Geometry::scaleImageByPercent(picture, 0, 3, {}), GeometryError);
    EXPECT_THROW(Geometry::stretchImageToFit(picture, {200000, 200000}, false, false, 3, {}), GeometryError);
    EXPECT_THROW(Geometry::copyImage(Picture{}, {}), GeometryError);
    // A 0 % crop draws nothing: only background.
    expectPixel(Geometry::cropImageToFit(picture, {10, 10}, 0, false, 3, blue).image, 5, 5, {0, 0, 255, 255},
                0);
}

TEST(Geometry, CameraPictureKeepsItsLook) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const VImage jpeg = VImage::new_from_file(path.toLocal8Bit().constData());
    const Picture picture{jpeg.bandjoin_const({255}), double(jpeg.width()), double(jpeg.height()), true};
    const VImage fit = Geometry::scaleImageToFit(picture, {40, 40}, false, false, 3, {}).image;
    EXPECT_EQ(fit.width(), 40);
    EXPECT_EQ(fit.height(), int(std::round(40.0 * jpeg.height() / jpeg.width())));
    for (int b = 0; b < 3; ++b)
        EXPECT_NEAR(fit[b].avg(), jpeg[b].avg(), 2) << "band " << b;
}

} // namespace
