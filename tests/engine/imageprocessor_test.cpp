#include "batchtree.h"
#include "recordingshell.h"

#include "engine/imageprocessor.h"
#include "settings/processingparams.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <sys/stat.h>
#include <thread>

namespace {

// Fails every write and folder creation under the given folders.
class FailingFileSystem : public BatchFileSystem {
public:
    QStringList failWritesUnder;
    QStringList failFoldersUnder;

    bool makePath(const QString& dir) override {
        for (const QString& prefix : failFoldersUnder)
            if (dir.startsWith(prefix))
                return false;
        return BatchFileSystem::makePath(dir);
    }
    bool writeAtomically(const QString& path, const QByteArray& bytes) override {
        for (const QString& prefix : failWritesUnder)
            if (path.startsWith(prefix))
                return false;
        return BatchFileSystem::writeAtomically(path, bytes);
    }
};

class BatchTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(tmp.isValid());
        in = tmp.path() + QStringLiteral("/in");
        out = tmp.path() + QStringLiteral("/out");
        QDir().mkpath(in);
        params = ProcessingParams::defaults();
        // EXIF copying is the metadata unit's business; here it would only add lines.
        params.setBool(ParamKey::PreserveHeader, false);
        params.setInt(ParamKey::ScaleType, ScaleType::Fit);
        params.setInt(ParamKey::Width, 40);
        params.setInt(ParamKey::Height, 40);
        options.parallel = false;
    }

    QStringList run(const QStringList& paths, BatchFileSystem& fileSystem = BatchFileSystem::standard()) {
        ImageProcessor job(shell, renamer, fileSystem);
        job.processFiles(paths, params, out, 0, options);
        job.waitForFinished();
        return shell.calls();
    }
    QString p(const QString& relative) const { return in + QLatin1Char('/') + relative; }
    QString o(const QString& relative) const { return out + QLatin1Char('/') + relative; }

    // Not under /tmp: files there are replaced without a question.
    QTemporaryDir tmp{QDir::currentPath() + QStringLiteral("/batch-XXXXXX")};
    QString in;
    QString out;
    RecordingShell shell;
    Renamer renamer;
    ProcessingParams params;
    BatchOptions options;
};

TEST_F(BatchTest, LooseFilesGiveOneWorkerAndEachFileItsLinesInOrder) {
    batchtree::picture(p("a.png"), 80, 60);
    batchtree::text(p("notes.txt"));
    const QStringList calls = run({p("a.png"), p("notes.txt"), p("missing.png")});
    const QStringList expected = {
        QStringLiteral("begin 2"),
        QStringLiteral("log Processing 'a.png'\n"),
        QStringLiteral("log \tDimension: 40 x 30\n"),
        QStringLiteral("log \tJPEG quality: 80\n"),
        QStringLiteral("log \tFilename: %1\n").arg(o("a.jpg")),
        QStringLiteral("status Processing 'a.png'"),
        QStringLiteral("log Skipping 'notes.txt'\n"),
        QStringLiteral("status Skipping 'notes.txt'"),
        QStringLiteral("end"),
        QStringLiteral("done 2 of 2"),
    };
    EXPECT_EQ(calls, expected);
    const vips::VImage written = vips::VImage::new_from_file(QFile::encodeName(o("a.jpg")).constData());
    EXPECT_EQ(written.width(), 40);
    EXPECT_EQ(written.height(), 30);
    EXPECT_EQ(batchtree::entries(out), QStringList{QStringLiteral("a.jpg")});
}

TEST_F(BatchTest, EmptyFolderStillGetsItsOutputFolderAndCompletesZeroOfZero) {
    QDir().mkpath(p("empty"));
    EXPECT_EQ(run({p("empty")}), (QStringList{QStringLiteral("begin 0"), QStringLiteral("end"),
                                              QStringLiteral("done 0 of 0")}));
    EXPECT_TRUE(QFileInfo(o("empty")).isDir());
}

