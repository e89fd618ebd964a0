#include "app/guitest.h"

#include "app/widgets/sheets/foldernamesheet.h"

#include <QDialog>
#include <QDirIterator>

#include <thread>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class AppControllerTest : public GuiTest {};

QStringList filesIn(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

// Every file under the folder, at any depth.
QStringList batchFiles(const QString& folder) {
    QStringList found;
    for (QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories); it.hasNext();)
        found.append(it.next());
    return found;
}

TEST_F(AppControllerTest, ClutterQuestionOnlyForMoreThanThreePathsOnTheDesktop) {
    models->destinations().add(AppController::desktopFolder());
    const QStringList pictures = makePictures(in(), 4);

    sheets.setNextAnswer(0); // Cancel
    controller->processFiles(pictures);
    EXPECT_EQ(asked, QStringList{"Clutter warning"});
    EXPECT_FALSE(controller->isBatchRunning());
    EXPECT_FALSE(controller->isProcessing());

    asked.clear();
    ASSERT_TRUE(runBatch(pictures.mid(0, 3)));
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_EQ(filesIn(AppController::desktopFolder()).size(), 3);
    EXPECT_EQ(controller->status(), "Processing Completed (3 files processed)");
    // Outputs on the desktop are not revealed: they are in sight already.
    EXPECT_TRUE(desktop.revealed.isEmpty());

    // Four paths elsewhere ask nothing.
    models->destinations().select(1);
    ASSERT_TRUE(runBatch(pictures));
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_EQ(desktop.revealed, QStringList{out});
    QDir(AppController::desktopFolder()).removeRecursively();
}

TEST_F(AppControllerTest, FolderNameSheetPicksTheOutputFolderOrCancels) {
    models->defaults().setBool("OnTheFlyFolder", true);
    const QStringList pictures = makePictures(in(), 2);

    sheets.setNextAnswer(0);
    controller->processFiles(pictures);
    EXPECT_FALSE(controller->isBatchRunning());
    EXPECT_FALSE(QFileInfo::exists(out));

    // A typed path keeps only its last part, inside the destination.
    sheets.setNextAnswer(1, "../elsewhere/Holiday");
    ASSERT_TRUE(runBatch(pictures));
    EXPECT_EQ(filesIn(o("Holiday")), (QStringList{"pic00.jpg", "pic01.jpg"}));
    EXPECT_EQ(FolderNameSheet::outputFolder("/d", "  "), "/d");
    EXPECT_EQ(FolderNameSheet::outputFolder("/d", "a/b/"), "/d/b");
}

TEST_F(AppControllerTest, ReplaceAnsweredAllAsksOnceAndReplacesEveryFile) {
    const QStringList pictures = makePictures(in(), 3);
    QDir().mkpath(out);
    for (const QString& name : filesIn(in()))
        testsupport::writeFile(o(name), "old");

    sheets.setNextAnswer(BatchShell::ReplaceAll);
    ASSERT_TRUE(runBatch(pictures));
    EXPECT_EQ(asked, QStringList{"File Exists"});
    for (const QString& name : filesIn(in()))
        EXPECT_NE(testsupport::readFile(o(name)), "old") << name.toStdString();
    EXPECT_EQ(controller->status(), "Processing Completed (3 files processed)");
}

TEST_F(AppControllerTest, BatchCancelledAfterFourOfTenReportsTheCounts) {
    const QStringList pictures = makePictures(in(), 10);
    // The fourth file's question is the moment to cancel: the file in hand
    // is finished (skipped), and no other is started.
    QDir().mkpath(out);
    testsupport::writeFile(o("pic03.jpg"), "old");
    sheets.setAnswerHook([this](const SheetRequest&) {
        controller->cancel();
        return SheetAnswer{BatchShell::Skip, {}};
    });
    ASSERT_TRUE(runBatch(pictures));
    EXPECT_EQ(controller->status(), "Cancelled (processed 4 of 10)");
    EXPECT_EQ(filesIn(out), (QStringList{"pic00.jpg", "pic01.jpg", "pic02.jpg", "pic03.jpg"}));
    EXPECT_EQ(testsupport::readFile(o("pic03.jpg")), "old");
    EXPECT_EQ(controller->progress(), 0);
    EXPECT_TRUE(controller->thumbnail().isNull());
}

TEST_F(AppControllerTest, PauseHoldsTheBatchBetweenFilesUntilResumed) {
    const QStringList pictures = makePictures(in(), 4);
    QDir().mkpath(out);
    testsupport::writeFile(o("pic01.jpg"), "old");
    sheets.setAnswerHook([this](const SheetRequest&) {
        controller->pause();
        return SheetAnswer{BatchShell::Replace, {}};
    });
    controller->processFiles(pictures);
    ASSERT_TRUE(waitFor([this] { return controller->pauseButtonTitle() == "Resume"; }));
    EXPECT_TRUE(controller->status().endsWith(" - PAUSED"));
    // Paused after the second file: nothing more is written.
    EXPECT_FALSE(waitFor([this] { return filesIn(out).size() > 2; }, 400));
    EXPECT_TRUE(controller->isProcessing());

    controller->pause();
    EXPECT_EQ(controller->pauseButtonTitle(), "Pause");
    ASSERT_TRUE(waitForIdle());
    EXPECT_EQ(controller->status(), "Processing Completed (4 files processed)");
}

