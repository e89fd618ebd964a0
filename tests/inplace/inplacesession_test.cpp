#include "inplace/inplacesession.h"
#include "inplace/jpegtranrunner.h"
#include "jpegfixtures.h"
#include "support/settingsstore.h"
#include "testsupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace testsupport;
using namespace jpegfixtures;

namespace {

// The panel as a list of what it was asked to show.
class RecordingView final : public InplaceView, public ActivityLog {
  public:
    void beginProgress(int maximum) override { shown.append(QStringLiteral("begin %1").arg(maximum)); }
    void showProgress(const QString& status, int value) override {
        shown.append(QStringLiteral("%1 %2").arg(value).arg(status));
    }
    void endProgress() override { shown.append(QStringLiteral("end")); }
    void showAlert(const QString& title, const QString& text, const QString& button) override {
        shown.append(QStringLiteral("alert %1|%2|%3").arg(title, text, button));
    }
    void writeActivity(const QString& line) override { log.append(line); }
    void writeWarningActivity(const QString& line) override { log.append(QStringLiteral("! ") + line); }
    QStringList shown, log;
};

class InplaceSessionTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        SettingsStore::open()->remove(QLatin1String(InplaceSession::KeepBackupKey));
    }
    QStringList files(const QStringList& names, const QByteArray& bytes) {
        QStringList paths;
        for (const QString& name : names) {
            paths.append(dir.filePath(name));
            writeFile(paths.last(), bytes);
        }
        return paths;
    }
    QTemporaryDir dir;
    RecordingView view;
};

TEST_F(InplaceSessionTest, DropShowsProgressPerFileAndOneAlertForNonJpegs) {
    InplaceSession session(view, view);
    session.setSynchronous(true);
    QStringList paths = files({QStringLiteral("a.jpg"), QStringLiteral("b.jpg")}, markedJpeg(1));
    paths.insert(1, dir.filePath("c.png"));
    writeFile(paths.at(1), "\x89PNG");
    ASSERT_TRUE(session.start(InplaceAction::RotateClockwise, paths));
    EXPECT_EQ(
        view.shown,
        (QStringList{
            QStringLiteral("begin 3"), QStringLiteral("1 Rotating a.jpg"), QStringLiteral("2 Rotating c.png"),
            QStringLiteral("3 Rotating b.jpg"), QStringLiteral("end"),
            QStringLiteral("alert Non-JPEG Files|Lossless JPEG operations can only be performed on JPEG "
                           "files. Non-JPEG files ignored.|Okay")}));
    EXPECT_EQ(view.log,
              (QStringList{QStringLiteral("Rotated 'a.jpg'\n"), QStringLiteral("! 'c.png' is not a JPEG\n"),
                           QStringLiteral("Rotated 'b.jpg'\n")}));
    EXPECT_EQ(session.badFiles(), QStringList{paths.at(1)});

    // Upright pictures in automatic mode are skipped, which is no reason for an alert.
    view.shown.clear();
    ASSERT_TRUE(session.start(InplaceAction::RotateAuto, {paths.at(0)}));
    EXPECT_EQ(view.shown.last(), QStringLiteral("end"));
    EXPECT_TRUE(session.badFiles().isEmpty());
}

TEST_F(InplaceSessionTest, NothingIsShownForAnEmptyDropOrAMissingTool) {
    InplaceSession session(view, view, std::make_unique<JpegtranRunner>(QString()));
    session.setSynchronous(true);
    EXPECT_FALSE(session.start(InplaceAction::ResetDates, {}));
    const QStringList paths = files({QStringLiteral("a.jpg")}, markedJpeg(6));
    EXPECT_THROW(session.start(InplaceAction::Rotate180, paths), JpegtranMissing);
    EXPECT_TRUE(view.shown.isEmpty());
    // Dates and icons need no tool.
    EXPECT_TRUE(session.start(InplaceAction::AddIcons, paths));
    EXPECT_EQ(view.shown, (QStringList{QStringLiteral("begin 1"), QStringLiteral("1 Setting icon for a.jpg"),
                                       QStringLiteral("end")}));
}

TEST_F(InplaceSessionTest, KeepBackupIsStoredOnlyByTheCheckBox) {
    const QStringList paths = files({QStringLiteral("a.jpg")}, markedJpeg(1));
    {
        InplaceSession session(view, view);
        EXPECT_FALSE(session.keepBackup());
        session.setKeepBackup(true);
    }
    EXPECT_FALSE(InplaceSession(view, view).keepBackup());
    {
        InplaceSession session(view, view);
        session.toggleKeepBackup(true);
        session.setSynchronous(true);
        ASSERT_TRUE(session.start(InplaceAction::RotateCounterClockwise, paths));
    }
    EXPECT_EQ(readFile(dir.filePath("Quillet Originals/a.jpg")), markedJpeg(1));
    EXPECT_TRUE(InplaceSession(view, view).keepBackup());
}

TEST_F(InplaceSessionTest, CancelSaysSoAndStopsBeforeTheNextFile) {
    InplaceSession session(view, view);
    session.setSynchronous(true);
    const QStringList paths = files({QStringLiteral("a.jpg"), QStringLiteral("b.jpg")}, markedJpeg(1));
    session.cancel();
    ASSERT_TRUE(session.start(InplaceAction::ResetDates, paths));
    EXPECT_EQ(view.shown, (QStringList{QStringLiteral("0 Cancelling ..."), QStringLiteral("begin 2"),
                                       QStringLiteral("end")}));
}

} // namespace
