#include "testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

int runQuillet(const QStringList& args, QString* err = nullptr) {
    QProcess process;
    process.setProgram(testsupport::cliPath());
    process.setArguments(args);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start();
    process.waitForFinished(120000);
    if (err)
        *err = QString::fromLocal8Bit(process.readAllStandardError());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

class VersionsCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QDir().mkpath(path(QStringLiteral("in")));
        testsupport::solidImage(90, 60, 90, 120, 150)
            .write_to_file(QFile::encodeName(path(QStringLiteral("in/a.png"))).constData());
        const QString file = path(QStringLiteral("small.json"));
        testsupport::writeFile(file, R"({"format": "quillet-preset", "version": 1, "preset": {"Name": "Small",
            "ScaleType": 4, "Width": 30, "Height": 30, "FileFormat": 102}})");
        ASSERT_EQ(runQuillet({QStringLiteral("presets"), QStringLiteral("import"), file}), 0);
    }
    QString path(const QString& relative) const { return dir->path() + QLatin1Char('/') + relative; }
    std::unique_ptr<QTemporaryDir> dir = testsupport::scratchDir(QStringLiteral("versions-cli"));
};

TEST_F(VersionsCommandTest, AVersionWithoutItsPresetIsRefusedBeforeAnyFileIsWritten) {
    QString err;
    EXPECT_EQ(
        runQuillet({QStringLiteral("process"), QStringLiteral("--versions"), QStringLiteral("*,Small,Gone"),
                    QStringLiteral("--dest"), path(QStringLiteral("out")), path(QStringLiteral("in"))},
                   &err),
        2);
    EXPECT_TRUE(err.contains(QLatin1String("the version 'Gone' names no preset"))) << qPrintable(err);
    EXPECT_FALSE(QFileInfo::exists(path(QStringLiteral("out"))));
}

TEST_F(VersionsCommandTest, TheWindowsListRunsUnlessTheCommandLineGivesOne) {
    QSettings(QString::fromLocal8Bit(qgetenv("QUILLET_SETTINGS")), QSettings::IniFormat)
        .setValue(QStringLiteral("OutputVersions"),
                  QStringList{QStringLiteral("*"), QStringLiteral("Small:_s")});
    const QString in = path(QStringLiteral("in"));
    ASSERT_EQ(
        runQuillet({QStringLiteral("process"), QStringLiteral("--dest"), path(QStringLiteral("one")), in}),
        0);
    EXPECT_TRUE(QFileInfo::exists(path(QStringLiteral("one/in/a.jpg"))));
    EXPECT_TRUE(QFileInfo::exists(path(QStringLiteral("one/in/a_s.png"))));
    ASSERT_EQ(runQuillet({QStringLiteral("process"), QStringLiteral("--versions"), QStringLiteral("Small"),
                          QStringLiteral("--dest"), path(QStringLiteral("two")), in}),
              0);
    EXPECT_EQ(QDir(path(QStringLiteral("two"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("Small")});
    EXPECT_TRUE(QFileInfo::exists(path(QStringLiteral("two/Small/in/a.png"))));
}

} // namespace