TEST_F(AppControllerTest, QuestionFromTheBatchWaitsWhileAnotherSheetIsUp) {
    const QStringList pictures = makePictures(in(), 2);
    QDir().mkpath(out);
    testsupport::writeFile(o("pic00.jpg"), "old");

    std::thread other([this] { sheets.runMessageSheet("Elsewhere", "A message from another thread"); });
    ASSERT_TRUE(waitFor([this] { return sheets.currentDialog() != nullptr; }));
    QDialog* first = sheets.currentDialog();

    controller->processFiles(pictures);
    ASSERT_TRUE(waitFor([this] { return sheets.waitingCount() == 1; }));
    // The replace question is queued behind the message, not stacked on it.
    EXPECT_FALSE(waitFor([this] { return !controller->isBatchRunning(); }, 300));
    EXPECT_EQ(sheets.currentDialog(), first);
    EXPECT_EQ(asked, QStringList{"Elsewhere"});

    sheets.setNextAnswer(BatchShell::Replace);
    first->done(0);
    ASSERT_TRUE(waitForIdle());
    other.join();
    EXPECT_EQ(asked, (QStringList{"Elsewhere", "File Exists"}));
    EXPECT_NE(testsupport::readFile(o("pic00.jpg")), "old");
}

TEST_F(AppControllerTest, QuittingWithAQuestionUpSkipsItAndFinishesCleanly) {
    const QStringList pictures = makePictures(in(), 6);
    QDir().mkpath(out);
    testsupport::writeFile(o("pic02.jpg"), "old");
    controller->processFiles(pictures);
    ASSERT_TRUE(waitFor([this] { return sheets.currentDialog() != nullptr; }));

    bool ready = false;
    QObject::connect(controller.get(), &AppController::readyToQuit, [&ready] { ready = true; });
    QElapsedTimer timer;
    timer.start();
    // A batch of tiny files may be over before requestQuit looks; otherwise
    // readyToQuit says when it is.
    if (!controller->requestQuit()) {
        ASSERT_TRUE(waitFor([&ready] { return ready; }, 5000));
    }
    EXPECT_FALSE(controller->isBatchRunning());
    EXPECT_LT(timer.elapsed(), 3000);
    EXPECT_TRUE(waitFor([this] { return controller->status() == "Cancelled (processed 3 of 6)"; }, 1000))
        << controller->status().toStdString();
    // The question's file was skipped, nothing after it started, and no
    // half-written file is left behind.
    EXPECT_EQ(filesIn(out), (QStringList{"pic00.jpg", "pic01.jpg", "pic02.jpg"}));
    EXPECT_EQ(testsupport::readFile(o("pic02.jpg")), "old");
    EXPECT_TRUE(desktop.revealed.isEmpty());
    EXPECT_TRUE(controller->requestQuit());
}

TEST_F(AppControllerTest, EngineMessagesComeUpAsSheetsBeforeTheCompletionLine) {
    const QStringList pictures = makePictures(in(), 2);
    // Writing into the input folder would replace the originals.
    models->destinations().add(in());
    QString statusWhenAsked = "unset";
    sheets.setAnswerHook([&](const SheetRequest&) {
        statusWhenAsked = controller->status();
        return SheetAnswer{1, {}};
    });
    ASSERT_TRUE(runBatch(pictures));
    EXPECT_EQ(asked, QStringList{"Attempt to Overwrite Original"});
    EXPECT_EQ(filesIn(in()), (QStringList{"pic00.jpg", "pic01.jpg"}));

    asked.clear();
    testsupport::writeFile(scratch->filePath("file"), "x");
    models->destinations().add(scratch->filePath("file/out"));
    ASSERT_TRUE(runBatch(pictures));
    EXPECT_EQ(asked, QStringList{"Error Creating Folder"});
    EXPECT_FALSE(statusWhenAsked.startsWith("Cancelled")) << statusWhenAsked.toStdString();
    EXPECT_EQ(controller->status(), "Cancelled (processed 0 of 2)");
}

