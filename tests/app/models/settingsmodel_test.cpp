#include "app/models/settingsmodel.h"
#include "app/partedit.h"
#include "testsupport.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;
namespace K = ParamKey;

namespace {

using Page = SizingModel::Page;
using guitest::edit;

ProcessingParams recordOf(const SettingsModel& model) {
    ProcessingParams p = model.record();
    p.remove(K::Name);
    return p;
}

QString writeMark(const QTemporaryDir& dir) {
    const QString mark = dir.filePath(QStringLiteral("mark.png"));
    testsupport::solidImage(8, 8, 10, 20, 30).write_to_file(mark.toUtf8().constData());
    return mark;
}

} // namespace

TEST(SettingsModel, ResetWindowGivesTheDefaultRecord) {
    SettingsModel model;
    ProcessingParams expected = ProcessingParams::defaults();
    expected.remove(K::Name);
    expected.setBool(K::PreserveTransparency, false); // left as the box stood, unticked at start
    EXPECT_EQ(recordOf(model).values(), expected.values());
}

// Which fields each sizing mode enables, and what they hold once chosen from
// a window whose fields held 0 and 1.
struct ModeCase {
    int type;
    Page page;
    int width, height, crop;
    bool widthOn, heightOn, cropOn, flip, downOnly;
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
    model.load(start);
    SizingModel& sizing = model.sizing();
    edit(sizing, [](Sizing& s) { s.width = 1; }); // a value below 2 typed into an enabled field
    sizing.chooseMode(c.type);
    EXPECT_EQ(sizing.page(), c.page);
    EXPECT_EQ(sizing.widthEnabled(), c.widthOn);
    EXPECT_EQ(sizing.heightEnabled(), c.heightOn);
    EXPECT_EQ(sizing.cropEnabled(), c.cropOn);
    EXPECT_EQ(sizing.flipEnabled(), c.flip);
    EXPECT_EQ(sizing.downOnlyEnabled(), c.downOnly);
    const ProcessingParams record = model.record();
    EXPECT_EQ(record.intValue(K::Width), c.width);
    EXPECT_EQ(record.intValue(K::Height), c.height);
    EXPECT_EQ(record.intValue(K::CropAreaPercentage), c.crop);
    if (c.type == ScaleType::Percent) {
        EXPECT_EQ(record.intValue(K::ScalePercent), 100);
    }
}

INSTANTIATE_TEST_SUITE_P(
    AllModes, SettingsModelModes,
    ::testing::Values(ModeCase{ScaleType::None, Page::None, 0, 0, 0, false, false, false, false, true},
                      ModeCase{ScaleType::ToWidth, Page::Sizes, 480, 0, 0, true, false, false, false, true},
                      ModeCase{ScaleType::ToHeight, Page::Sizes, 0, 480, 0, false, true, false, false, true},
                      ModeCase{ScaleType::Fit, Page::Sizes, 480, 480, 0, true, true, false, true, true},
                      ModeCase{ScaleType::Crop, Page::Sizes, 480, 480, 100, true, true, true, true, true},
                      ModeCase{ScaleType::Stretch, Page::Sizes, 480, 480, 0, true, true, false, true, true},
                      // the percent page leaves the size fields as they were
                      ModeCase{ScaleType::Percent, Page::Percent, 1, 480, 0, false, false, false, false,
                               false},
                      ModeCase{ScaleType::Fill, Page::Sizes, 480, 480, 0, true, true, false, true, true}));

TEST(SettingsModel, UnknownModeAndDisabledFieldsChangeNothing) {
    SettingsModel model;
    SizingModel& sizing = model.sizing();
    edit(sizing, [](Sizing& s) { s.scaleType = ScaleType::Fit; });
    edit(sizing, [](Sizing& s) { s.width = 640; });
    edit(sizing, [](Sizing& s) { s.scaleType = 9; });
    EXPECT_EQ(sizing.value().scaleType, ScaleType::Fit);
    EXPECT_EQ(sizing.value().width, 640);
    edit(sizing, [](Sizing& s) { s.cropAreaPercentage = 50; }); // crop is off under Fit
    EXPECT_EQ(sizing.value().cropAreaPercentage, 0);
}

// A record from the controls, loaded back, gives the same controls: for each
// mode and format, with every kind of value set away from its default.
class SettingsModelRoundTrip : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(SettingsModelRoundTrip, LoadsBackTheSameControls) {
    const auto [type, format] = GetParam();
    QTemporaryDir dir;
    const QString mark = writeMark(dir);

