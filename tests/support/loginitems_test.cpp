#include "support/failingfilesystem.h"
#include "support/loginitems.h"
#include "support/systemutility.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

class LoginItemsTest : public ::testing::Test {
  protected:
    void write(const QString& name, const QByteArray& text) {
        QDir().mkpath(folder);
        QFile file(QDir(folder).filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QStringList paths(const LoginItems& items) const {
        QStringList out;
        for (const LoginItems::Item& item : items.items())
            out.append(item.path);
        return out;
    }

    std::unique_ptr<QTemporaryDir> scratch = testsupport::scratchDir(QStringLiteral("login"));
    QString folder = scratch->filePath(QStringLiteral("autostart"));
};

TEST_F(LoginItemsTest, AProgramMovedToAnotherFolderReplacesItsItemAndOthersStay) {
    write(QStringLiteral("quillet.desktop"),
          "[Desktop Entry]\nType=Application\nExec=/opt/old/quillet --hidden\n");
    write(QStringLiteral("editor.desktop"), "[Desktop Entry]\nExec=\"/usr/bin/editor\" %U\n");
    // Switched off by the desktop: not an item.
    write(QStringLiteral("off.desktop"), "[Desktop Entry]\nExec=/usr/bin/off\nHidden=true\n");
    // Another program's group after the entry's does not count.
    write(QStringLiteral("tool.desktop"),
          "[Desktop Entry]\nExec=/usr/bin/tool\n[Desktop Action x]\nExec=/usr/bin/quillet\n");
    LoginItems items(folder);
    EXPECT_TRUE(items.launches(QStringLiteral("quillet")));
    EXPECT_FALSE(items.launches(QStringLiteral("off")));

    ASSERT_TRUE(items.add(QStringLiteral("/usr/local/bin/quillet"), true));
    QStringList now = paths(items);
    now.sort();
    EXPECT_EQ(now, (QStringList{"/usr/bin/editor", "/usr/bin/tool", "/usr/local/bin/quillet"}));
    for (const LoginItems::Item& item : items.items())
        EXPECT_EQ(item.hide, item.path.endsWith(QLatin1String("quillet"))) << qPrintable(item.path);

    // Removing by path is exact; by name takes every folder.
    EXPECT_TRUE(items.removeWithPath(QStringLiteral("/usr/bin/quillet")));
    EXPECT_TRUE(items.launches(QStringLiteral("quillet")));
    EXPECT_TRUE(items.removeNamed(QStringLiteral("quillet")));
    EXPECT_FALSE(items.launches(QStringLiteral("quillet")));
    EXPECT_TRUE(QFileInfo::exists(QDir(folder).filePath(QStringLiteral("off.desktop"))));
}

TEST_F(LoginItemsTest, AnotherProgramsFileOfTheSameNameIsNotWrittenOver) {
    const QByteArray other = "[Desktop Entry]\nExec=/usr/bin/something-else\n";
    write(QStringLiteral("quillet.desktop"), other);
    LoginItems items(folder);
    ASSERT_TRUE(items.add(QStringLiteral("/usr/bin/quillet"), false));
    QFile kept(QDir(folder).filePath(QStringLiteral("quillet.desktop")));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(kept.readAll(), other);
    EXPECT_TRUE(items.launches(QStringLiteral("quillet")));
    EXPECT_TRUE(items.launches(QStringLiteral("something-else")));
}

TEST_F(LoginItemsTest, PathsWithCharactersTheExecLineQuotesComeBackUnchanged) {
    LoginItems items(folder);
    for (const QString& path :
         {QStringLiteral("/home/a b/My \"App\" $HOME/run`x`"), QStringLiteral("/opt/100%/back\\slash/tool"),
          QStringLiteral("/opt/plain/app")}) {
        ASSERT_TRUE(items.add(path, false)) << qPrintable(path);
        EXPECT_EQ(LoginItems::programOf(LoginItems::execValue(path)), path);
    }
    QStringList all = paths(items);
    all.sort();
    EXPECT_EQ(all, (QStringList{"/home/a b/My \"App\" $HOME/run`x`", "/opt/100%/back\\slash/tool",
                                "/opt/plain/app"}));
}

TEST_F(LoginItemsTest, AFailedWriteSaysSoAndLeavesNothingBehind) {
    FailingFileSystem fs;
    fs.fail(FailingFileSystem::Call::Write, ENOSPC);
    LoginItems items(folder, fs);
    EXPECT_FALSE(items.add(QStringLiteral("/usr/bin/quillet"), false));
    EXPECT_TRUE(QDir(folder).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

TEST(SystemUtility, VersionRangesMemoryAndCommands) {
    EXPECT_TRUE(SystemUtility::isJaguar(0x1028));
    EXPECT_FALSE(SystemUtility::isPanther(0x1028));
    EXPECT_TRUE(SystemUtility::isPanther(0x1030));
    EXPECT_FALSE(SystemUtility::drawsTextShadows(0x102F));
    EXPECT_TRUE(SystemUtility::drawsTextShadows());

    EXPECT_EQ(SystemUtility::residentKilobytes("51234 345 100 1 0 2000 0\n", 4096), 1380);
    EXPECT_EQ(SystemUtility::residentKilobytes("", 4096), 0);
    EXPECT_EQ(SystemUtility::residentKilobytes("12 x", 4096), 0);
    EXPECT_GT(SystemUtility::residentSetSize(), 0);

    int status = 0;
    const QByteArray out = SystemUtility::runCommand(QStringLiteral("/bin/sh"),
                                                     {QStringLiteral("-c"), QStringLiteral("pwd; exit 3")},
                                                     QStringLiteral("/usr"), &status);
    EXPECT_EQ(out, "/usr\n");
    EXPECT_EQ(status, 3);
    SystemUtility::runCommand(QStringLiteral("/nonexistent/program"), {}, {}, &status);
    EXPECT_EQ(status, -1);
}

} // namespace