TEST_F(AppControllerTest, SingleFileOptionsUseTheClipboardOrTheViewerButNeverForAFolder) {
    const QStringList pictures = makePictures(in(), 1);
    models->defaults().setInt("SingleFile", 2);
    bool busy = false;
    QObject::connect(controller.get(), &AppController::processingChanged,
                     [&busy](bool processing) { busy = busy || processing; });
    controller->processFiles(pictures);
    // The run goes on off the main thread; the window is idle again after it.
    EXPECT_TRUE(busy);
    ASSERT_TRUE(waitForIdle());
    ASSERT_EQ(desktop.copied.size(), 1);
    EXPECT_TRUE(desktop.copied.first().endsWith("/pic00.jpg"));
    EXPECT_EQ(controller->status(), "Copied to Clipboard");
    EXPECT_FALSE(controller->isProcessing());

    models->defaults().setInt("SingleFile", 3);
    controller->processFiles(pictures);
    ASSERT_TRUE(waitForIdle());
    EXPECT_EQ(desktop.opened, desktop.copied);

    // A lone folder is a batch whatever the preference says.
    ASSERT_TRUE(runBatch({in()}));
    EXPECT_EQ(filesIn(o("in")), QStringList{"pic00.jpg"});
    EXPECT_FALSE(controller->isProcessing());

    models->defaults().setInt("SingleFile", 1);
    ASSERT_TRUE(runBatch(pictures));
    EXPECT_EQ(filesIn(AppController::desktopFolder()), QStringList{"pic00.jpg"});
    EXPECT_EQ(controller->outputFolder(), AppController::desktopFolder());
    QDir(AppController::desktopFolder()).removeRecursively();
}

TEST_F(AppControllerTest, QuittingDuringASingleFileRunWaitsForItAndOpensNothing) {
    const QStringList pictures = makePictures(in(), 1, 600);
    models->defaults().setInt("SingleFile", 3);
    bool ready = false;
    QObject::connect(controller.get(), &AppController::readyToQuit, [&ready] { ready = true; });
    controller->processFiles(pictures);
    if (!controller->requestQuit()) {
        ASSERT_TRUE(waitFor([&ready] { return ready; }));
    }
    ASSERT_TRUE(waitForIdle());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

// The sheet comes up before the input is counted, with no total; the total
// follows, and paths that are not there are named in the log.
TEST_F(AppControllerTest, ProgressSheetShowsBeforeTheTotalAndMissingPathsAreLogged) {
    makePictures(in("trip"), 3);
    QList<int> maximums;
    int maximumWhenShown = 0;
    QObject::connect(controller.get(), &AppController::progressChanged,
                     [&maximums](int, int maximum) { maximums.append(maximum); });
    QObject::connect(controller.get(), &AppController::progressSheetShown, [&](bool shown) {
        if (shown)
            maximumWhenShown = controller->progressMaximum();
    });
    ASSERT_TRUE(runBatch({in("gone.jpg"), in("trip")}));
    EXPECT_EQ(maximumWhenShown, BatchShell::UnknownTotal);
    ASSERT_FALSE(maximums.isEmpty());
    EXPECT_EQ(maximums.first(), BatchShell::UnknownTotal);
    EXPECT_TRUE(maximums.contains(3));
    EXPECT_EQ(controller->status(), "Processing Completed (3 files processed)");
    EXPECT_TRUE(models->log().text().startsWith("Unable to find '" + in("gone.jpg") + "'\n"));
    EXPECT_EQ(filesIn(o("trip")).size(), 3);

    ASSERT_TRUE(runBatch({in("gone.jpg")}));
    EXPECT_EQ(models->log().text(), "Unable to find '" + in("gone.jpg") + "'\n");
}

// Quitting straight after a drop lands while the batch lists a large tree:
// the listing stops, nothing is written, and the window may close.
TEST_F(AppControllerTest, QuittingWhileTheInputIsListedEndsTheBatchWithoutWriting) {
    for (int folder = 0; folder < 10; ++folder) {
        QDir().mkpath(in(QStringLiteral("big/%1").arg(folder)));
        for (int i = 0; i < 200; ++i)
            testsupport::writeFile(in(QStringLiteral("big/%1/%2.txt").arg(folder).arg(i)), "x");
    }
    bool ready = false;
    QObject::connect(controller.get(), &AppController::readyToQuit, [&ready] { ready = true; });
    controller->processFiles({in("big")});
    if (!controller->requestQuit()) {
        ASSERT_TRUE(waitFor([&ready] { return ready; }));
    }
    ASSERT_TRUE(waitForIdle());
    EXPECT_TRUE(controller->status().startsWith("Cancelled")) << controller->status().toStdString();
    EXPECT_TRUE(batchFiles(out).isEmpty());
}

TEST_F(AppControllerTest, PathsOpenedTogetherFormOneBatchAndTheLogKeepsTheirLines) {
    const QStringList pictures = makePictures(in(), 2);
    testsupport::writeFile(in("notes.txt"), "not a picture");
    controller->openFile(pictures[0]);
    controller->openFile(in("notes.txt"));
    controller->openFile(pictures[1]);
    ASSERT_TRUE(waitFor([this] { return controller->isProcessing(); }));
    ASSERT_TRUE(waitForIdle());
    EXPECT_EQ(controller->status(), "Processing Completed (3 files processed)");
    const QString log = models->log().text();
    EXPECT_LT(log.indexOf("Processing 'pic00.jpg'"), log.indexOf("Copying 'notes.txt'\n"));
    EXPECT_LT(log.indexOf("Copying 'notes.txt'\n"), log.indexOf("Processing 'pic01.jpg'"));

    // The next batch starts with an empty log.
    sheets.setNextAnswer(BatchShell::Replace);
    ASSERT_TRUE(runBatch({pictures[0]}));
    EXPECT_EQ(models->log().text().count("Processing '"), 1);
}

} // namespace