    SettingsModel model;
    model.sizing().setRotation(Rotation::Automatic);
    edit(model.sizing(), [type = type](Sizing& s) { s.scaleType = type; });
    edit(model.sizing(), [](Sizing& s) {
        s.width = 800;
        s.height = 600;
        s.cropAreaPercentage = 70;
        s.percent = 35;
        s.flipForPortrait = true;
        s.downOnly = true;
        s.interpolation = ScaleQuality::Low;
    });
    edit(model.output(), [](OutputSettings& o) { o.preserveHeader = false; });
    edit(model.output(), [](OutputSettings& o) {
        o.resolution = 300;
        o.jpegQuality = 64;
        o.hasSizeLimit = true;
    });
    edit(model.output(), [](OutputSettings& o) {
        o.sizeLimit = 250;
        o.preserveTransparency = true;
        o.background = {0.25, 0.5, 0.75, 1};
    });
    model.watermarks().setPicture(mark);
    edit(model.watermarks(), [](WatermarkSettings& w) {
        w.image.location = 4;
        w.image.opacity = 40;
        w.text.enabled = true;
        w.text.background = {0, 0, 0, 0.3};
        w.text.size = 4;
        w.text.style = TextStyle::BlackGlow;
    });
    for (int code : {12, 0, 5})
        model.watermarks().setFieldTicked(code, true);
    edit(model.output(), [format = format](OutputSettings& o) { o.format = format; });
    const ProcessingParams first = model.record();

    SettingsModel other;
    other.load(first);
    EXPECT_EQ(other.record().values(), first.values());
    EXPECT_EQ(other.value(), model.value());
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
    old.setColor(K::BackgroundColor, {1, 0, 0, 1});
    model.load(old);
    EXPECT_EQ(model.watermarks().value().text.background, RgbaColor::white(0.4));
    EXPECT_EQ(model.output().value().sizeLimit, 100);
    EXPECT_TRUE(model.output().sizeLimitEnabled());
    EXPECT_EQ(model.output().value().resolution, 72);
    EXPECT_TRUE(model.output().resolutionEnabled());
    // Every key missing: no limit, a clear band, and the well keeps its colour.
    model.load(ProcessingParams());
    EXPECT_EQ(model.watermarks().value().text.background, RgbaColor::white(0.0));
    EXPECT_FALSE(model.output().sizeLimitEnabled());
    EXPECT_EQ(model.record().intValue(K::SizeLimit), 0);
    EXPECT_EQ(model.output().value().background, (RgbaColor{1, 0, 0, 1}));
}

TEST(SettingsModel, KeptMetadataPinsOnlyAJpegsResolution) {
    SettingsModel model;
    OutputModel& output = model.output();
    EXPECT_EQ(output.value().resolution, 72);
    EXPECT_FALSE(output.resolutionEnabled());
    edit(output, [](OutputSettings& o) { o.preserveHeader = false; });
    edit(output, [](OutputSettings& o) { o.resolution = 300; });
    edit(output, [](OutputSettings& o) { o.preserveHeader = true; });
    EXPECT_EQ(model.record().intValue(K::Resolution), 72);
    edit(output, [](OutputSettings& o) { o.resolution = 150; }); // typed while pinned: ignored
    // PNG and TIFF keep the chosen resolution with the box still ticked.
    for (int format : {FileFormat::Png, FileFormat::Tiff}) {
        edit(output, [format](OutputSettings& o) { o.format = format; });
        EXPECT_TRUE(output.resolutionEnabled());
        EXPECT_EQ(model.record().intValue(K::Resolution), 300);
    }
    edit(output, [](OutputSettings& o) { o.format = FileFormat::Jpeg; });
    EXPECT_EQ(output.value().resolution, 72);
    edit(output, [](OutputSettings& o) { o.preserveHeader = false; });
    EXPECT_EQ(output.value().resolution, 300);

    // A record keeps its resolution to restore even while the header pins 72.
    ProcessingParams p = ProcessingParams::defaults();
    p.setInt(K::Resolution, 150);
    model.load(p);
    EXPECT_EQ(output.value().resolution, 72);
    edit(output, [](OutputSettings& o) { o.preserveHeader = false; });
    EXPECT_EQ(output.value().resolution, 150);
    edit(output, [](OutputSettings& o) { o.resolution = 0; }); // the field emptied for typing
    EXPECT_FALSE(model.isStorable());
    EXPECT_EQ(model.request().output.resolution, 72);
    EXPECT_EQ(output.value().resolution, 72); // set back in the field too
}

