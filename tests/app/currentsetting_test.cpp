#include "guitest.h"

#include <QDirIterator>
#include <QProcess>

using namespace quillet;
using namespace quillet::guitest;

namespace {

// Every file under a folder, by relative path, with its bytes.
QMap<QString, QByteArray> tree(const QString& root) {
    QMap<QString, QByteArray> files;
    QDirIterator it(root, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        files.insert(QDir(root).relativeFilePath(path), testsupport::readFile(path));
    }
    return files;
}

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

    SettingsModel& model = controller->settings();
    model.selectScaleType(GetParam());
    if (model.width().enabled)
        model.setWidth(36);
    if (model.height().enabled)
        model.setHeight(24);
    if (model.cropArea().enabled)
        model.setCropArea(80);
    model.setScalePercent(150);
    model.setFlipRatio(model.flipEnabled());
    model.setScaleDownOnly(GetParam() == ScaleType::Fit);
    model.selectRotation(Rotation::Automatic);
    model.selectFormat(GetParam() == ScaleType::Fill ? FileFormat::Png : FileFormat::Jpeg);
    model.setJpegQuality(70);
    ASSERT_TRUE(runBatch({in()}));
    EXPECT_TRUE(asked.isEmpty()) << asked.join(QLatin1Char(',')).toStdString();

    controller->defaults().store().sync();
    const QString cliOut = scratch->filePath(QStringLiteral("cli"));
    QProcess cli;
    cli.start(testsupport::cliPath(),
              {QStringLiteral("--settings"), controller->defaults().store().fileName(),
               QStringLiteral("process"), in(), QStringLiteral("--dest"), cliOut});
    ASSERT_TRUE(cli.waitForFinished(120000));
    ASSERT_EQ(cli.exitCode(), 0) << cli.readAllStandardError().toStdString();

    const QMap<QString, QByteArray> window = tree(out);
    EXPECT_EQ(window.size(), 4);
    EXPECT_EQ(window.keys(), tree(cliOut).keys());
    EXPECT_TRUE(window == tree(cliOut));
}

INSTANTIATE_TEST_SUITE_P(SizingModes, CurrentSettingTest,
                         ::testing::Values(ScaleType::None, ScaleType::ToWidth, ScaleType::ToHeight,
                                           ScaleType::Fit, ScaleType::Crop, ScaleType::Stretch,
                                           ScaleType::Percent, ScaleType::Fill));

// Settings set in the window survive a restart without counting as a chosen
// preset, and a record from the controls loads back into the same controls.
TEST_F(GuiTest, WindowSettingsComeBackAfterARestart) {
    SettingsModel& model = controller->settings();
    model.selectScaleType(ScaleType::Crop);
    model.setCropArea(70);
    model.setFlipRatio(true);
    model.selectFormat(FileFormat::Tiff);
    model.setPreserveHeader(false);
    model.setResolution(300);
    model.setConvertToSrgb(true);
    model.setTextWatermarkEnabled(true);
    model.setTextFieldTicked(3, true);
    const ProcessingParams before = controller->currentSetting();

    controller.reset();
    controller = std::make_unique<AppController>(sheets, desktop);
    SettingsModel& again = controller->settings();
    EXPECT_FALSE(again.canStorePreset());
    EXPECT_EQ(again.scaleType(), ScaleType::Crop);
    EXPECT_EQ(again.cropArea(), (SettingsModel::Field{70, true}));
    EXPECT_EQ(again.resolution(), (SettingsModel::Field{300, true}));
    EXPECT_TRUE(again.convertToSrgb());
    EXPECT_TRUE(again.textFieldTicked(3));
    EXPECT_TRUE(controller->currentSetting() == before);

    // An emptied resolution field is not stored while being typed over.
    again.setResolution(0);
    EXPECT_EQ(controller->defaults().intValue(QStringLiteral("Resolution")), 300);
    again.setResolution(150);
    EXPECT_EQ(controller->defaults().intValue(QStringLiteral("Resolution")), 150);
}

} // namespace
