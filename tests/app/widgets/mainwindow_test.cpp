#include "app/widgets/log/activitylogwindow.h"
#include "app/widgets/main/droparea.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/preview/previewpane.h"
#include "app/widgets/settings/settingspanel.h"
#include "app/widgets/sheets/progresssheet.h"
#include "app/windowtest.h"

#include <QAction>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QTest>
#include <QUrl>
#include <QWindow>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class MainWindowTest : public WindowTest {
  protected:
    void drop(const QStringList& paths) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& path : paths)
            urls.append(QUrl::fromLocalFile(path));
        data.setUrls(urls);
        QWidget* area = window->findChild<QWidget*>("dropArea");
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(area, &enter);
        ASSERT_TRUE(enter.isAccepted());
        QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(area, &dropped);
    }
};

TEST_F(MainWindowTest, DroppedPicturesRunUnderTheProgressSheetAndEndInTheStatusLine) {
    const QStringList pictures = makePictures(in(), 3);
    QDir().mkpath(out);
    testsupport::writeFile(o("pic01.jpg"), "old");
    bool sheetUp = false;
    int barValue = -1;
    int barMaximumAtFirst = -1;
    auto* bar = window->progressSheet()->findChild<QProgressBar*>("progressBar");
    QObject::connect(controller.get(), &AppController::progressSheetShown, [&](bool shown) {
        if (shown)
            barMaximumAtFirst = bar->maximum();
    });
    sheets.setAnswerHook([&](const SheetRequest&) {
        sheetUp = window->progressSheet()->isVisible();
        barValue = window->progressSheet()->findChild<QProgressBar*>("progressBar")->value();
        return SheetAnswer{BatchShell::Replace, {}};
    });
    drop(pictures);
    ASSERT_TRUE(waitForIdle());
    EXPECT_TRUE(sheetUp);
    // Busy until the files are counted, then one step a file.
    EXPECT_EQ(barMaximumAtFirst, 0);
    EXPECT_EQ(barValue, 1);
    EXPECT_EQ(bar->maximum(), 3);
    EXPECT_FALSE(window->progressSheet()->isVisible());
    EXPECT_EQ(window->findChild<QLabel*>("statusLine")->text(), "Processing Completed (3 files processed)");

    // A drop of something that is no local file is refused.
    QMimeData text;
    text.setText("hello");
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window->findChild<QWidget*>("dropArea"), &enter);
    EXPECT_FALSE(enter.isAccepted());
}

TEST_F(MainWindowTest, SingleFileRunLeavesTheWindowIdle) {
    const QStringList pictures = makePictures(in(), 1);
    models->defaults().setInt("SingleFile", 2);
    drop(pictures);
    ASSERT_TRUE(waitForIdle());
    ASSERT_EQ(desktop.copied.size(), 1);
    for (const char* name : {"actionOpen", "actionWatermarks", "actionRename"})
        EXPECT_TRUE(window->findChild<QAction*>(name)->isEnabled()) << name;
}

TEST_F(MainWindowTest, DestinationMenuRemovesAndChoosesEntries) {
    auto* menu = window->findChild<QComboBox*>("destinationMenu");
    ASSERT_EQ(menu->count(), 5); // two folders, separator, remove, choose
    Q_EMIT menu->activated(1);
    Q_EMIT menu->activated(3); // Remove Selected Entry
    EXPECT_EQ(models->destinations().entries(), QStringList{out});
    EXPECT_EQ(menu->currentIndex(), 0);

    sheets.setNextAnswer(1, "/chosen");
    Q_EMIT menu->activated(3); // Choose a Folder ... (one entry now)
    EXPECT_EQ(models->destinations().entries(), (QStringList{"/chosen", out}));
    EXPECT_EQ(menu->itemData(0, Qt::ToolTipRole).toString(), "/chosen");
    EXPECT_EQ(asked, QStringList{"Choose a Folder"});
}