TEST(SettingsModel, SizeLimitFieldFollowsItsSwitch) {
    SettingsModel model;
    OutputModel& output = model.output();
    edit(output, [](OutputSettings& o) { o.sizeLimit = 300; }); // off: ignored
    EXPECT_EQ(output.value().sizeLimit, 0);
    edit(output, [](OutputSettings& o) { o.hasSizeLimit = true; });
    EXPECT_EQ(output.value().sizeLimit, 100);
    edit(output, [](OutputSettings& o) { o.sizeLimit = 40; });
    EXPECT_EQ(model.request().output.sizeLimitBytes(), 40 * 1024);
    edit(output, [](OutputSettings& o) { o.hasSizeLimit = false; });
    EXPECT_EQ(model.request().output.sizeLimitBytes(), 0);
}

TEST(SettingsModel, BackgroundFollowsFormatAndTransparency) {
    SettingsModel model;
    OutputModel& output = model.output();
    edit(output, [](OutputSettings& o) { o.preserveTransparency = true; });
    EXPECT_TRUE(output.backgroundEnabled()); // JPEG always flattens
    EXPECT_TRUE(model.value().output.canvasBackground());
    edit(output, [](OutputSettings& o) { o.format = FileFormat::Png; });
    EXPECT_FALSE(output.backgroundEnabled());
    EXPECT_FALSE(model.value().output.canvasBackground());
    EXPECT_EQ(output.page(), OutputModel::Page::Transparency);
    edit(output, [](OutputSettings& o) { o.preserveTransparency = false; });
    EXPECT_TRUE(output.backgroundEnabled());
}

TEST(SettingsModel, WatermarkThatNoLongerLoadsIsClearedButSwitchKept) {
    QTemporaryDir dir;
    const QString mark = writeMark(dir);
    SettingsModel model;
    WatermarkModel& watermarks = model.watermarks();
    edit(watermarks, [](WatermarkSettings& w) { w.image.opacity = 0; });
    watermarks.setPicture(mark);
    EXPECT_TRUE(watermarks.value().enabled);
    EXPECT_TRUE(watermarks.value().image.enabled);
    EXPECT_EQ(watermarks.value().image.opacity, 100); // 0 would draw nothing
    edit(watermarks, [](WatermarkSettings& w) {
        w.image.location = 6;
        w.image.opacity = 55;
    });
    const ProcessingParams record = model.record();

    QFile::remove(mark);
    edit(watermarks, [](WatermarkSettings& w) { w.image.opacity = 20; });
    model.load(record);
    EXPECT_TRUE(watermarks.value().enabled);
    EXPECT_TRUE(watermarks.value().image.path.isEmpty());
    EXPECT_FALSE(watermarks.canRemovePicture());
    EXPECT_EQ(watermarks.value().image.location, WatermarkModel::FirstLocation);
    EXPECT_EQ(watermarks.value().image.opacity, 20); // the field as it stood
    EXPECT_FALSE(model.record().contains(QLatin1String(K::WatermarkPath)));

    watermarks.setPicture(QStringLiteral("/elsewhere.png"));
    watermarks.removePicture();
    EXPECT_FALSE(watermarks.value().enabled);
    EXPECT_FALSE(watermarks.value().image.enabled);
}

TEST(SettingsModel, ResetKeepsTransparencyAndOpacityAndSignalsOnce) {
    SettingsModel model;
    edit(model.output(), [](OutputSettings& o) { o.preserveTransparency = true; });
    edit(model.watermarks(), [](WatermarkSettings& w) { w.image.opacity = 30; });
    edit(model.sizing(), [](Sizing& s) { s.scaleType = ScaleType::Fit; });
    QSignalSpy changes(&model, &SettingsModel::changed);
    model.reset();
    EXPECT_EQ(changes.count(), 1);
    EXPECT_TRUE(model.output().value().preserveTransparency);
    EXPECT_EQ(model.watermarks().value().image.opacity, 30);
    EXPECT_EQ(model.sizing().value().scaleType, ScaleType::None);
    EXPECT_EQ(model.sizing().value().width, 0);
    EXPECT_FALSE(model.sizing().widthEnabled());
}
