#include "app/standinjpegtran.h"
#include "app/widgets/inplace/inplacedroptarget.h"
#include "app/widgets/inplace/inplaceprogresssheet.h"
#include "app/widgets/inplace/inplacewindow.h"
#include "app/widgets/main/mainwindow.h"
#include "app/windowtest.h"
#include "inplace/filerotation.h"
#include "inplace/jpegfixtures.h"
#include "inplace/jpegtranrunner.h"

#include <QAbstractAnimation>
#include <QAction>
#include <QCheckBox>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QUrl>

#include <fcntl.h>
#include <sys/stat.h>

using namespace quillet;
using namespace quillet::guitest;
using namespace Qt::StringLiterals;

namespace {

long long modifiedNs(const QString& path) {
    struct stat info {};
    ::stat(QFile::encodeName(path).constData(), &info);
    return info.st_mtim.tv_sec * 1000000000LL + info.st_mtim.tv_nsec;
}

// The main window on a scratch store, with a stand-in jpegtran.
class InplaceWindowTest : public WindowTest {
  protected:
    void SetUp() override {
        qputenv(JpegtranRunner::EnvironmentVariable, tool.program().toLocal8Bit());
        WindowTest::SetUp();
    }
    void TearDown() override {
        WindowTest::TearDown();
        qunsetenv(JpegtranRunner::EnvironmentVariable);
    }
    InplaceWindow* panel() const { return window->inplaceWindow(); }
    void dropOn(QWidget* target, const QStringList& paths) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths)
            urls.append(QUrl::fromLocalFile(path));
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &enter);
        ASSERT_TRUE(enter.isAccepted());
        QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(target, &dropped);
    }
    void trigger(const char* action) { window->findChild<QAction*>(QLatin1String(action))->trigger(); }

    StandInJpegtran tool{scratch->path()};
};

// Five files on the clockwise target run under the panel's progress sheet;
// the PNG among them brings one "Non-JPEG Files" alert, on the panel, once
// the sheet is down. With the originals kept, Undo then brings them back.
TEST_F(InplaceWindowTest, DropRunsUnderTheSheetEndsWithOneAlertAndCanBeUndone) {
    trigger("actionInplaceRotation");
    ASSERT_TRUE(panel()->isVisible());
    auto* keep = panel()->findChild<QCheckBox*>(u"keepBackupBox"_s);
    auto* undo = panel()->findChild<QPushButton*>(u"undoRotationButton"_s);
    keep->setChecked(true);
    EXPECT_FALSE(undo->isVisibleTo(panel()));

    QStringList files;
    for (const QString& name : {u"a.jpg"_s, u"b.jpg"_s, u"c.png"_s, u"d.jpg"_s, u"e.jpg"_s}) {
        files.append(in(name));
        QDir().mkpath(in());
        testsupport::writeFile(files.last(), name.endsWith(u"png"_s) ? QByteArray("\x89PNG\r\n\x1a\n")
                                                                     : jpegfixtures::markedJpeg(6));
    }
    const QByteArray original = testsupport::readFile(files[0]);
    const timespec old[2] = {{978307200, 0}, {978307200, 250}};
    ::utimensat(AT_FDCWD, QFile::encodeName(files[0]).constData(), old, 0);

    bool sheetUpAtAlert = true;
    QWidget* alertWindow = nullptr;
    sheets.setAnswerHook([&](const SheetRequest& request) {
        sheetUpAtAlert = panel()->progressSheet()->isVisible();
        alertWindow = request.window;
        return SheetAnswer{1, {}};
    });
    dropOn(panel()->target(InplaceAction::RotateClockwise), files);
    EXPECT_TRUE(panel()->progressSheet()->isVisible());
    ASSERT_TRUE(waitFor([&] { return !asked.isEmpty(); }));
    waitFor([] { return false; }, 100); // anything more would come now

    EXPECT_EQ(asked, QStringList{u"Non-JPEG Files"_s});
    EXPECT_FALSE(sheetUpAtAlert);
    EXPECT_EQ(alertWindow, panel());
    auto* bar = panel()->progressSheet()->findChild<QProgressBar*>(u"inplaceProgressBar"_s);
    EXPECT_EQ(bar->value(), 5);
    EXPECT_EQ(bar->maximum(), 5);
    EXPECT_EQ(tool.calls().filter(u"-perfect -rotate 90"_s).size(), 5);
    EXPECT_TRUE(models->log().text().contains(u"Rotated 'a.jpg'\n"_s));

    ASSERT_TRUE(undo->isVisibleTo(panel()));
    EXPECT_NE(modifiedNs(files[0]), 978307200000000250LL);
    undo->click();
    ASSERT_TRUE(waitFor([&] { return !models->inplace().isRunning(); }));
    waitFor([] { return false; }, 50);
    EXPECT_FALSE(undo->isVisibleTo(panel()));
    EXPECT_EQ(testsupport::readFile(files[0]), original);
    EXPECT_EQ(modifiedNs(files[0]), 978307200000000250LL);
    EXPECT_FALSE(QFileInfo::exists(in(QLatin1String(FileRotation::BackupFolderName))));
    EXPECT_EQ(asked.size(), 1);
}

// The menu commands open the panel on their tab; it comes back at the next
// start when it was open at quitting, and not once the user has closed it.
TEST_F(InplaceWindowTest, MenuCommandsOpenTheirTabAndTheOpenPanelComesBackAtTheNextStart) {
    auto* tabs = panel()->findChild<QTabWidget*>(u"inplaceTabs"_s);
    trigger("actionInplaceDates");
    EXPECT_TRUE(panel()->isVisible());
    EXPECT_EQ(tabs->currentIndex(), int(InplaceWindow::DatesTab));
    trigger("actionInplaceIcons");
    EXPECT_EQ(tabs->currentIndex(), int(InplaceWindow::IconsTab));

    // Quitting closes the main window first, then the rest.
    window->close();
    window.reset();
    restart();
    openWindow();
    ASSERT_TRUE(waitFor([&] { return panel()->isVisible(); }, 2000));

    panel()->close();
    window.reset();
    restart();
    openWindow();
    waitFor([] { return false; }, 100);
    EXPECT_FALSE(panel()->isVisible());
}

// Help grows the window downwards, keeping its place, far enough for the
// help; pressed again, it leaves the window as it is.
TEST_F(InplaceWindowTest, HelpGrowsTheWindowDownwardsAndOnlyGrows) {
    trigger("actionInplaceRotation");
    const QRect before = panel()->geometry();
    auto* help = panel()->findChild<QPushButton*>(u"inplaceHelpButton"_s);
    help->click();
    EXPECT_TRUE(panel()->isHelpShown());
    ASSERT_TRUE(waitFor([&] { return panel()->height() >= InplaceWindow::HelpHeight; }, 2000));
    EXPECT_EQ(panel()->geometry().topLeft(), before.topLeft());
    EXPECT_EQ(panel()->width(), before.width());

    const auto* grow = panel()->findChild<QAbstractAnimation*>();
    ASSERT_NE(grow, nullptr);
    ASSERT_TRUE(waitFor([&] { return grow->state() == QAbstractAnimation::Stopped; }, 2000));
    const int grown = panel()->height();
    help->click();
    EXPECT_EQ(grow->state(), QAbstractAnimation::Stopped);
    EXPECT_TRUE(panel()->isHelpShown());
    EXPECT_EQ(panel()->height(), grown);
}

} // namespace
