#include "app/guitest.h"

#include <QDirIterator>
#include <QProcess>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class CurrentSettingTest : public GuiTest, public ::testing::WithParamInterface<int> {};

// The window's settings are the store's: a batch set up through the controls
// comes out exactly as the command-line tool makes it from the same store.
TEST_P(CurrentSettingTest, WindowBatchMatchesTheCommandLineWithTheSameStore) {
    QDir().mkpath(in());
    makePictures(in(QStringLiteral("square")), 2, 40);
    testsupport::solidImage(30, 70, 200, 40, 10)
        .extract_band(0, vips::VImage::option()->set("n", 3))
        .jpegsave(in(QStringLiteral("portrait.jpg")).toLocal8Bit().constData());
    QFile::copy(testsupport::projectSamplesDir() + QStringLiteral("/Canon_40D.jpg"),
                in(QStringLiteral("c.jpg")));

    SettingsModel& model = models->settings();
    SizingModel& sizing = model.sizing();
    edit(sizing, [](Sizing& s) { s.scaleType = GetParam(); });
    edit(sizing, [&sizing](Sizing& s) {
        s.width = 36;
        s.height = 24;
        s.cropAreaPercentage = 80;
        s.percent = 150;
        s.flipForPortrait = sizing.flipEnabled();
        s.downOnly = GetParam() == ScaleType::Fit;
    });
    sizing.setRotation(Rotation::Automatic);
    edit(model.output(), [](OutputSettings& o) {
        o.format = GetParam() == ScaleType::Fill ? FileFormat::Png : FileFormat::Jpeg;
        o.jpegQuality = 70;
    });
    ASSERT_TRUE(runBatch({in()}));
    EXPECT_TRUE(asked.isEmpty()) << asked.join(QLatin1Char(',')).toStdString();

    models->defaults().store().sync();
    const QString cliOut = scratch->filePath(QStringLiteral("cli"));
    QProcess cli;
    cli.start(testsupport::cliPath(), {QStringLiteral("--settings"), models->defaults().store().fileName(),
                                       QStringLiteral("process"), in(), QStringLiteral("--dest"), cliOut});
    ASSERT_TRUE(cli.waitForFinished(120000));
    ASSERT_EQ(cli.exitCode(), 0) << cli.readAllStandardError().toStdString();

    const QMap<QString, QByteArray> window = testsupport::fileTree(out);
    EXPECT_EQ(window.size(), 4);
    EXPECT_EQ(window.keys(), testsupport::fileTree(cliOut).keys());
    EXPECT_TRUE(window == testsupport::fileTree(cliOut));
}

INSTANTIATE_TEST_SUITE_P(SizingModes, CurrentSettingTest,
                         ::testing::Values(ScaleType::None, ScaleType::ToWidth, ScaleType::ToHeight,
                                           ScaleType::Fit, ScaleType::Crop, ScaleType::Stretch,
                                           ScaleType::Percent, ScaleType::Fill));

// Settings set in the window survive a restart without counting as a chosen
// preset, and a record from the controls loads back into the same controls.
TEST_F(GuiTest, WindowSettingsComeBackAfterARestart) {
    SettingsModel& model = models->settings();
    edit(model.sizing(), [](Sizing& s) { s.scaleType = ScaleType::Crop; });
    edit(model.sizing(), [](Sizing& s) {
        s.cropAreaPercentage = 70;
        s.flipForPortrait = true;
    });
    edit(model.output(), [](OutputSettings& o) {
        o.format = FileFormat::Tiff;
        o.preserveHeader = false;
    });
    edit(model.output(), [](OutputSettings& o) {
        o.resolution = 300;
        o.convertToSrgb = true;
    });
    edit(model.watermarks(), [](WatermarkSettings& w) { w.text.enabled = true; });
    model.watermarks().setFieldTicked(3, true);
    const ProcessingRequest before = model.request();

    restart();
    SettingsModel& again = models->settings();
    EXPECT_EQ(again.value(), before);
    EXPECT_TRUE(again.sizing().cropEnabled());
    EXPECT_TRUE(again.output().resolutionEnabled());

    // An emptied resolution field is not stored while being typed over.
    edit(again.output(), [](OutputSettings& o) { o.resolution = 0; });
    EXPECT_EQ(models->defaults().intValue(QStringLiteral("Resolution")), 300);
    edit(again.output(), [](OutputSettings& o) { o.resolution = 150; });
    EXPECT_EQ(models->defaults().intValue(QStringLiteral("Resolution")), 150);
}

} // namespace