TEST_F(MainWindowTest, QuitDuringAReplaceQuestionSkipsItAndCloses) {
    const QStringList pictures = makePictures(in(), 4);
    QDir().mkpath(out);
    testsupport::writeFile(o("pic00.jpg"), "old");
    controller->processFiles(pictures);
    ASSERT_TRUE(waitFor([this] { return sheets.currentDialog() && sheets.currentDialog()->isVisible(); }));
    QDialog* question = sheets.currentDialog();
    // The question comes up below the progress sheet, leaving the bar in sight.
    EXPECT_TRUE(window->progressSheet()->isVisible());
    EXPECT_FALSE(question->frameGeometry().intersects(window->progressSheet()->frameGeometry()));
    EXPECT_GE(question->width(), 420);

    // Ctrl+Q on the question answers it with Skip; the window closes once the
    // cancelled batch is over.
    question->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(question));
    QTest::keyClick(question, Qt::Key_Q, Qt::ControlModifier);
    ASSERT_TRUE(waitFor([this] { return !window->isVisible(); }, 5000));
    EXPECT_FALSE(controller->isBatchRunning());
    EXPECT_TRUE(waitFor([this] { return controller->status() == "Cancelled (processed 1 of 4)"; }, 1000))
        << controller->status().toStdString();
    EXPECT_EQ(QFile(o("pic00.jpg")).size(), 3); // skipped, not replaced
}

// A batch closed from the window manager, or with Ctrl+Q while its sheet has
// the keyboard, stops after the file in hand and the window closes.
class MainWindowClosing : public MainWindowTest, public ::testing::WithParamInterface<bool> {};

TEST_P(MainWindowClosing, DuringABatchCancelsItAfterTheFileInHand) {
    const bool shortcut = GetParam();
    controller->processFiles(makePictures(in(), 30));
    controller->pause(); // holds the batch between two files
    ASSERT_TRUE(waitFor([this] { return window->progressSheet()->isVisible(); }));
    ASSERT_TRUE(controller->isBatchRunning());
    // Nothing modal stands between the window manager and the window; the
    // window's own inputs rest while the sheet is up.
    EXPECT_EQ(QGuiApplication::modalWindow(), nullptr);
    EXPECT_FALSE(window->findChild<QWidget*>("dropArea")->isEnabled());
    if (shortcut) {
        window->progressSheet()->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window->progressSheet()));
        QTest::keyClick(window->progressSheet(), Qt::Key_Q, Qt::ControlModifier);
    } else {
        window->windowHandle()->close();
    }
    ASSERT_TRUE(waitFor([this] { return !window->isVisible(); }, 5000));
    EXPECT_FALSE(controller->isBatchRunning());
    // The window may close before the completion call has arrived.
    EXPECT_TRUE(waitFor([this] { return controller->status().startsWith("Cancelled (processed "); }, 1000))
        << controller->status().toStdString();
}

INSTANTIATE_TEST_SUITE_P(WindowManagerAndShortcut, MainWindowClosing, ::testing::Bool());

TEST_F(MainWindowTest, AtItsLeastSizeTheWindowClipsNothing) {
    window->resize(1, 1);
    waitFor([] { return true; }, 50);
    EXPECT_GE(window->height(), 450);
    for (const char* name :
         {"dropArea", "destinationMenu", "settingsPanel", "statusLine", "statusThumbnail"}) {
        QWidget* widget = window->findChild<QWidget*>(name);
        ASSERT_TRUE(widget) << name;
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << name;
        EXPECT_GE(widget->height(), widget->minimumSizeHint().height()) << name;
    }
    // The settings scroll up and down, never sideways.
    SettingsPanel* panel = window->settingsPanel();
    EXPECT_GE(panel->viewport()->width(), panel->widget()->minimumSizeHint().width());
    EXPECT_EQ(panel->widget()->width(), panel->viewport()->width());
    // The drop hint lies whole inside its box.
    auto* area = window->findChild<DropArea*>("dropArea");
    const DropArea::HintLayout hint = area->hintLayout(area->size());
    EXPECT_TRUE(QRectF(area->rect()).contains(hint.box));
    EXPECT_TRUE(hint.box.contains(hint.title)) << hint.title.top() << " " << hint.box.top();
    EXPECT_TRUE(hint.box.contains(hint.detail)) << hint.detail.bottom() << " " << hint.box.bottom();
    EXPECT_GE(hint.symbolCentre.y() - 26, hint.box.top());
}

