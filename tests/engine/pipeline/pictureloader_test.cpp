#include "engine/batch/batchtree.h"

#include "engine/pipeline/outputnaming.h"
#include "engine/pipeline/pictureloader.h"
#include "engine/pipeline/pipelineshrink.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

using namespace quillet;

namespace {

// Shrink-on-load factors for a 4000 x 3000 picture.
TEST(ShrinkTest, ShrinkKeepsTheDecodedPictureAtLeastAsLargeAsItIsDrawn) {
    struct Case {
        int scaleType, width, height, expected, cropPercent = 100;
        bool downOnly = false, nearestNeighbour = false;
    };
    const Case cases[] = {
        // fit 320 x 320: drawn 320 x 240, 12.5 times smaller
        {ScaleType::Fit, 320, 320, 8},
        // exactly half in both: still a shrink of 2; a pixel more than half: none
        {ScaleType::Fit, 2000, 2000, 2},
        {ScaleType::ToWidth, 2001, 0, 1},
        {ScaleType::ToWidth, 1000, 0, 4},
        // stretch: each dimension on its own; the height only halves
        {ScaleType::Stretch, 100, 1500, 2},
        // down-only with a larger box copies the picture
        {ScaleType::Fit, 8000, 8000, 1, 100, true},
        // percent 10 -> 8; 60 -> 1
        {ScaleType::Percent, 10, 0, 8},
        {ScaleType::Percent, 60, 0, 1},
        // crop 100 x 100: the centred 3000 square is drawn 100 wide: shrink 8;
        // at 10 % the 300 square is drawn 100 wide, the picture at a third: 2
        {ScaleType::Crop, 100, 100, 8},
        {ScaleType::Crop, 100, 100, 2, 10},
        {ScaleType::Crop, 100, 100, 1, 5},
        // no sizing, and nearest neighbour, which must see the file's own pixels
        {ScaleType::None, 10, 10, 1},
        {ScaleType::Fit, 10, 10, 1, 100, false, true},
    };
    for (const Case& c : cases) {
        ProcessingParams params = ProcessingParams::defaults();
        params.setInt(ParamKey::ScaleType, c.scaleType);
        params.setInt(ParamKey::Width, c.width);
        params.setInt(ParamKey::Height, c.height);
        params.setInt(ParamKey::ScalePercent, c.width);
        params.setInt(ParamKey::CropAreaPercentage, c.cropPercent);
        params.setBool(ParamKey::ScaleDownOnly, c.downOnly);
        if (c.nearestNeighbour)
            params.setInt(ParamKey::ScaleQuality, ScaleQuality::None);
        EXPECT_EQ(pipelineShrinkFactor(ProcessingRequest::decode(params).sizing, 4000, 3000), c.expected)
            << "type " << c.scaleType << ", " << c.width << " x " << c.height << ", crop " << c.cropPercent;
    }
}

// Loaded with a shrink of 4, which only JPEG honours; the picture keeps its full size as its logical size.
TEST(PictureLoaderTest, EveryInputBecomesEightBitSrgbWithAlphaOnlyWhereItHadOneAndOnlyJpegIsShrunk) {
    QTemporaryDir dir;
    using vips::VImage;
    const auto grey = [](std::vector<double> values, VipsBandFormat format, VipsInterpretation kind) {
        return VImage::black(16, 12, VImage::option()->set("bands", int(values.size())))
            .new_from_image(values)
            .cast(format)
            .copy(VImage::option()->set("interpretation", kind));
    };
    const std::map<QString, std::pair<VImage, int>> inputs = {
        {"grey.png", {grey({200}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W), 16}},
        {"grey16.png", {grey({40000}, VIPS_FORMAT_USHORT, VIPS_INTERPRETATION_GREY16), 16}},
        {"greyalpha.png", {grey({90, 128}, VIPS_FORMAT_UCHAR, VIPS_INTERPRETATION_B_W), 16}},
        {"rgb.jpg",
         {testsupport::solidImage(16, 12, 10, 20, 30).extract_band(0, VImage::option()->set("n", 3)), 4}},
    };
    std::map<QString, std::vector<double>> pixels;
    for (const auto& [name, input] : inputs) {
        SCOPED_TRACE(name.toStdString());
        input.first.write_to_file(QFile::encodeName(dir.filePath(name)).constData());
        const auto loaded = PictureLoader::load(dir.filePath(name), 4);
        ASSERT_EQ(loaded.status, PictureLoader::Status::Loaded);
        EXPECT_EQ(loaded.picture.image.bands(), name == "greyalpha.png" ? 4 : 3);
        EXPECT_EQ(loaded.picture.image.format(), VIPS_FORMAT_UCHAR);
        EXPECT_EQ(loaded.picture.image.width(), input.second);
        EXPECT_EQ(loaded.picture.image.height(), input.second * 3 / 4);
        EXPECT_EQ(loaded.picture.width, 16);
        EXPECT_EQ(loaded.picture.height, 12);
        pixels[name] = testsupport::pixelAt(loaded.picture.image, 1, 1);
    }
    EXPECT_NEAR(pixels["grey.png"][0], 200, 1);
    EXPECT_NEAR(pixels["greyalpha.png"][3], 128, 1);
}

TEST(OutputNamingTest, BaseNameDropsOnlyAPictureExtension) {
    for (const auto& [input, expected] : std::map<QString, QString>{{"/a/IMG_1.JPG", "IMG_1"},
                                                                    {"/a/b.tar.png", "b.tar"},
                                                                    {"/a/scan.raw2", "scan.raw2"},
                                                                    {"/a/photo.HeIc", "photo"},
                                                                    {"/a/.hidden", ".hidden"},
                                                                    {"/a/notes.txt", "notes.txt"},
                                                                    {"/a/noext", "noext"},
                                                                    {"/a/trailing.", "trailing."}})
        EXPECT_EQ(OutputNaming::baseName(input), expected) << qPrintable(input);
}

} // namespace