TEST_F(BatchTest, TreeIsMirroredAndHiddenAndOtherFilesAreCopiedOrSkipped) {
    batchtree::picture(p("a/b/c/deep.png"), 20, 10);
    batchtree::picture(p("a/top.jpg"), 10, 20);
    batchtree::text(p("a/.DS_Store"), "bud1");
    batchtree::text(p("a/b/readme.md"));
    options.copyNonImageFiles = true;
    const QStringList calls = run({p("a")});
    EXPECT_EQ(calls.first(), QStringLiteral("begin 4"));
    EXPECT_EQ(calls.last(), QStringLiteral("done 4 of 4"));
    EXPECT_EQ(batchtree::entries(out),
              (QStringList{QStringLiteral("a"), QStringLiteral("a/.DS_Store"), QStringLiteral("a/b"),
                           QStringLiteral("a/b/c"), QStringLiteral("a/b/c/deep.jpg"), QStringLiteral("a/b/readme.md"),
                           QStringLiteral("a/top.jpg")}));
    EXPECT_EQ(testsupport::readFile(o("a/.DS_Store")), QByteArray("bud1"));
    EXPECT_TRUE(calls.contains(QStringLiteral("log Copying '.DS_Store'\n")));
    EXPECT_TRUE(calls.contains(QStringLiteral("status Copying 'readme.md'")));
    // Pre-order: a's own files, then a/b's, then a/b/c's.
    EXPECT_LT(calls.indexOf(QStringLiteral("status Processing 'top.jpg'")),
              calls.indexOf(QStringLiteral("status Copying 'readme.md'")));
    EXPECT_LT(calls.indexOf(QStringLiteral("status Copying 'readme.md'")),
              calls.indexOf(QStringLiteral("status Processing 'deep.png'")));
}

TEST_F(BatchTest, SequenceNumbersRestartPerFolderAndSkipNoNumber) {
    renamer.setType(Renamer::Sequence);
    renamer.setPrefix(QStringLiteral("p"));
    renamer.setDigits(2);
    renamer.setStartFrom(1);
    batchtree::picture(p("x/1.png"), 8, 8);
    batchtree::text(p("x/2.txt"));
    batchtree::picture(p("x/3.png"), 8, 8);
    batchtree::picture(p("x/y/1.png"), 8, 8);
    // An existing output that the user declines to replace takes no number either.
    batchtree::picture(p("z/1.png"), 8, 8);
    batchtree::picture(p("z/2.png"), 8, 8);
    batchtree::text(o("z/p01.jpg"), "keep me");
    shell.answer = [](const QString&) { return int(BatchShell::Skip); };
    run({p("x"), p("z")});
    EXPECT_EQ(batchtree::entries(out),
              (QStringList{QStringLiteral("x"), QStringLiteral("x/p01.jpg"), QStringLiteral("x/p02.jpg"),
                           QStringLiteral("x/y"), QStringLiteral("x/y/p01.jpg"), QStringLiteral("z"),
                           QStringLiteral("z/p01.jpg")}));
    EXPECT_EQ(testsupport::readFile(o("z/p01.jpg")), QByteArray("keep me"));
    // Both files of z asked for p01, and both were skipped as duplicates.
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("confirm ")).size(), 2);
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("log \tSkipping duplicate")).size(), 2);
}

TEST_F(BatchTest, ReplaceAllHoldsForTheRestOfTheFolderOnly) {
    for (const char* name : {"f/a.png", "f/b.png", "g/a.png", "g/b.png"})
        batchtree::picture(p(QLatin1String(name)), 8, 8);
    for (const char* name : {"f/a.jpg", "f/b.jpg", "g/a.jpg", "g/b.jpg"})
        batchtree::text(o(QLatin1String(name)), "old");
    shell.answer = [](const QString&) { return int(BatchShell::ReplaceAll); };
    run({p("f"), p("g")});
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("confirm ")),
              (QStringList{QStringLiteral("confirm ") + o("f/a.jpg"), QStringLiteral("confirm ") + o("g/a.jpg")}));
    for (const char* name : {"f/a.jpg", "f/b.jpg", "g/a.jpg", "g/b.jpg"})
        EXPECT_NE(testsupport::readFile(o(QLatin1String(name))), QByteArray("old")) << name;
}

TEST_F(BatchTest, SourceIsNeverOverwrittenAndTheWarningComesOncePerWorker) {
    batchtree::picture(p("IMG_1.JPG"), 8, 8);
    batchtree::picture(p("IMG_2.jpg"), 8, 8);
    batchtree::picture(p("sub/IMG_3.jpg"), 8, 8);
    const auto before = batchtree::checksums(in);
    // The output of the loose files is their own folder, and so is sub's.
    out = in;
    const QStringList calls = run({p("IMG_1.JPG"), p("IMG_2.jpg"), p("sub")});
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("overwrite")).size(), 2);
    EXPECT_TRUE(calls.contains(QStringLiteral("log \tFilename: %1\n").arg(p("IMG_1.jpg"))));
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("log \tSource cannot be over-written. Skipping.\n")).size(), 3);
    EXPECT_TRUE(calls.contains(QStringLiteral("status Skipping 'IMG_2.jpg'")));
    EXPECT_TRUE(shell.callsStartingWith(QStringLiteral("confirm")).isEmpty());
    EXPECT_EQ(calls.last(), QStringLiteral("done 3 of 3"));
    EXPECT_EQ(batchtree::checksums(in), before);
}

TEST_F(BatchTest, SlashInANameIsWrittenAsColon) {
    renamer.setType(Renamer::PrefixSuffix);
    renamer.setPrefix(QStringLiteral("2005/02/"));
    batchtree::picture(p("x.png"), 8, 8);
    run({p("x.png")});
    EXPECT_TRUE(QFileInfo::exists(o("2005:02:x.jpg")));
}