TEST_F(MainWindowTest, ActivityLogLeftOpenAtQuitOpensAgain) {
    window->findChild<QAction*>("actionActivityLog")->trigger();
    ASSERT_TRUE(window->activityLog()->isVisible());
    // Quitting closes the main window, then Qt closes the application's
    // other windows.
    window->windowHandle()->close();
    ASSERT_FALSE(window->isVisible());
    window->activityLog()->windowHandle()->close();
    EXPECT_TRUE(models->defaults().boolValue("ActivityLogVisible"));
    MainWindow again(*controller, *models, sheets);
    again.show();
    EXPECT_TRUE(waitFor([&again] { return again.activityLog()->isVisible(); }, 2000));
}

TEST_F(MainWindowTest, PreviewPaneIsHiddenUntilAskedForAndShowsWhatWasDropped) {
    auto* action = window->findChild<QAction*>("actionPreview");
    ASSERT_TRUE(action);
    EXPECT_FALSE(window->previewPane()->isVisible());
    // Hidden, the pane leaves no room behind: the settings reach the margin.
    waitFor([] { return false; }, 50);
    EXPECT_GE(window->settingsPanel()->geometry().right(), window->centralWidget()->width() - 16 - 2);
    action->trigger();
    EXPECT_TRUE(window->previewPane()->isVisible());
    EXPECT_TRUE(models->defaults().boolValue("PreviewVisible"));

    drop(makePictures(in(), 2, 40));
    ASSERT_TRUE(waitForIdle());
    auto* position = window->findChild<QLabel*>("previewPosition");
    EXPECT_EQ(position->text(), "1 of 2: pic00.jpg");
    auto* pixels = window->findChild<QLabel*>("previewPixels");
    // The settings are Fit 16 x 16: the pane shows the output's size.
    EXPECT_TRUE(waitFor([pixels] { return pixels->text() == "16 × 16"; }, 20000))
        << qPrintable(pixels->text());
    window->findChild<QWidget*>("previewNext")->setFocus();
    QTest::mouseClick(window->findChild<QWidget*>("previewNext"), Qt::LeftButton);
    EXPECT_EQ(position->text(), "2 of 2: pic01.jpg");
    EXPECT_FALSE(window->findChild<QWidget*>("previewNext")->isEnabled());

    MainWindow again(*controller, *models, sheets);
    again.show();
    EXPECT_TRUE(again.previewPane()->isVisible());
    again.findChild<QAction*>("actionPreview")->trigger();
    EXPECT_FALSE(again.previewPane()->isVisible());
    EXPECT_FALSE(models->defaults().boolValue("PreviewVisible"));
}

TEST_F(MainWindowTest, ActivityLogMenuItemTogglesTheWindow) {
    auto* action = window->findChild<QAction*>("actionActivityLog");
    action->trigger();
    EXPECT_TRUE(window->activityLog()->isVisible());
    EXPECT_TRUE(models->defaults().boolValue("ActivityLogVisible"));
    window->activityLog()->close();
    EXPECT_FALSE(action->isChecked());
    EXPECT_FALSE(models->defaults().boolValue("ActivityLogVisible"));
}

TEST_F(MainWindowTest, TitleWithSuffixAndWithoutTitle) {
    window->setTitle(QStringLiteral("Photos"));
    window->setTitleSuffix(QStringLiteral("(3)"));
    EXPECT_EQ(window->windowTitle(), "Photos (3)");
    window->setTitle(std::nullopt);
    EXPECT_EQ(window->windowTitle(), "null (3)");
}

} // namespace
