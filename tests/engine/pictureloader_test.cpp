#include "batchtree.h"

#include "engine/outputnaming.h"
#include "engine/pictureloader.h"
#include "engine/pipelineshrink.h"
#include "settings/processingparams.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct ShrinkCase {
    int scaleType;
    int width;
    int height;
    int pictureWidth;
    int pictureHeight;
    bool downOnly;
    int expected;
    int cropPercent = 100;
};

class ShrinkTest : public ::testing::TestWithParam<ShrinkCase> {};

TEST_P(ShrinkTest, ShrinkKeepsTheDecodedPictureAtLeastAsLargeAsItIsDrawn) {
    const ShrinkCase c = GetParam();
    ProcessingParams params = ProcessingParams::defaults();
    params.setInt(ParamKey::ScaleType, c.scaleType);
    params.setInt(ParamKey::Width, c.width);
    params.setInt(ParamKey::Height, c.height);
    params.setInt(ParamKey::ScalePercent, c.width);
    params.setInt(ParamKey::CropAreaPercentage, c.cropPercent);
    params.setBool(ParamKey::ScaleDownOnly, c.downOnly);
    EXPECT_EQ(pipelineShrinkFactor(params, c.pictureWidth, c.pictureHeight), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Modes, ShrinkTest,
    ::testing::Values(
        // fit 320 x 320 of 4000 x 3000: drawn 320 x 240, 12.5 times smaller
        ShrinkCase{ScaleType::Fit, 320, 320, 4000, 3000, false, 8},
        // exactly half in both: still a shrink of 2
        ShrinkCase{ScaleType::Fit, 2000, 2000, 4000, 3000, false, 2},
        // a pixel more than half: no shrink
        ShrinkCase{ScaleType::ToWidth, 2001, 0, 4000, 3000, false, 1},
        ShrinkCase{ScaleType::ToWidth, 1000, 0, 4000, 3000, false, 4},
        // stretch: each dimension on its own; the height only halves
        ShrinkCase{ScaleType::Stretch, 100, 1500, 4000, 3000, false, 2},
        // down-only with a larger box copies the picture
        ShrinkCase{ScaleType::Fit, 8000, 8000, 4000, 3000, true, 1},
        // percent 10 -> 8; 60 -> 1
        ShrinkCase{ScaleType::Percent, 10, 0, 4000, 3000, false, 8},
        ShrinkCase{ScaleType::Percent, 60, 0, 4000, 3000, false, 1},
        // crop 100 x 100: the centred 3000 square is drawn 100 wide: shrink 8;
        // at 10 % the 300 square is drawn 100 wide, the picture at a third: 2
        ShrinkCase{ScaleType::Crop, 100, 100, 4000, 3000, false, 8},
        ShrinkCase{ScaleType::Crop, 100, 100, 4000, 3000, false, 2, 10},
        ShrinkCase{ScaleType::Crop, 100, 100, 4000, 3000, false, 1, 5},
        // no sizing
        ShrinkCase{ScaleType::None, 10, 10, 4000, 3000, false, 1}));

TEST(ShrinkTest, NearestNeighbourKeepsTheFilePixels) {
    ProcessingParams params = ProcessingParams::defaults();
    params.setInt(ParamKey::ScaleType, ScaleType::Fit);
    params.setInt(ParamKey::Width, 10);
    params.setInt(ParamKey::Height, 10);
    params.setInt(ParamKey::ScaleQuality, ScaleQuality::None);
    EXPECT_EQ(pipelineShrinkFactor(params, 4000, 3000), 1);
}

TEST(PictureLoaderTest, ShrunkLoadKeepsTheFullSizeAsLogicalSize) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("big.jpg"));
    batchtree::picture(path, 1600, 1200);
    const auto loaded = PictureLoader::load(path, 4);
    ASSERT_EQ(loaded.status, PictureLoader::Status::Loaded);
    EXPECT_EQ(loaded.picture.width, 1600);
    EXPECT_EQ(loaded.picture.height, 1200);
    EXPECT_EQ(loaded.picture.image.width(), 400);
    EXPECT_EQ(loaded.picture.image.height(), 300);
    EXPECT_EQ(loaded.picture.image.bands(), 4);
    EXPECT_EQ(loaded.picture.image.format(), VIPS_FORMAT_UCHAR);
    // The shrink applies to JPEG only.
    const QString png = dir.filePath(QStringLiteral("big.png"));
    batchtree::picture(png, 160, 120);
    EXPECT_EQ(PictureLoader::load(png, 4).picture.image.width(), 160);
}

TEST(PictureLoaderTest, EveryInputBecomesFourBandEightBitSrgb) {
    QTemporaryDir dir;
    const std::vector<std::pair<const char*, vips::VImage>> inputs = {
        {"grey.png", vips::VImage::black(5, 4).new_from_image({200}).cast(VIPS_FORMAT_UCHAR)},
        {"grey16.png", vips::VImage::black(5, 4).new_from_image({40000}).cast(VIPS_FORMAT_USHORT)
                           .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_GREY16))},
        {"greyalpha.png", vips::VImage::black(5, 4, vips::VImage::option()->set("bands", 2))
                              .new_from_image({90, 128}).cast(VIPS_FORMAT_UCHAR)
                              .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W))},
        {"rgb.jpg", testsupport::solidImage(5, 4, 10, 20, 30).extract_band(0, vips::VImage::option()->set("n", 3))},
    };
    for (const auto& [name, image] : inputs) {
        const QString path = dir.filePath(QLatin1String(name));
        image.write_to_file(QFile::encodeName(path).constData());
        const auto loaded = PictureLoader::load(path);
        ASSERT_EQ(loaded.status, PictureLoader::Status::Loaded) << name;
        EXPECT_EQ(loaded.picture.image.bands(), 4) << name;
        EXPECT_EQ(loaded.picture.image.format(), VIPS_FORMAT_UCHAR) << name;
        EXPECT_EQ(loaded.picture.image.width(), 5) << name;
    }
    const auto grey = testsupport::pixelAt(PictureLoader::load(dir.filePath(QStringLiteral("grey.png"))).picture.image, 1, 1);
    EXPECT_NEAR(grey[0], 200, 1);
    EXPECT_NEAR(grey[3], 255, 0);
    const auto alpha =
        testsupport::pixelAt(PictureLoader::load(dir.filePath(QStringLiteral("greyalpha.png"))).picture.image, 1, 1);
    EXPECT_NEAR(alpha[3], 128, 1);
}