TEST_F(BatchTest, WriteFailureEndsItsWorkerAndIsReportedAfterTheOthers) {
    batchtree::picture(p("ok1/a.png"), 8, 8);
    batchtree::picture(p("bad/a.png"), 8, 8);
    batchtree::picture(p("bad/b.png"), 8, 8);
    batchtree::picture(p("ok2/a.png"), 8, 8);
    FailingFileSystem fileSystem;
    fileSystem.failWritesUnder = {o("bad/")};
    const QStringList calls = run({p("bad"), p("ok1"), p("ok2")}, fileSystem);
    EXPECT_TRUE(calls.contains(QStringLiteral("warn Unable to write %1\n").arg(o("bad/a.jpg"))));
    // bad/b.png is never handled, and no status line is shown for bad/a.png.
    EXPECT_FALSE(calls.contains(QStringLiteral("log Processing 'b.png'\n")));
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("status ")).size(), 2);
    EXPECT_TRUE(QFileInfo::exists(o("ok1/a.jpg")));
    EXPECT_TRUE(QFileInfo::exists(o("ok2/a.jpg")));
    const QStringList tail = calls.mid(calls.size() - 3);
    EXPECT_EQ(tail, (QStringList{QStringLiteral("end"),
                                 QStringLiteral("message Write Error: Unable to write in folder '%1'. Please check "
                                                "permission.")
                                     .arg(o("bad")),
                                 QStringLiteral("done 2 of 4")}));
}

TEST_F(BatchTest, FolderThatCannotBeCreatedIsReportedOnceAndTheLastFailureWins) {
    batchtree::picture(p("one/a.png"), 8, 8);
    batchtree::picture(p("two/a.png"), 8, 8);
    batchtree::picture(p("three/a.png"), 8, 8);
    FailingFileSystem fileSystem;
    fileSystem.failFoldersUnder = {o("one"), o("three")};
    const QStringList calls = run({p("one"), p("two"), p("three")}, fileSystem);
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("message ")),
              QStringList{QStringLiteral("message Error Creating Folder: Unable to create folder '%1'. Please try "
                                         "creating it manually in the Finder.")
                              .arg(o("three"))});
    EXPECT_EQ(calls.last(), QStringLiteral("done 1 of 3"));
    EXPECT_TRUE(QFileInfo::exists(o("two/a.jpg")));
}

class BatchRunModeTest : public BatchTest, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override {
        BatchTest::SetUp();
        options.parallel = GetParam();
        options.renderThreads = 2;
    }
};

TEST_P(BatchRunModeTest, CancelStopsBetweenFilesAndDropsWorkDoneAhead) {
    for (int i = 0; i < 6; ++i)
        batchtree::picture(p(QStringLiteral("d/%1.png").arg(i)), 30, 30);
    ImageProcessor job(shell, renamer);
    shell.onStatus = [&](const QString&) { job.cancel(); };
    job.processFiles({p("d")}, params, out, 0, options);
    job.waitForFinished();
    EXPECT_EQ(shell.calls().last(), QStringLiteral("done 1 of 6"));
    EXPECT_EQ(batchtree::entries(out), (QStringList{QStringLiteral("d"), QStringLiteral("d/0.jpg")}));
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("log Processing")).size(), 1);
}

TEST_P(BatchRunModeTest, PauseHoldsBetweenFilesAndCancelEndsAPausedBatch) {
    for (int i = 0; i < 4; ++i)
        batchtree::picture(p(QStringLiteral("d/%1.png").arg(i)), 30, 30);
    ImageProcessor job(shell, renamer);
    shell.onStatus = [&](const QString& text) {
        if (text.contains(QLatin1String("'0.png'")))
            job.pause();
    };
    job.processFiles({p("d")}, params, out, 0, options);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("status ")).size(), 1);
    EXPECT_TRUE(job.isRunning());
    job.cancel();
    job.waitForFinished();
    EXPECT_EQ(shell.calls().last(), QStringLiteral("done 1 of 4"));
}

TEST_P(BatchRunModeTest, PausingTwiceResumes) {
    for (int i = 0; i < 3; ++i)
        batchtree::picture(p(QStringLiteral("d/%1.png").arg(i)), 30, 30);
    ImageProcessor job(shell, renamer);
    shell.onStatus = [&](const QString&) {
        job.pause();
        job.pause();
    };
    job.processFiles({p("d")}, params, out, 0, options);
    job.waitForFinished();
    EXPECT_EQ(shell.calls().last(), QStringLiteral("done 3 of 3"));
}

INSTANTIATE_TEST_SUITE_P(SerialAndParallel, BatchRunModeTest, ::testing::Bool());

