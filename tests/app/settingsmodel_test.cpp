#include "app/settingsmodel.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;
namespace K = ParamKey;

namespace {

using Field = SettingsModel::Field;
using Page = SettingsModel::SizePage;

ProcessingParams recordOf(SettingsModel& model) {
    ProcessingParams p = model.currentSetting();
    p.remove(K::Name);
    return p;
}

} // namespace

TEST(SettingsModel, ResetWindowGivesTheDefaultRecord) {
    SettingsModel model;
    ProcessingParams expected = ProcessingParams::defaults();
    expected.remove(K::Name);
    expected.setBool(K::PreserveTransparency, false); // left as the box stood, unticked at start
    EXPECT_EQ(recordOf(model).values(), expected.values());
    EXPECT_FALSE(model.canStorePreset());
}

// Which fields each sizing mode enables, and what they hold once chosen from
// a window whose fields held 0 and 1.
struct ModeCase {
    int type;
    Page page;
    Field width, height, crop;
    bool flip;
    bool downOnly;
};

class SettingsModelModes : public ::testing::TestWithParam<ModeCase> {};

TEST_P(SettingsModelModes, EnableExactlyTheirFields) {
    const ModeCase c = GetParam();
    SettingsModel model;
    ProcessingParams start = ProcessingParams::defaults();
    start.setInt(K::ScaleType, ScaleType::Stretch);
    start.setInt(K::Width, 1);
    start.setInt(K::Height, 0);
    start.setInt(K::ScalePercent, 1);
    model.loadPreset(start);
    model.setWidth(1); // a value below 2 typed into an enabled field
    model.selectScaleType(c.type);
    EXPECT_EQ(model.sizePage(), c.page);
    EXPECT_EQ(model.width(), c.width);
    EXPECT_EQ(model.height(), c.height);
    EXPECT_EQ(model.cropArea(), c.crop);
    EXPECT_EQ(model.flipEnabled(), c.flip);
    EXPECT_EQ(model.scaleDownOnlyEnabled(), c.downOnly);
    const ProcessingParams record = model.currentSetting();
    EXPECT_EQ(record.intValue(K::Width), c.width.value);
    EXPECT_EQ(record.intValue(K::Height), c.height.value);
    EXPECT_EQ(record.intValue(K::CropAreaPercentage), c.crop.value);
    if (c.type == ScaleType::Percent) {
        EXPECT_EQ(record.intValue(K::ScalePercent), 100);
    }
}

INSTANTIATE_TEST_SUITE_P(
    AllModes, SettingsModelModes,
    ::testing::Values(
        ModeCase{ScaleType::None, Page::None, {0, false}, {0, false}, {0, false}, false, true},
        ModeCase{ScaleType::ToWidth, Page::Sizes, {480, true}, {0, false}, {0, false}, false, true},
        ModeCase{ScaleType::ToHeight, Page::Sizes, {0, false}, {480, true}, {0, false}, false, true},
        ModeCase{ScaleType::Fit, Page::Sizes, {480, true}, {480, true}, {0, false}, true, true},
        ModeCase{ScaleType::Crop, Page::Sizes, {480, true}, {480, true}, {100, true}, true, true},
        ModeCase{ScaleType::Stretch, Page::Sizes, {480, true}, {480, true}, {0, false}, true, true},
        // the percent page leaves the size fields as they were
        ModeCase{ScaleType::Percent, Page::Percent, {1, true}, {480, true}, {0, false}, true, false},
        ModeCase{ScaleType::Fill, Page::Sizes, {480, true}, {480, true}, {0, false}, true, true}));

TEST(SettingsModel, UnknownModeChangesNothing) {
    SettingsModel model;
    model.selectScaleType(ScaleType::Fit);
    model.setWidth(640);
    model.selectScaleType(9);
    EXPECT_EQ(model.scaleType(), ScaleType::Fit);
    EXPECT_EQ(model.width(), (Field{640, true}));
}

// A record from the controls, loaded back, gives the same controls: for each
// mode and format, with every kind of value set away from its default.
class SettingsModelRoundTrip : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(SettingsModelRoundTrip, LoadsBackTheSameControls) {
    const auto [type, format] = GetParam();
    QTemporaryDir dir;
    const QString mark = dir.filePath(QStringLiteral("mark.png"));
    testsupport::solidImage(8, 8, 10, 20, 30).write_to_file(mark.toUtf8().constData());

    SettingsModel model;
    model.selectRotation(Rotation::Automatic);
    model.selectScaleType(type);
    model.setWidth(800);
    model.setHeight(600);
    model.setCropArea(70);
    model.setScalePercent(35);
    model.setFlipRatio(true);
    model.setScaleDownOnly(true);
    model.selectScaleQuality(ScaleQuality::Low);
    model.setPreserveHeader(false);
    model.setResolution(300);
    model.setJpegQuality(64);
    model.setHasSizeLimit(true);
    model.setSizeLimit(250);
    model.setPreserveTransparency(true);
    model.setBackgroundColor({0.25, 0.5, 0.75, 1});
    model.setWatermarkImage(mark);
    model.selectWatermarkLocation(4);
    model.setWatermarkOpacity(40);
    model.setTextWatermarkEnabled(true);
    model.setTextBackgroundColor({0, 0, 0, 0.3});
    model.selectTextSize(4);
    model.selectTextStyle(TextStyle::BlackGlow);
    for (int code : {12, 0, 5})
        model.setTextFieldTicked(code, true);
    model.selectFormat(format);
    const ProcessingParams first = model.currentSetting();

