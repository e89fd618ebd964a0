#include "inplace/inplacesession.h"
#include "jpegfixtures.h"
#include "support/settingsstore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace testsupport;
using namespace jpegfixtures;

namespace {

// The panel, as a list of what it was asked to show.
class RecordingView final : public InplaceView, public ActivityLog {
  public:
    void beginProgress(int maximum) override { shown.append(QStringLiteral("begin %1").arg(maximum)); }
    void showProgress(const QString& status, int value) override {
        shown.append(QStringLiteral("%1 %2").arg(value).arg(status));
    }
    void endProgress() override { shown.append(QStringLiteral("end")); }
    void showAlert(const QString& title, const QString& text, const QString& button) override {
        shown.append(title + QLatin1Char('|') + text + QLatin1Char('|') + button);
    }
    void writeActivity(const QString& line) override { log.append(line); }
    void writeWarningActivity(const QString& line) override { log.append(QStringLiteral("! ") + line); }
    QStringList shown, log;
};

TEST(InplaceSessionTest, DropShowsProgressPerFileAndOneAlertForNonJpegs) {
    QTemporaryDir dir;
    RecordingView view;
    InplaceSession session(view, view);
    session.setSynchronous(true);
    const QStringList paths{dir.filePath("a.jpg"), dir.filePath("c.png"), dir.filePath("b.jpg")};
    writeFile(paths[0], markedJpeg(1)), writeFile(paths[1], "\x89PNG"), writeFile(paths[2], markedJpeg(1));

    ASSERT_TRUE(session.start(InplaceAction::RotateClockwise, paths));
    EXPECT_EQ(view.shown,
              (QStringList{QStringLiteral("begin 3"), QStringLiteral("1 Rotating a.jpg"),
                           QStringLiteral("2 Rotating c.png"), QStringLiteral("3 Rotating b.jpg"),
                           QStringLiteral("end"),
                           QStringLiteral("Non-JPEG Files|Lossless JPEG operations can only be performed on "
                                          "JPEG files. Non-JPEG files ignored.|Okay")}));
    EXPECT_EQ(view.log,
              (QStringList{QStringLiteral("Rotated 'a.jpg'\n"), QStringLiteral("! 'c.png' is not a JPEG\n"),
                           QStringLiteral("Rotated 'b.jpg'\n")}));
    EXPECT_EQ(session.badFiles(), QStringList{paths[1]});

    // Upright pictures skipped in automatic mode are no reason for an alert.
    view.shown.clear();
    ASSERT_TRUE(session.start(InplaceAction::RotateAuto, {paths[0]}));
    EXPECT_EQ(view.shown.last(), QStringLiteral("end"));
    // Cancelling says so; the run stops before the next file.
    session.cancel();
    EXPECT_EQ(view.shown.last(), QStringLiteral("1 Cancelling ..."));
    EXPECT_FALSE(session.start(InplaceAction::AddIcons, {}));
}

TEST(InplaceSessionTest, KeepBackupIsStoredOnlyByTheCheckBox) {
    RecordingView view;
    SettingsStore::open()->remove(QLatin1String(InplaceSession::KeepBackupKey));
    InplaceSession(view, view).setKeepBackup(true);
    EXPECT_FALSE(InplaceSession(view, view).keepBackup());
    InplaceSession(view, view).toggleKeepBackup(true);
    EXPECT_TRUE(InplaceSession(view, view).keepBackup());
}

} // namespace
