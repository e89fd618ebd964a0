#include "engine/batch/batchtree.h"

#include "engine/pipeline/outputnaming.h"
#include "engine/pipeline/pictureloader.h"
#include "engine/pipeline/pipelineshrink.h"
#include "engine/pipeline/renderfile.h"
#include "settings/processingparams.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <tuple>

using namespace quillet;

namespace {

// Shrink-on-load factors for a 4000 x 3000 picture: the decoder halves at
// most, so that every output of half the size or less shares one decode.
TEST(ShrinkTest, TheDecoderHalvesWhateverIsDrawnAtHalfTheSizeOrLess) {
    struct Case {
        int scaleType, width, height, expected, cropPercent = 100;
        bool downOnly = false, nearestNeighbour = false;
    };
    const Case cases[] = {
        // fit 320 x 320: drawn 320 x 240, 12.5 times smaller, decoded at half
        // like any other output of half the size or less
        {ScaleType::Fit, 320, 320, 2},
        // exactly half in both: still a shrink of 2; a pixel more than half: none
        {ScaleType::Fit, 2000, 2000, 2},
        {ScaleType::ToWidth, 2001, 0, 1},
        {ScaleType::ToWidth, 1000, 0, 2},
        // stretch: each dimension on its own; the height only halves
        {ScaleType::Stretch, 100, 1500, 2},
        // down-only with a larger box copies the picture
        {ScaleType::Fit, 8000, 8000, 1, 100, true},
        {ScaleType::Percent, 10, 0, 2},
        {ScaleType::Percent, 60, 0, 1},
        // crop 100 x 100: the centred 3000 square is drawn 100 wide: 2; at 10 %
        // the 300 square is drawn 100 wide, the picture at a third: 2; at 5 %
        // the 150 square at two thirds: 1
        {ScaleType::Crop, 100, 100, 2},
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
        EXPECT_EQ(pipelineShrinkFactor(ProcessingRequest::fromRecord(params).sizing, 4000, 3000), c.expected)
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

Sizing sizing(int scaleType, int width, int height, int interpolation = ScaleQuality::High) {
    Sizing sizing;
    sizing.scaleType = scaleType;
    sizing.width = width;
    sizing.height = height;
    sizing.percent = width;
    sizing.cropAreaPercentage = 100;
    sizing.interpolation = interpolation;
    return sizing;
}

TEST(ShrinkTest, BoxShrinkLeavesAtLeastTwiceTheDrawnSizeAfterTheDecoder) {
    struct Case {
        Sizing sizing;
        int width, height, decoded, expected;
    };
    const Case cases[] = {
        // 108 MP into 1600: 7.5 times smaller, averaged by 3
        {sizing(ScaleType::Fit, 1600, 1600), 12000, 9000, 1, 3},
        // a JPEG decoded at 1/8 that is still 5 times its drawn size
        {sizing(ScaleType::Fit, 100, 100), 4000, 3000, 8, 2},
        // the decoder's 1/8 leaves less than twice the drawn size
        {sizing(ScaleType::Fit, 320, 320), 4000, 3000, 8, 1},
        {sizing(ScaleType::Percent, 10, 0), 4000, 3000, 1, 5},
        // stretch: the dimension that shrinks least decides
        {sizing(ScaleType::Stretch, 100, 1000), 4000, 3000, 1, 1},
        // a gigapixel panorama into 1600
        {sizing(ScaleType::Fit, 1600, 1600), 40000, 25000, 1, 12},
        // nearest neighbour and copies keep the file's own pixels
        {sizing(ScaleType::Fit, 100, 100, ScaleQuality::None), 4000, 3000, 1, 1},
        {sizing(ScaleType::None, 100, 100), 4000, 3000, 1, 1},
    };
    for (const Case& c : cases)
        EXPECT_EQ(pipelineBoxShrink(c.sizing, c.width, c.height, c.decoded), c.expected)
            << "type " << c.sizing.scaleType << ", " << c.sizing.width << " x " << c.sizing.height << " of "
            << c.width << " x " << c.height << " decoded at 1/" << c.decoded;
}

TEST(PictureLoaderTest, BoxShrinkAveragesColourUnderAlphaWithoutBleedingAndKeepsTheLogicalSize) {
    QTemporaryDir dir;
    using vips::VImage;
    // Opaque red up to x = 30, then fully transparent green: the block of
    // columns 28 to 31 is half red, half nothing.
    const VImage red = testsupport::solidImage(30, 32, 255, 0, 0, 255);
    const VImage clear = testsupport::solidImage(34, 32, 0, 255, 0, 0);
    const QString path = dir.filePath(QStringLiteral("edge.png"));
    red.insert(clear, 30, 0, VImage::option()->set("expand", true))
        .write_to_file(QFile::encodeName(path).constData());
    const auto header = PictureLoader::readHeader(path);
    ASSERT_TRUE(header);
    const auto loaded = PictureLoader::load(path, *header, 1, 4);
    ASSERT_EQ(loaded.status, PictureLoader::Status::Loaded);
    EXPECT_EQ(std::pair(loaded.picture.image.width(), loaded.picture.image.height()), std::pair(16, 8));
    EXPECT_EQ(std::pair(loaded.picture.width, loaded.picture.height), std::pair(64.0, 32.0));
    const std::vector<double> edge = testsupport::pixelAt(loaded.picture.image, 7, 3);
    ASSERT_EQ(edge.size(), 4U);
    EXPECT_GE(edge[0], 250);
    EXPECT_LE(edge[1], 5);
    EXPECT_NEAR(edge[3], 128, 2);
}

// Versions of one file share a decode and average their blocks from it in
// memory; each must get the pixels its own streamed load gets, whatever the
// file holds (alpha is averaged premultiplied, CMYK is converted after the
// average).
TEST(PictureLoaderTest, ASharedDecodeGivesEachBlockAverageThePixelsOfItsOwnLoad) {
    QTemporaryDir dir;
    using vips::VImage;
    const VImage noise = VImage::gaussnoise(96, 64, VImage::option()->set("mean", 128.0)->set("sigma", 50.0))
                             .cast(VIPS_FORMAT_UCHAR);
    const VImage rgb = VImage::bandjoin({noise, noise.rot180(), noise.flip(VIPS_DIRECTION_HORIZONTAL)});
    const std::map<QString, VImage> inputs = {
        {"rgb.jpg", rgb.copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))},
        {"cmyk.jpg", VImage::bandjoin({rgb, noise.flip(VIPS_DIRECTION_VERTICAL)})
                         .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK))},
        {"alpha.png", VImage::bandjoin({rgb, noise})
                          .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))},
    };
    for (const auto& [name, image] : inputs) {
        SCOPED_TRACE(name.toStdString());
        const QString path = dir.filePath(name);
        image.write_to_file(QFile::encodeName(path).constData());
        const auto header = PictureLoader::readHeader(path);
        ASSERT_TRUE(header);
        const int shrink = header->isJpeg ? 2 : 1;
        const PictureLoader::Decode decode(path, *header, shrink);
        ASSERT_EQ(decode.status(), PictureLoader::Status::Loaded);
        for (const int box : {1, 2, 3}) {
            const VImage shared = decode.picture(box).picture.image;
            const VImage own = PictureLoader::load(path, *header, shrink, box).picture.image;
            ASSERT_EQ(std::tuple(shared.width(), shared.height(), shared.bands()),
                      std::tuple(own.width(), own.height(), own.bands()))
                << "box " << box;
            EXPECT_EQ((shared.cast(VIPS_FORMAT_INT) - own).abs().max(), 0.0) << "box " << box;
        }
    }
    // Cut files: every version gets what its own load gets.
    for (const char* name : {"rgb.jpg", "alpha.png"}) {
        SCOPED_TRACE(name);
        QByteArray bytes = testsupport::readFile(dir.filePath(QLatin1String(name)));
        bytes.truncate(bytes.size() / 3);
        const QString broken = dir.filePath(QStringLiteral("broken-") + QLatin1String(name));
        ASSERT_TRUE(testsupport::writeFile(broken, bytes));
        const auto header = PictureLoader::readHeader(broken);
        ASSERT_TRUE(header);
        const PictureLoader::Decode decode(broken, *header, 1);
        const auto own = PictureLoader::load(broken, *header, 1, 2);
        const auto shared = decode.picture(2);
        ASSERT_EQ(shared.status, own.status);
        if (own.status == PictureLoader::Status::Loaded) {
            EXPECT_EQ((shared.picture.image.cast(VIPS_FORMAT_INT) - own.picture.image).abs().max(), 0.0);
        }
    }
}

