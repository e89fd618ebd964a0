#include "engine/geometry/resampler.h"

#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using namespace quillet;

using Resampler::AxisMap;
using testsupport::busyPicture;
using testsupport::bytesOf;
using vips::VImage;

namespace {

VImage resampled(const VImage& image, const AxisMap& x, const AxisMap& y, int interpolation = 3) {
    const auto out = Resampler::resample(image, x, y, interpolation);
    EXPECT_TRUE(out.has_value());
    return out ? *out : VImage();
}

// The whole picture into out x out pixels.
AxisMap whole(int in, int out) {
    return {0, double(out) / in, 0, out};
}

double meanDifference(const VImage& a, const VImage& b) {
    return (a.cast(VIPS_FORMAT_FLOAT) - b).abs().avg();
}

} // namespace

TEST(Resampler, VectorAndPortablePassesGiveTheSameBytes) {
    struct Case {
        int bands, width, height;
        AxisMap x, y;
        int interpolation;
    };
    const Case cases[] = {
        {3, 301, 203, whole(301, 641), whole(203, 77), 3},                // wider, shorter
        {4, 301, 203, whole(301, 97), whole(203, 505), 3},                // narrower, taller
        {3, 640, 480, whole(640, 1600), whole(480, 1200), 3},             // the 2.5 x enlargement
        {3, 257, 131, {10.25, 0.37, 3.5, 90}, {7.5, 0.61, -2.25, 70}, 2}, // a crop with offsets
        {4, 33, 17, whole(33, 5), whole(17, 3), 3},                       // odd tap counts, tiny output
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.bands << " bands " << c.x.outSize << " x " << c.y.outSize);
        const VImage input = busyPicture(c.width, c.height, c.bands);
        Resampler::useVectorUnits(Resampler::VectorUnits::None);
        const auto portable = bytesOf(resampled(input, c.x, c.y, c.interpolation));
        for (const auto units : {Resampler::VectorUnits::Sse2, Resampler::VectorUnits::Avx2}) {
            Resampler::useVectorUnits(units);
            EXPECT_TRUE(bytesOf(resampled(input, c.x, c.y, c.interpolation)) == portable) << int(units);
        }
    }
}

TEST(Resampler, FlatPicturesStayFlatToTheEdgesAtAnyScale) {
    for (const auto& [width, height, outWidth, outHeight] :
         {std::tuple{1, 1, 40, 30}, {300, 200, 8, 5}, {7, 90, 260, 3}, {64, 48, 64, 48}, {3, 2, 1, 1}}) {
        SCOPED_TRACE(testing::Message()
                     << width << " x " << height << " to " << outWidth << " x " << outHeight);
        const VImage flat = testsupport::solidImage(width, height, 200, 37, 1).copy_memory();
        for (int interpolation : {0, 2, 3}) {
            const VImage out =
                resampled(flat, whole(width, outWidth), whole(height, outHeight), interpolation);
            ASSERT_EQ(out.width(), outWidth);
            ASSERT_EQ(out.height(), outHeight);
            EXPECT_EQ(out.bands(), 4);
            const VImage expected = testsupport::solidImage(outWidth, outHeight, 200, 37, 1);
            EXPECT_EQ((out.cast(VIPS_FORMAT_INT) - expected).abs().max(), 0)
                << "interpolation " << interpolation;
        }
    }
}

TEST(Resampler, WholePixelShiftsCopyAndEdgesRepeat) {
    const VImage input = busyPicture(40, 30, 3);
    // Scale one, moved right by 5 and up by 2 pixels.
    const VImage out = resampled(input, {0, 1, 5, 40}, {2, 1, 0, 30});
    const VImage expected = input.extract_area(0, 2, 35, 28);
    EXPECT_EQ((out.extract_area(5, 0, 35, 28).cast(VIPS_FORMAT_INT) - expected).abs().max(), 0);
    // Left of the picture, its first column repeats.
    EXPECT_EQ(
        (out.extract_area(0, 0, 5, 28).cast(VIPS_FORMAT_INT) - expected.extract_area(0, 0, 1, 28).zoom(5, 1))
            .abs()
            .max(),
        0);
}

TEST(Resampler, AgreesWithLibvipsKernels) {
    // Photographic texture: noise softened to a few pixels' grain.
    const VImage input = busyPicture(600, 400, 3).gaussblur(1.5).cast(VIPS_FORMAT_UCHAR).copy_memory();
    // Reduction: lanczos3 against libvips's reduce.
    const double k = 0.3;
    const VImage ours = resampled(input, whole(input.width(), int(std::lround(input.width() * k))),
                                  whole(input.height(), int(std::lround(input.height() * k))));
    const VImage theirs = input.resize(k, VImage::option()->set("kernel", VIPS_KERNEL_LANCZOS3));
    ASSERT_EQ(ours.width(), theirs.width());
    EXPECT_LT(meanDifference(ours, theirs.crop(0, 0, ours.width(), ours.height())), 1.0);
    // Enlargement: Catmull-Rom against libvips's bicubic interpolator.
    const VImage small = input.extract_area(0, 0, 120, 90).copy_memory();
    const VImage bigger = resampled(small, whole(120, 300), whole(90, 225));
    const VImage reference =
        small.affine({2.5, 0, 0, 2.5}, VImage::option()
                                           ->set("interpolate", vips::VInterpolate::new_from_name("bicubic"))
                                           ->set("idx", 0.5)
                                           ->set("idy", 0.5)
                                           ->set("odx", -0.5)
                                           ->set("ody", -0.5)
                                           ->set("oarea", std::vector<int>{0, 0, 300, 225})
                                           ->set("extend", VIPS_EXTEND_COPY));
    EXPECT_LT(meanDifference(bigger, reference), 1.0);
}

// A picture still to be computed is read in strips, once, top to bottom; the
// bytes must be those of the same picture held in memory, for both orders of
// the passes and for maps that start inside the picture (crops).
TEST(Resampler, PicturesReadInStripsGiveTheBytesOfPicturesInMemory) {
    struct Case {
        int width, height;
        AxisMap x, y;
    };
    const Case cases[] = {
        {900, 700, whole(900, 320), whole(700, 249)},           // reduction: vertical pass first
        {300, 200, whole(300, 750), whole(200, 500)},           // enlargement: horizontal pass first
        {900, 700, {150.5, 0.4, 0, 200}, {260.25, 0.4, 0, 90}}, // a crop from the middle
        {900, 700, whole(900, 901), whole(700, 233)},           // wider but shorter
    };
    const QTemporaryDir dir;
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << c.width << " x " << c.height << " to " << c.x.outSize << " x " << c.y.outSize);
        const VImage picture = busyPicture(c.width, c.height, 3);
        // Read back from a file opened for one pass, as the batch opens pictures.
        const QString path = dir.filePath(QStringLiteral("busy.png"));
        picture.write_to_file(QFile::encodeName(path).constData());
        const VImage streamed = VImage::new_from_file(
            QFile::encodeName(path).constData(), VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL));
        EXPECT_EQ(bytesOf(resampled(streamed, c.x, c.y)), bytesOf(resampled(picture, c.x, c.y)));
    }
}