TEST(PictureLoaderTest, FilesThatAreNotPicturesOrAreBrokenAreToldApart) {
    QTemporaryDir dir;
    batchtree::text(dir.filePath(QStringLiteral("a.txt")));
    batchtree::text(dir.filePath(QStringLiteral("m.csv")), "1,2\n3,4\n");
    batchtree::text(dir.filePath(QStringLiteral("empty.jpg")), "");
    batchtree::picture(dir.filePath(QStringLiteral("whole.jpg")), 64, 64);
    batchtree::text(dir.filePath(QStringLiteral("cut.jpg")),
                    testsupport::readFile(dir.filePath(QStringLiteral("whole.jpg"))).left(30));
    using S = PictureLoader::Status;
    EXPECT_EQ(PictureLoader::load(dir.filePath(QStringLiteral("a.txt"))).status, S::NotAPicture);
    EXPECT_EQ(PictureLoader::load(dir.filePath(QStringLiteral("m.csv"))).status, S::NotAPicture);
    EXPECT_EQ(PictureLoader::load(dir.filePath(QStringLiteral("empty.jpg"))).status, S::NotAPicture);
    EXPECT_EQ(PictureLoader::load(dir.filePath(QStringLiteral("missing.jpg"))).status, S::NotAPicture);
    EXPECT_NE(PictureLoader::load(dir.filePath(QStringLiteral("cut.jpg"))).status, S::Loaded);
    EXPECT_EQ(PictureLoader::load(dir.filePath(QStringLiteral("whole.jpg"))).status, S::Loaded);
}

TEST(PictureLoaderTest, SharedSamplesLoadAndTheBrokenOnesDoNotCrash) {
    QString canon;
    QUILLET_SAMPLE_OR_SKIP(canon, "Canon_40D.jpg");
    EXPECT_EQ(PictureLoader::load(canon, 2).status, PictureLoader::Status::Loaded);
    for (const char* name : {"corrupted.jpg", "invalid-image01137.jpg", "invalid-image02206.jpg", "IMG_5195.HEIC"})
        PictureLoader::load(testsupport::samplePath(QLatin1String(name)), 2);
}

struct BaseNameCase {
    const char* input;
    const char* expected;
};

class BaseNameTest : public ::testing::TestWithParam<BaseNameCase> {};

TEST_P(BaseNameTest, DropsOnlyAPictureExtension) {
    EXPECT_EQ(OutputNaming::baseName(QLatin1String(GetParam().input)), QLatin1String(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(Names, BaseNameTest,
                         ::testing::Values(BaseNameCase{"/a/IMG_1.JPG", "IMG_1"}, BaseNameCase{"/a/b.tar.png", "b.tar"},
                                           BaseNameCase{"/a/scan.raw2", "scan.raw2"},
                                           BaseNameCase{"/a/photo.HeIc", "photo"},
                                           BaseNameCase{"/a/.hidden", ".hidden"}, BaseNameCase{"/a/notes.txt", "notes.txt"},
                                           BaseNameCase{"/a/noext", "noext"}, BaseNameCase{"/a/trailing.", "trailing."}));

TEST(OutputNamingTest, PathsTakeTheFormatExtensionAndColonsForSlashes) {
    EXPECT_EQ(OutputNaming::outputPathForName(QStringLiteral("a"), QStringLiteral("/o"), FileFormat::Jpeg),
              QStringLiteral("/o/a.jpg"));
    EXPECT_EQ(OutputNaming::outputPathForName(QStringLiteral("2005/02/14"), QStringLiteral("/o/"), FileFormat::Tiff),
              QStringLiteral("/o/2005:02:14.tiff"));
    EXPECT_EQ(OutputNaming::outputPathForName(QStringLiteral("a"), QStringLiteral("/o"), 999), QStringLiteral("/o/a"));
}

TEST(OutputNamingTest, OnlyTheSecondComponentTmpCounts) {
    EXPECT_TRUE(OutputNaming::isUnderTmp(QStringLiteral("/tmp/quillet12/a.jpg")));
    EXPECT_FALSE(OutputNaming::isUnderTmp(QStringLiteral("/home/tmp/a.jpg")));
    EXPECT_FALSE(OutputNaming::isUnderTmp(QStringLiteral("tmp/a.jpg")));
    EXPECT_FALSE(OutputNaming::isUnderTmp(QStringLiteral("/tmpx/a.jpg")));
    EXPECT_TRUE(OutputNaming::wouldOverwriteSource(QStringLiteral("/i/IMG_1.jpg"), QStringLiteral("/i/img_1.JPG")));
    EXPECT_FALSE(OutputNaming::wouldOverwriteSource(QStringLiteral("/i/IMG_1.jpg"), QStringLiteral("/i/IMG_1.jpeg")));
}

} // namespace