// A large non-JPEG picture goes through the box shrink; what comes out must
// still sit where a reduction of the whole picture puts it.
TEST(PictureLoaderTest, BoxShrunkPictureDrawsWithinATolerableDistanceOfTheFullDecode) {
    QTemporaryDir dir;
    using vips::VImage;
    // Squares of 60 pixels: a shift of half an output pixel would show all
    // along their edges.
    const VImage xy = VImage::xyz(1200, 900);
    const VImage column = (xy.extract_band(0) / 60).floor();
    const VImage row = (xy.extract_band(1) / 60).floor();
    const VImage squares = (column + row).remainder_const({2}).linear(180, 40).cast(VIPS_FORMAT_UCHAR);
    const VImage picture = VImage::bandjoin({squares, squares.linear(-1, 255), squares})
                               .cast(VIPS_FORMAT_UCHAR)
                               .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB));
    ASSERT_EQ(picture.bands(), 3);
    const QString path = dir.filePath(QStringLiteral("squares.png"));
    picture.write_to_file(QFile::encodeName(path).constData());

    RenderSettings settings;
    settings.request.sizing = sizing(ScaleType::Fit, 100, 100);
    settings.request.output.format = FileFormat::Png;
    ASSERT_EQ(pipelineBoxShrink(settings.request.sizing, 1200, 900, 1), 6);
    const RenderedFile rendered = renderFile(path, settings);
    ASSERT_EQ(rendered.status, RenderedFile::Rendered);
    const VImage drawn =
        VImage::new_from_buffer(rendered.bytes.constData(), size_t(rendered.bytes.size()), "");
    ASSERT_EQ(std::pair(drawn.width(), drawn.height()), std::pair(100, 75));
    const VImage reference = picture.resize(1.0 / 12, VImage::option()->set("kernel", VIPS_KERNEL_LANCZOS3));
    ASSERT_EQ(drawn.bands(), reference.bands());
    EXPECT_LT((drawn.cast(VIPS_FORMAT_FLOAT) - reference).abs().avg(), 2.0);
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
