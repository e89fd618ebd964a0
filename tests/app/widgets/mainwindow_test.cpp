#include "app/guitest.h"
#include "app/widgets/log/activitylogwindow.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/sheets/progresssheet.h"

#include <QAction>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QUrl>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class MainWindowTest : public GuiTest {
  protected:
    void SetUp() override {
        GuiTest::SetUp();
        window = std::make_unique<MainWindow>(*controller, *models, sheets);
        window->show();
    }
    void TearDown() override {
        window.reset();
        GuiTest::TearDown();
    }
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
    std::unique_ptr<MainWindow> window;
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

TEST_F(MainWindowTest, ClosingDuringABatchWaitsForItThenCloses) {
    const QStringList pictures = makePictures(in(), 4);
    QDir().mkpath(out);
    testsupport::writeFile(o("pic00.jpg"), "old");
    controller->processFiles(pictures);
    ASSERT_TRUE(waitFor([this] { return sheets.currentDialog() != nullptr; }));
    // Closed at once when the cancelled batch of tiny files is already over,
    // else when it is.
    window->close();
    ASSERT_TRUE(waitFor([this] { return !window->isVisible(); }, 5000));
    EXPECT_FALSE(controller->isBatchRunning());
    EXPECT_TRUE(waitFor([this] { return controller->status() == "Cancelled (processed 1 of 4)"; }, 1000))
        << controller->status().toStdString();
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
