#include "settings/presetjson.h"

#include "testsupport.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

struct CliResult {
    int status = -1;
    QString out, err;
};

// Drives the built tool against a scratch settings file, seeded with "Trip".
class PresetsCommand : public testing::Test {
  protected:
    void SetUp() override {
        ProcessingParams trip = ProcessingParams::defaults();
        trip.setString(ParamKey::Name, QStringLiteral("Trip"));
        PresetJson::writeFile(file("trip.json"), trip);
        ASSERT_EQ(run({QStringLiteral("import"), file("trip.json")}).status, 0);
    }
    QString file(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }
    CliResult run(const QStringList& args, const QByteArray& input = {}) const {
        QProcess p;
        p.start(testsupport::cliPath(), QStringList{"--settings", file("store.ini"), "presets"} + args);
        p.write(input);
        p.closeWriteChannel();
        if (!p.waitForFinished(30000))
            return {};
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
    }

    QTemporaryDir dir;
};

TEST_F(PresetsCommand, ImportListShowExportDeleteAndRefusals) {
    const CliResult imported = run({"import", file("trip.json")});
    EXPECT_EQ(imported.status, 0) << imported.err.toStdString();
    EXPECT_TRUE(imported.out.contains("'Trip copy'"));
    EXPECT_EQ(run({"list"}).out, "Trip\nTrip copy\n");
    const CliResult shown = run({"show", "Trip copy"});
    EXPECT_EQ(shown.status, 0);
    EXPECT_EQ(PresetJson::fromJson(shown.out.toUtf8()).stringValue(ParamKey::Name), "Trip copy");
    ASSERT_EQ(run({"export", "Trip", file("out.json")}).status, 0);
    EXPECT_EQ(PresetJson::readFile(file("out.json")).stringValue(ParamKey::Name), "Trip");
    EXPECT_EQ(run({"delete", "Trip"}).status, 0);
    EXPECT_EQ(run({"list"}).out, "Trip copy\n");
    const CliResult missing = run({"delete", "Trip"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains("no preset named 'Trip'"));

    const QByteArray before = testsupport::readFile(file("store.ini"));
    const QByteArray head = R"({"format": "quillet-preset", "version": 1, )";
    ASSERT_TRUE(testsupport::writeFile(file("cut.json"), head + R"("pre)"));
    ASSERT_TRUE(testsupport::writeFile(file("typed.json"), head + R"("preset": {"Name":"X","Width":"8"}})"));
    for (const char* name : {"cut.json", "typed.json", "missing.json"}) {
        const CliResult r = run({"import", file(name)});
        EXPECT_EQ(r.status, 1) << name;
        EXPECT_TRUE(r.err.contains("nothing was imported")) << r.err.toStdString();
    }
    const CliResult huge = run({"import", "-"}, QByteArray(2 << 20, ' '));
    EXPECT_EQ(huge.status, 1);
    EXPECT_TRUE(huge.err.contains("larger than")) << huge.err.toStdString();
    EXPECT_EQ(testsupport::readFile(file("store.ini")), before);
}

} // namespace
