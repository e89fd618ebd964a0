#include "app/guitest.h"
#include "app/models/activitylogmodel.h"
#include "app/models/inplacemodel.h"
#include "app/standinjpegtran.h"
#include "inplace/filerotation.h"
#include "inplace/jpegfixtures.h"
#include "inplace/jpegtranrunner.h"
#include "settings/userdefaults.h"

#include <QSettings>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace quillet;
using namespace quillet::guitest;
using namespace Qt::StringLiterals;

namespace {

class InplaceModelTest : public ::testing::Test {
  protected:
    InplaceModelTest() : store(scratch->filePath(u"s.ini"_s), QSettings::IniFormat), defaults(store) {}

    // A picture of the test's: JPEGs with an EXIF block that wants a quarter
    // turn, anything else as given.
    QString put(const QString& name, const QByteArray& bytes = jpegfixtures::markedJpeg(6)) {
        const QString path = scratch->filePath(name);
        EXPECT_TRUE(testsupport::writeFile(path, bytes));
        return path;
    }
    std::unique_ptr<InplaceModel> model(std::unique_ptr<JpegtranRunner> runner) {
        return std::make_unique<InplaceModel>(log, defaults, std::move(runner));
    }
    bool waitForEnd(const InplaceModel& inplace) {
        return waitFor([&] { return !inplace.isRunning(); }) && waitFor([] { return true; }, 50);
    }

    std::unique_ptr<QTemporaryDir> scratch = testsupport::scratchDir(u"inplacemodel"_s);
    QSettings store;
    UserDefaults defaults;
    ActivityLogModel log;
};

// Five files dropped on the clockwise target: the tool runs once per file
// with a quarter turn, the bar ends full, and the one PNG among them raises
// one "Non-JPEG Files" alert once the sheet is down.
TEST_F(InplaceModelTest, FiveFilesRunTheToolFiveTimesAndOneAlertNamesTheNonJpegs) {
    StandInJpegtran tool(scratch->path());
    auto inplace = model(std::make_unique<JpegtranRunner>(tool.program()));
    const QStringList files{put(u"a.jpg"_s), put(u"b.jpg"_s), put(u"c.png"_s, "\x89PNG\r\n\x1a\n"),
                            put(u"d.jpg"_s), put(u"e.jpg"_s)};
    QStringList events;
    QObject::connect(inplace.get(), &InplaceModel::runningChanged,
                     [&](bool running) { events.append(running ? u"sheet up"_s : u"sheet down"_s); });
    QObject::connect(inplace.get(), &InplaceModel::alertRaised,
                     [&](const QString& title, const QString&) { events.append(title); });

    ASSERT_TRUE(inplace->drop(InplaceAction::RotateClockwise, files));
    EXPECT_FALSE(inplace->drop(InplaceAction::RotateClockwise, files)); // one run at a time
    ASSERT_TRUE(waitForEnd(*inplace));

    EXPECT_EQ(events, (QStringList{u"sheet up"_s, u"sheet down"_s, u"Non-JPEG Files"_s}));
    QStringList firstTries;
    for (const QString& call : tool.calls())
        if (call.contains(u"-perfect"_s))
            firstTries.append(call);
    ASSERT_EQ(firstTries.size(), 5);
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(firstTries[i].contains(u"-rotate 90 -outfile "_s + files[i]))
            << firstTries[i].toStdString();
    EXPECT_EQ(inplace->progress(), 5);
    EXPECT_EQ(inplace->progressMaximum(), 5);
    EXPECT_TRUE(log.text().contains(u"'c.png' is not a JPEG\n"_s));
    EXPECT_TRUE(log.text().contains(u"Rotated 'e.jpg'\n"_s));
    // No backups were kept: nothing to undo.
    EXPECT_FALSE(inplace->canUndo());
}

// Without jpegtran a rotation starts nothing and says which package brings
// the tool; the other operations do not need it.
TEST_F(InplaceModelTest, MissingJpegtranNamesThePackageAndStartsNothing) {
    qunsetenv(JpegtranRunner::EnvironmentVariable);
    auto inplace = model(std::make_unique<JpegtranRunner>(QString()));
    QSignalSpy alerts(inplace.get(), &InplaceModel::alertRaised);
    QSignalSpy sheet(inplace.get(), &InplaceModel::runningChanged);
    const QString file = put(u"a.jpg"_s);
    const QByteArray before = testsupport::readFile(file);

    EXPECT_FALSE(inplace->drop(InplaceAction::RotateAuto, {file}));
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts[0][0].toString(), u"jpegtran Not Found"_s);
    EXPECT_TRUE(alerts[0][1].toString().contains(u"libjpeg-turbo-progs"_s));
    EXPECT_EQ(sheet.size(), 0);
    EXPECT_EQ(testsupport::readFile(file), before);

    ASSERT_TRUE(inplace->drop(InplaceAction::ResetDates, {file}));
    EXPECT_TRUE(waitForEnd(*inplace));
    EXPECT_EQ(alerts.size(), 1);
}

// After a rotation with the originals kept, undo is offered; it puts every
// original back and the offer ends. Unticking the backup box counts from
// the next drop, which then offers nothing.
TEST_F(InplaceModelTest, UndoIsOfferedAfterARotationWithBackupsAndPutsTheOriginalsBack) {
    qunsetenv(JpegtranRunner::EnvironmentVariable);
    if (JpegtranRunner::locate().isEmpty())
        GTEST_SKIP() << "jpegtran is not installed (Debian package libjpeg-turbo-progs)";
    auto inplace = model({});
    const QStringList files{put(u"a.jpg"_s), put(u"b.jpg"_s)};
    const QByteArray original = testsupport::readFile(files[0]);
    QSignalSpy offers(inplace.get(), &InplaceModel::undoAvailableChanged);

    inplace->setKeepBackup(true);
    EXPECT_TRUE(defaults.boolValue(u"KeepBackup"_s));
    ASSERT_TRUE(inplace->drop(InplaceAction::RotateClockwise, files));
    ASSERT_TRUE(waitForEnd(*inplace));
    ASSERT_TRUE(inplace->canUndo());
    EXPECT_NE(testsupport::readFile(files[0]), original);

    ASSERT_TRUE(inplace->undo());
    EXPECT_FALSE(inplace->canUndo()); // not twice while it runs
    ASSERT_TRUE(waitForEnd(*inplace));
    EXPECT_EQ(testsupport::readFile(files[0]), original);
    EXPECT_FALSE(inplace->canUndo());
    EXPECT_FALSE(inplace->undo());
    EXPECT_EQ(offers.size(), 2);

    // The offer goes too when the backups go behind the panel's back.
    ASSERT_TRUE(inplace->drop(InplaceAction::RotateClockwise, {files[0]}));
    ASSERT_TRUE(waitForEnd(*inplace));
    ASSERT_TRUE(inplace->canUndo());
    ASSERT_TRUE(QDir(QFileInfo(FileRotation::backupPath(files[0])).absolutePath()).removeRecursively());
    inplace->refreshUndo();
    EXPECT_FALSE(inplace->canUndo());

    inplace->setKeepBackup(false);
    ASSERT_TRUE(inplace->drop(InplaceAction::RotateClockwise, {files[1]}));
    ASSERT_TRUE(waitForEnd(*inplace));
    EXPECT_FALSE(inplace->canUndo());
    EXPECT_FALSE(QFileInfo::exists(FileRotation::backupPath(files[1])));
}

} // namespace
