#include "settings/presetjson.h"
#include "settings/presetstore.h"

#include "testsupport.h"

#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct CliResult {
    int status = -1;
    QString out;
    QString err;
};

// Drives the built tool against a scratch settings file.
class PresetsCommand : public testing::Test {
  protected:
    QString store() const { return dir.filePath(QStringLiteral("store.ini")); }
    QString file(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }

    CliResult run(QStringList args, const QByteArray& input = {}) const {
        QProcess p;
        p.start(testsupport::cliPath(),
                QStringList{QStringLiteral("--settings"), store(), QStringLiteral("presets")} + args);
        p.write(input);
        p.closeWriteChannel();
        if (!p.waitForFinished(30000))
            return {};
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
    }
    QStringList storedNames() const {
        QSettings settings(store(), QSettings::IniFormat);
        return PresetStore::load(settings).names();
    }
    void addStored(const char* name) const {
        QSettings settings(store(), QSettings::IniFormat);
        PresetStore presets = PresetStore::load(settings);
        presets.addPreset(QString::fromUtf8(name), ProcessingParams::defaults());
        presets.save(settings);
    }

    QTemporaryDir dir;
};

TEST_F(PresetsCommand, ExportImportListAndDelete) {
    addStored("Trip");
    ASSERT_EQ(run({QStringLiteral("export"), QStringLiteral("Trip"), file("trip.json")}).status, 0);
    const CliResult imported = run({QStringLiteral("import"), file("trip.json")});
    EXPECT_EQ(imported.status, 0) << imported.err.toStdString();
    EXPECT_TRUE(imported.out.contains(QLatin1String("'Trip copy'")));
    EXPECT_EQ(run({QStringLiteral("list")}).out, QStringLiteral("Trip\nTrip copy\n"));

    const CliResult shown = run({QStringLiteral("show"), QStringLiteral("Trip copy")});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(PresetJson::fromJson(shown.out.toUtf8()).stringValue(ParamKey::Name),
              QStringLiteral("Trip copy"));

    EXPECT_EQ(run({QStringLiteral("delete"), QStringLiteral("Trip")}).status, 0);
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("Trip copy")});
    const CliResult missing = run({QStringLiteral("delete"), QStringLiteral("Trip")});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains(QLatin1String("no preset named 'Trip'")));
}

TEST_F(PresetsCommand, BadFilesAreRefusedAndChangeNothing) {
    addStored("Trip");
    const QByteArray before = testsupport::readFile(store());
    ASSERT_TRUE(
        testsupport::writeFile(file("cut.json"), R"({"format": "quillet-preset", "version": 1, "pre)"));
    ASSERT_TRUE(testsupport::writeFile(
        file("typed.json"),
        R"({"format": "quillet-preset", "version": 1, "preset": {"Name": "X", "Width": "800"}})"));
    for (const char* name : {"cut.json", "typed.json", "missing.json"}) {
        const CliResult r = run({QStringLiteral("import"), file(name)});
        EXPECT_EQ(r.status, 1) << name;
        EXPECT_TRUE(r.err.contains(QLatin1String("nothing was imported"))) << r.err.toStdString();
    }
    const CliResult fromInput =
        run({QStringLiteral("import"), QStringLiteral("-")}, QByteArray(2 * 1024 * 1024, ' '));
    EXPECT_EQ(fromInput.status, 1);
    EXPECT_TRUE(fromInput.err.contains(QLatin1String("larger than"))) << fromInput.err.toStdString();
    EXPECT_EQ(testsupport::readFile(store()), before);
}

} // namespace
