#include "app/guitest.h"
#include "settings/presetstore.h"

#include <QDirIterator>
#include <QProcess>

using namespace quillet;
using namespace quillet::guitest;

namespace {

// Runs the built command-line tool on a settings file; its standard output.
QString runCli(const QString& settings, const QStringList& args) {
    QProcess cli;
    cli.start(testsupport::cliPath(), QStringList{QStringLiteral("--settings"), settings} + args);
    EXPECT_TRUE(cli.waitForFinished(120000));
    EXPECT_EQ(cli.exitCode(), 0) << cli.readAllStandardError().toStdString();
    return QString::fromUtf8(cli.readAllStandardOutput());
}

class PresetMenuTest : public GuiTest {
  protected:
    PresetMenuModel& menu() { return models->presets(); }
    SettingsModel& settings() { return models->settings(); }
    int quality() { return settings().value().output.jpegQuality; }
    void setQuality(int quality) {
        edit(settings().output(), [quality](OutputSettings& o) { o.jpegQuality = quality; });
    }
    QString storeFile() { return models->store().fileName(); }
};

// A name of spaces, "None" or a taken name is refused (trimmed first); an
// accepted preset is selected and is in the store the command line reads.
TEST_F(PresetMenuTest, AddRefusesBadNamesAndStoresGoodOnes) {
    setQuality(55);
    for (const QString& bad :
         {QStringLiteral(""), QStringLiteral("   "), QStringLiteral("None"), QStringLiteral(" None ")}) {
        EXPECT_FALSE(menu().nameIsAcceptable(bad)) << bad.toStdString();
        EXPECT_FALSE(menu().addPreset(bad)) << bad.toStdString();
    }
    EXPECT_EQ(menu().presets().count(), 0);

    ASSERT_TRUE(menu().addPreset(QStringLiteral("  Web  ")));
    EXPECT_EQ(menu().titles(), (QStringList{QStringLiteral("None"), QStringLiteral("Web")}));
    EXPECT_EQ(menu().selectedIndex(), 1);
    EXPECT_TRUE(menu().canStore());
    EXPECT_FALSE(menu().addPreset(QStringLiteral("Web ")));
    EXPECT_EQ(menu().presets().count(), 1);

    QSettings other(storeFile(), QSettings::IniFormat);
    const auto stored = PresetStore::lookup(other, QStringLiteral("Web"));
    ASSERT_TRUE(stored);
    EXPECT_EQ(stored->intValue(QLatin1String(ParamKey::JpegQuality)), 55);
    EXPECT_GE(stored->intValue(QLatin1String(ParamKey::Id)), 1);
}

// Choosing applies a preset, "None" resets the controls, and the choice is
// applied again at the next start; with "None" the window keeps what it was
// left with.
TEST_F(PresetMenuTest, ChoosingAppliesAndTheChoiceComesBackAtStart) {
    setQuality(55);
    ASSERT_TRUE(menu().addPreset(QStringLiteral("Web")));
    setQuality(90);
    edit(settings().output(), [](OutputSettings& o) { o.format = FileFormat::Png; });
    ASSERT_TRUE(menu().addPreset(QStringLiteral("Print")));

    menu().select(1);
    EXPECT_EQ(quality(), 55);
    EXPECT_EQ(settings().value().output.format, FileFormat::Jpeg);
    menu().select(0);
    SettingsModel fresh;
    fresh.reset();
    EXPECT_EQ(settings().value(), fresh.value());
    EXPECT_FALSE(menu().canStore());

    menu().select(2);
    setQuality(70); // changed after choosing: the preset wins at start
    restart();
    EXPECT_EQ(menu().selectedIndex(), 2);
    EXPECT_EQ(quality(), 90);
    EXPECT_EQ(settings().value().output.format, FileFormat::Png);

    menu().select(0);
    setQuality(33);
    restart();
    EXPECT_EQ(menu().selectedIndex(), 0);
    EXPECT_EQ(quality(), 33);
}

// Saving into the selected preset replaces its settings under its own name.
TEST_F(PresetMenuTest, SavingIntoTheSelectedPresetReplacesItsSettings) {
    setQuality(55);
    ASSERT_TRUE(menu().addPreset(QStringLiteral("Web")));
    ASSERT_TRUE(menu().addPreset(QStringLiteral("Other")));
    menu().select(1);
    setQuality(61);
    menu().storeIntoSelected();
    EXPECT_EQ(menu().titles(),
              (QStringList{QStringLiteral("None"), QStringLiteral("Web"), QStringLiteral("Other")}));

    menu().select(2);
    EXPECT_EQ(quality(), 55);
    restart();
    menu().select(1);
    EXPECT_EQ(quality(), 61);
}

// A preset made in the window is the command line's: listed, exported,
// imported into another store while a window is open on it, chosen there,
// it gives a batch identical byte for byte to the first.
TEST_F(PresetMenuTest, PresetTravelsThroughTheCommandLineToTheSameBatch) {
    makePictures(in(QStringLiteral("album")), 3, 40);
    testsupport::solidImage(30, 70, 200, 40, 10)
        .extract_band(0, vips::VImage::option()->set("n", 3))
        .jpegsave(in(QStringLiteral("portrait.jpg")).toLocal8Bit().constData());

    edit(settings().sizing(), [](Sizing& s) { s.scaleType = ScaleType::Crop; });
    edit(settings().sizing(), [](Sizing& s) {
        s.width = 30;
        s.height = 20;
        s.cropAreaPercentage = 80;
    });
    settings().sizing().setRotation(Rotation::Clockwise);
    edit(settings().output(), [](OutputSettings& o) {
        o.jpegQuality = 63;
        o.resolution = 300;
    });
    ASSERT_TRUE(menu().addPreset(QStringLiteral("Trip")));
    menu().select(0); // the window moves on to other settings

    EXPECT_EQ(runCli(storeFile(), {QStringLiteral("presets"), QStringLiteral("list")}),
              QStringLiteral("Trip\n"));
    const QString file = scratch->filePath(QStringLiteral("trip.json"));
    runCli(storeFile(), {QStringLiteral("presets"), QStringLiteral("export"), QStringLiteral("Trip"), file});

    menu().select(1);
    ASSERT_TRUE(runBatch({in()}));
    const QMap<QString, QByteArray> first = testsupport::fileTree(out);
    EXPECT_EQ(first.size(), 4);

    // A fresh store, a window open on it, and the import from the command line.
    const QString fresh = scratch->filePath(QStringLiteral("fresh.ini"));
    const QString second = scratch->filePath(QStringLiteral("second"));
    {
        QSettings store(fresh, QSettings::IniFormat);
        store.setValue(QStringLiteral("OnTheFlyFolder"), false);
        store.setValue(QStringLiteral("Destinations"), QStringList{second});
    }
    SettingsStore::overridePath(fresh);
    restart();
    EXPECT_EQ(menu().presets().count(), 0);
    runCli(fresh, {QStringLiteral("presets"), QStringLiteral("import"), file});
    menu().reload();
    ASSERT_EQ(menu().titles(), (QStringList{QStringLiteral("None"), QStringLiteral("Trip")}));
    menu().select(1);
    ASSERT_TRUE(runBatch({in()}));
    const QMap<QString, QByteArray> again = testsupport::fileTree(second);
    EXPECT_EQ(again.keys(), first.keys());
    EXPECT_TRUE(again == first);
}

} // namespace