TEST_F(BatchTest, FolderLoopIsEnteredOnceWithAWarning) {
    batchtree::picture(p("a/x.png"), 8, 8);
    ASSERT_TRUE(QFile::link(p("a"), p("a/loop")));
    const QStringList calls = run({p("a")});
    EXPECT_TRUE(calls.contains(
        QStringLiteral("warn Skipping folder '%1': already visited (link loop)\n").arg(p("a/loop"))));
    EXPECT_EQ(calls.last(), QStringLiteral("done 1 of 1"));
    EXPECT_EQ(batchtree::entries(out), (QStringList{QStringLiteral("a"), QStringLiteral("a/x.jpg")}));
}

TEST_F(BatchTest, LinkedFilesAndFoldersAreFollowed) {
    batchtree::picture(tmp.path() + QStringLiteral("/elsewhere/pic.png"), 8, 8);
    QDir().mkpath(p("a"));
    ASSERT_TRUE(QFile::link(tmp.path() + QStringLiteral("/elsewhere"), p("a/linked")));
    ASSERT_TRUE(QFile::link(tmp.path() + QStringLiteral("/elsewhere/pic.png"), p("a/alias.png")));
    ASSERT_TRUE(QFile::link(tmp.path() + QStringLiteral("/nowhere"), p("a/dangling")));
    run({p("a")});
    EXPECT_EQ(batchtree::entries(out), (QStringList{QStringLiteral("a"), QStringLiteral("a/alias.jpg"),
                                                    QStringLiteral("a/linked"), QStringLiteral("a/linked/pic.jpg")}));
    EXPECT_EQ(shell.calls().last(), QStringLiteral("done 2 of 2"));
}

TEST_F(BatchTest, CorruptAndFakePicturesAreSkippedWithoutStoppingTheBatch) {
    batchtree::picture(p("good.jpg"), 16, 16);
    QByteArray truncated = testsupport::readFile(p("good.jpg")).left(40);
    batchtree::text(p("broken.jpg"), truncated);
    batchtree::text(p("table.csv"), "1,2,3\n4,5,6\n");
    // Reading a pipe would wait for a writer forever.
    ASSERT_EQ(::mkfifo(QFile::encodeName(p("pipe.jpg")).constData(), 0600), 0);
    options.copyNonImageFiles = true;
    const QStringList calls = run({p("broken.jpg"), p("table.csv"), p("pipe.jpg"), p("good.jpg")});
    EXPECT_TRUE(calls.contains(QStringLiteral("status Copying 'broken.jpg'")));
    EXPECT_TRUE(calls.contains(QStringLiteral("log Copying 'table.csv'\n")));
    // A pipe is not copied, but the line says what the option asked for.
    EXPECT_TRUE(calls.contains(QStringLiteral("log Copying 'pipe.jpg'\n")));
    EXPECT_TRUE(calls.contains(QStringLiteral("status Processing 'good.jpg'")));
    EXPECT_EQ(calls.last(), QStringLiteral("done 4 of 4"));
    EXPECT_EQ(batchtree::entries(out), (QStringList{QStringLiteral("broken.jpg"), QStringLiteral("good.jpg"),
                                                    QStringLiteral("table.csv")}));
}

TEST_F(BatchTest, ThumbnailIsMadeOnlyForWrittenFilesAndFitsSixtyFour) {
    shell.thumbnailsWanted = true;
    batchtree::picture(p("wide.png"), 300, 100);
    batchtree::text(p("n.txt"));
    run({p("wide.png"), p("n.txt")});
    EXPECT_EQ(shell.thumbnails, 1);
    EXPECT_EQ(shell.thumbnailWidth, 64);
    EXPECT_EQ(shell.thumbnailHeight, 21);
}

TEST_F(BatchTest, SingleFileRunReplacesAnOlderResultWithoutAsking) {
    batchtree::picture(p("one.png"), 50, 50);
    ImageProcessor job(shell, renamer);
    const auto first = job.processSingleFile(p("one.png"), params, false);
    ASSERT_TRUE(first.has_value());
    EXPECT_TRUE(first->startsWith(QStringLiteral("/tmp/")));
    EXPECT_TRUE(first->endsWith(QStringLiteral("/one.jpg")));
    const auto second = job.processSingleFile(p("one.png"), params, false);
    EXPECT_EQ(second, first);
    EXPECT_TRUE(shell.callsStartingWith(QStringLiteral("confirm")).isEmpty());
    EXPECT_EQ(shell.callsStartingWith(QStringLiteral("status ")).last(), QStringLiteral("status Processing one.png"));
    const QString folder = QFileInfo(*first).path();
    ImageProcessor::removeTmpFolder();
    EXPECT_FALSE(QFileInfo::exists(folder));
}

} // namespace
