#include "engine/geometry/geometry.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

using namespace quillet;

using testsupport::pixelAt;
using testsupport::solidImage;
using vips::VImage;

namespace {

const RgbaColor blue{0, 0, 1, 1};
using Rgba = std::vector<double>;

// Resampled pixels within this many levels count as equal. A picture without
// an alpha band is opaque.
void expectPixel(const VImage& image, int x, int y, Rgba rgba, double tolerance = 3) {
    Rgba p = pixelAt(image, x, y);
    if (p.size() == 3)
        p.push_back(255);
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
    // Where the red top-left of a 4 x 2 picture lands.
    using Geometry::rotateImageCW, Geometry::rotateImageCCW, Geometry::rotateImage180;
    for (const auto& [turn, redX, redY] :
         {std::tuple{&rotateImageCW, 1, 0}, {&rotateImageCCW, 0, 3}, {&rotateImage180, 3, 1}}) {
        const Picture out = turn(quadrants(4, 2));
        expectPixel(out.image, redX, redY, {255, 0, 0, 255}, 0);
        const Picture shrunk = turn(Picture{solidImage(30, 20, 1, 2, 3), 300, 200}); // shrunk on load
        EXPECT_EQ(shrunk.height, out.image.height() == 4 ? 300 : 200);
        EXPECT_DOUBLE_EQ(shrunk.pixelScale(), 0.1);
    }
}

TEST(Geometry, AutomaticRotationTurnsAndMirrorsEveryOrientationUpright) {
    // The quadrants as stored: red, green / blue, white. For each orientation,
    // the upright picture's width and its top-left and top-right colours.
    const Picture picture = quadrants(30, 20);
    const std::vector<double> R{255, 0, 0}, G{0, 255, 0}, B{0, 0, 255},
        W{255, 255, 255}; // opaque: three bands
    const struct {
        int orientation, width;
        std::vector<double> left, right;
    } cases[] = {{1, 30, R, G}, {2, 30, G, R}, {3, 30, W, B}, {4, 30, B, W}, {5, 20, R, B},
                 {6, 20, B, R}, {7, 20, W, G}, {8, 20, G, W}, {0, 30, R, G}, {9, 30, R, G}};
    for (const auto& c : cases) {
        const Geometry::Processed out = Geometry::processImage(picture, [o = c.orientation] { return o; },
                                                               Rotation::Automatic, Sizing{}, {});
        const VImage& image = out.picture.image;
        ASSERT_EQ(image.width(), c.width) << c.orientation;
        EXPECT_EQ(out.picture.width, c.width) << c.orientation;
        EXPECT_EQ(testsupport::pixelAt(image, 1, 1), c.left) << c.orientation;
        EXPECT_EQ(testsupport::pixelAt(image, image.width() - 2, 1), c.right) << c.orientation;
        EXPECT_EQ(out.autoRotated, c.orientation >= 2 && c.orientation <= 8) << c.orientation;
    }
}

// 3:2 padded into 80 x 80: the picture is 80 x 53 at y = 13.5, so rows 13
// and 66 are half band. Reduced and enlarged, opaque and premultiplied.
class GeometryFill : public ::testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(GeometryFill, PlacesPictureAtFractionalOffset) {
    const auto [width, opaque] = GetParam();
    Picture red = testsupport::solidPicture(width, width * 2 / 3, 255, 0, 0);
    red.opaque = opaque;
    const Picture out = Geometry::scaleImageToFill(red, {80, 80}, false, false, 3, blue);
    ASSERT_EQ(std::pair(out.image.width(), out.image.height()), std::pair(80, 80));
    const Rgba band{0, 0, 255, 255}, edge{128, 0, 128, 255}, picture{255, 0, 0, 255};
    for (const auto& [y, colour] : {std::pair{12, band}, {13, edge}, {14, picture}, {66, edge}, {67, band}})
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

TEST(Geometry, TinyResultsAreOnePixel) {
    // A 1 x 1 picture and 1-pixel lines, reduced below a pixel in every mode
    // that scales, are drawn at one pixel or more, never refused.
    const Picture dot = testsupport::solidPicture(1, 1, 200, 10, 10, 255);
    const Picture line{solidImage(1000, 1, 200, 10, 10), 1000, 1, true};
    const Picture column{solidImage(1, 1000, 200, 10, 10), 1, 1000, true};
    const struct {
        const char* name;
        Picture picture;
        Sizing sizing;
        int width, height;
    } cases[] = {
        {"Percent", dot, {ScaleType::Percent, 0, 0, 37}, 1, 1},
        {"Crop", dot, {ScaleType::Crop, 1, 1, 100, 37}, 1, 1},
        {"LineToWidth", line, {ScaleType::ToWidth, 100, 0}, 100, 1},
        {"LineFit", line, {ScaleType::Fit, 100, 100}, 100, 1},
        {"LineFill", line, {ScaleType::Fill, 100, 100}, 100, 100},
        {"ColumnToHeight", column, {ScaleType::ToHeight, 0, 100}, 1, 100},
        {"ColumnPercent", column, {ScaleType::Percent, 0, 0, 10}, 1, 100},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Picture out = Geometry::processImage(c.picture, {}, Rotation::None, c.sizing, blue).picture;
        EXPECT_EQ(out.image.width(), c.width);
        EXPECT_EQ(out.image.height(), c.height);
        // The picture covers the canvas (the padded one: its middle row).
        const int y = c.sizing.scaleType == ScaleType::Fill ? c.height / 2 : 0;
        EXPECT_GT(pixelAt(out.image, c.width / 2, y)[0], 60);
    }
}

TEST(Geometry, ImpossibleCanvasIsAnError) {
    const Picture picture = quadrants(30, 20);
    EXPECT_THROW(Geometry::scaleImageByPercent(picture, 0, 3, {}), GeometryError);
    EXPECT_THROW(Geometry::stretchImageToFit(picture, {200000, 200000}, false, false, 3, {}), GeometryError);
    EXPECT_THROW(Geometry::copyImage(Picture{}, {}), GeometryError);
    // A 0 % crop draws nothing: only background.
    expectPixel(Geometry::cropImageToFit(picture, {9, 9}, 0, false, 3, blue).image, 5, 5, {0, 0, 255, 255});
}

} // namespace