    SettingsModel other;
    other.loadPreset(first);
    EXPECT_EQ(other.currentSetting().values(), first.values());
    EXPECT_TRUE(other.canStorePreset());
    EXPECT_EQ(first.intList(K::DynWatermarkFields), (QList<int>{0, 5, 12})); // cell order
}

INSTANTIATE_TEST_SUITE_P(ModesAndFormats, SettingsModelRoundTrip,
                         ::testing::Combine(::testing::Range(1, 9),
                                            ::testing::Values(FileFormat::Jpeg, FileFormat::Png,
                                                              FileFormat::Tiff)));

TEST(SettingsModel, OldAndEmptyRecordsLoadWithTheirFallbacks) {
    SettingsModel model;
    ProcessingParams old;
    old.setInt(K::DynWatermarkBackgroundOpacity, 40);
    old.setBool(K::HasFizeLimit, true);
    old.setInt(K::SizeLimit, 0);
    old.setInt(K::Resolution, 0);
    old.setBool(K::PreserveHeader, false);
    model.loadPreset(old);
    EXPECT_EQ(model.textBackgroundColor(), RgbaColor::white(0.4));
    EXPECT_EQ(model.sizeLimit(), (Field{100, true}));
    EXPECT_EQ(model.resolution(), (Field{72, true}));
    // Every key missing: scale type 0 is unknown and changes nothing.
    model.loadPreset(ProcessingParams());
    EXPECT_EQ(model.textBackgroundColor(), RgbaColor::white(0.0));
    EXPECT_EQ(model.sizeLimit(), (Field{0, false}));
    EXPECT_EQ(model.currentSetting().intValue(K::SizeLimit), 0);
}

TEST(SettingsModel, PreserveHeaderPinsResolutionAndRestoresIt) {
    SettingsModel model;
    EXPECT_EQ(model.resolution(), (Field{72, false}));
    model.setPreserveHeader(false);
    model.setResolution(300);
    model.setPreserveHeader(true);
    EXPECT_EQ(model.currentSetting().intValue(K::Resolution), 72);
    model.setPreserveHeader(false);
    EXPECT_EQ(model.resolution(), (Field{300, true}));
    // A record keeps its resolution to restore even while the header pins 72.
    ProcessingParams p = ProcessingParams::defaults();
    p.setInt(K::Resolution, 150);
    model.loadPreset(p);
    EXPECT_EQ(model.resolution(), (Field{72, false}));
    model.setPreserveHeader(false);
    EXPECT_EQ(model.resolution().value, 150);
    model.setResolution(0);
    EXPECT_EQ(model.currentSetting().intValue(K::Resolution), 72);
    EXPECT_EQ(model.resolution().value, 72); // set back in the field too
}

TEST(SettingsModel, BackgroundFollowsFormatAndTransparency) {
    SettingsModel model;
    model.setPreserveTransparency(true);
    EXPECT_TRUE(model.backgroundEnabled()); // JPEG always flattens
    model.selectFormat(FileFormat::Png);
    EXPECT_FALSE(model.backgroundEnabled());
    EXPECT_EQ(model.formatPage(), SettingsModel::FormatPage::Transparency);
    model.setPreserveTransparency(false);
    EXPECT_TRUE(model.backgroundEnabled());
}

TEST(SettingsModel, WatermarkThatNoLongerLoadsIsClearedButSwitchKept) {
    QTemporaryDir dir;
    const QString mark = dir.filePath(QStringLiteral("mark.png"));
    testsupport::solidImage(8, 8, 1, 2, 3).write_to_file(mark.toUtf8().constData());
    SettingsModel model;
    model.setWatermarkOpacity(0);
    model.setWatermarkImage(mark);
    EXPECT_TRUE(model.watermarkEnabled());
    EXPECT_TRUE(model.imageWatermarkEnabled());
    EXPECT_EQ(model.watermarkOpacity(), 100); // 0 would draw nothing
    model.selectWatermarkLocation(6);
    ProcessingParams record = model.currentSetting();

    QFile::remove(mark);
    model.loadPreset(record);
    EXPECT_TRUE(model.watermarkEnabled());
    EXPECT_TRUE(model.watermarkPath().isEmpty());
    EXPECT_FALSE(model.canClearWatermark());
    EXPECT_EQ(model.watermarkLocation(), SettingsModel::FirstLocation);
    EXPECT_FALSE(model.currentSetting().contains(QLatin1String(K::WatermarkPath)));

    model.setWatermarkImage(QStringLiteral("/elsewhere.png"));
    model.removeWatermark();
    EXPECT_FALSE(model.watermarkEnabled());
    EXPECT_FALSE(model.imageWatermarkEnabled());
}

TEST(SettingsModel, ResetForgetsThePresetButNotTransparencyOrOpacity) {
    SettingsModel model;
    model.setPreserveTransparency(true);
    model.setWatermarkOpacity(30);
    model.selectScaleType(ScaleType::Fit);
    model.loadPreset(ProcessingParams::defaults());
    EXPECT_TRUE(model.canStorePreset());
    model.setPreserveTransparency(true);
    model.setWatermarkOpacity(30);
    model.loadPreset(std::nullopt);
    EXPECT_FALSE(model.canStorePreset());
    EXPECT_TRUE(model.preserveTransparency());
    EXPECT_EQ(model.watermarkOpacity(), 30);
    EXPECT_EQ(model.scaleType(), ScaleType::None);
    EXPECT_EQ(model.width(), (Field{0, false}));
}
