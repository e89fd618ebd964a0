#include "engine/batch/batchtree.h"

#include "engine/batch/imageprocessor.h"
#include "metadata/kvimageinfo.h"
#include "support/failingfilesystem.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <set>
#include <sys/stat.h>
#include <thread>

using namespace quillet;

namespace {

class BatchTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QDir().mkpath(in);
        // EXIF copying is the metadata tests' business; elsewhere it would only add lines.
        params.setBool(ParamKey::PreserveHeader, false);
        params.setInt(ParamKey::ScaleType, ScaleType::Fit);
        params.setInt(ParamKey::Width, 40);
        params.setInt(ParamKey::Height, 40);
        options.parallel = false;
    }
    QStringList run(const QStringList& paths, FileSystem& fileSystem = FileSystem::standard()) {
        ImageProcessor job(shell, renamer, fileSystem);
        job.processFiles(paths, ProcessingRequest::fromRecord(params), out, 0, options);
        job.waitForFinished();
        return shell.calls();
    }
    QString p(const QString& relative) const { return in + QLatin1Char('/') + relative; }
    QString o(const QString& relative) const { return out + QLatin1Char('/') + relative; }

    std::unique_ptr<QTemporaryDir> tmp = testsupport::scratchDir(QStringLiteral("batch"));
    QString in = tmp->path() + QStringLiteral("/in");
    QString out = tmp->path() + QStringLiteral("/out");
    RecordingShell shell;
    Renamer renamer;
    ProcessingParams params = ProcessingParams::defaults();
    BatchOptions options;
};

TEST_F(BatchTest, LooseFilesGiveOneWorkerAndEachFileItsLinesInOrder) {
    renamer.setType(Renamer::PrefixSuffix);
    renamer.setPrefix(QStringLiteral("2005/02/")); // a slash cannot be in a file name: it is written as ':'
    batchtree::picture(p("a.png"), 80, 60);
    batchtree::text(p("notes.txt"));
    EXPECT_EQ(
        run({p("a.png"), p("notes.txt"), p("missing.png")}),
        (QStringList{"begin -1", "warn Unable to find '" + p("missing.png") + "'\n", "total 2",
                     "log Processing 'a.png'\n", "log \tDimension: 40 x 30\n", "log \tJPEG quality: 80\n",
                     "log \tFilename: " + o("2005:02:a.jpg") + "\n", "status Processing 'a.png'",
                     "log Skipping 'notes.txt'\n", "status Skipping 'notes.txt'", "end", "done 2 of 2"}));
    const vips::VImage written =
        vips::VImage::new_from_file(QFile::encodeName(o("2005:02:a.jpg")).constData());
    EXPECT_EQ(std::pair(written.width(), written.height()), std::pair(40, 30));
    EXPECT_EQ(batchtree::entries(out), "2005:02:a.jpg");
}

TEST_F(BatchTest, EmptyFolderStillGetsItsOutputFolderAndCompletesZeroOfZero) {
    QDir().mkpath(p("empty"));
    EXPECT_EQ(run({p("empty")}), (QStringList{"begin -1", "total 0", "end", "done 0 of 0"}));
    EXPECT_TRUE(QFileInfo(o("empty")).isDir());
}

TEST_F(BatchTest, TreeIsMirroredAndHiddenAndOtherFilesAreCopied) {
    batchtree::picture(p("a/b/c/deep.png"), 20, 10);
    batchtree::picture(p("a/top.jpg"), 10, 20);
    batchtree::text(p("a/.DS_Store"), "bud1");
    batchtree::text(p("a/b/readme.md"));
    options.copyNonImageFiles = true;
    const QStringList calls = run({p("a")});
    EXPECT_EQ(calls.mid(0, 2), (QStringList{"begin -1", "total 4"}));
    EXPECT_EQ(calls.last(), "done 4 of 4");
    EXPECT_EQ(batchtree::entries(out), "a a/.DS_Store a/b a/b/c a/b/c/deep.jpg a/b/readme.md a/top.jpg");
    EXPECT_EQ(testsupport::readFile(o("a/.DS_Store")), "bud1");
    EXPECT_TRUE(calls.contains("log Copying '.DS_Store'\n"));
    // Pre-order: a's own files, then a/b's, then a/b/c's.
    EXPECT_LT(calls.indexOf("status Processing 'top.jpg'"), calls.indexOf("status Copying 'readme.md'"));
    EXPECT_LT(calls.indexOf("status Copying 'readme.md'"), calls.indexOf("status Processing 'deep.png'"));
}

TEST_F(BatchTest, SequenceNumbersRestartPerFolderAndSkipNoNumber) {
    renamer.setType(Renamer::Sequence);
    renamer.setPrefix(QStringLiteral("p"));
    renamer.setDigits(2);
    renamer.setStartFrom(1);
    for (const char* name : {"x/1.png", "x/3.png", "x/y/1.png", "z/1.png", "z/2.png"})
        batchtree::picture(p(name), 8, 8);
    batchtree::text(p("x/2.txt"));
    // An existing output that the user declines to replace takes no number either.
    batchtree::text(o("z/p01.jpg"), "keep me");
    run({p("x"), p("z")});
    EXPECT_EQ(batchtree::entries(out), "x x/p01.jpg x/p02.jpg x/y x/y/p01.jpg z z/p01.jpg");
    EXPECT_EQ(testsupport::readFile(o("z/p01.jpg")), "keep me");
    // Both files of z asked for p01, and both were skipped as duplicates.
    EXPECT_EQ(shell.calls("confirm ").size(), 2);
    EXPECT_EQ(shell.calls("log \tSkipping duplicate").size(), 2);
}

TEST_F(BatchTest, ReplaceAllHoldsForTheRestOfTheFolderOnly) {
    const QStringList names = {"f/a", "f/b", "g/a", "g/b"};
    for (const QString& name : names) {
        batchtree::picture(p(name + ".png"), 8, 8);
        batchtree::text(o(name + ".jpg"), "old");
    }
    shell.answer = [](const QString&) { return int(BatchShell::ReplaceAll); };
    run({p("f"), p("g")});
    EXPECT_EQ(shell.calls("confirm "), (QStringList{"confirm " + o("f/a.jpg"), "confirm " + o("g/a.jpg")}));
    for (const QString& name : names)
        EXPECT_NE(testsupport::readFile(o(name + ".jpg")), "old") << qPrintable(name);
}

TEST_F(BatchTest, SourceIsNeverOverwrittenAndTheWarningComesOncePerWorker) {
    for (const char* name : {"IMG_1.JPG", "IMG_2.jpg", "sub/IMG_3.jpg"})
        batchtree::picture(p(name), 8, 8);
    const auto before = batchtree::checksums(in);
    // The output of the loose files is their own folder, and so is sub's.
    out = in;
    const QStringList calls = run({p("IMG_1.JPG"), p("IMG_2.jpg"), p("sub")});
    EXPECT_EQ(shell.calls("overwrite").size(), 2);
    EXPECT_TRUE(calls.contains("log \tFilename: " + p("IMG_1.jpg") + "\n"));
    EXPECT_EQ(shell.calls("log \tSource cannot be over-written. Skipping.\n").size(), 3);
    EXPECT_TRUE(calls.contains("status Skipping 'IMG_2.jpg'"));
    EXPECT_TRUE(shell.calls("confirm").isEmpty());
    EXPECT_EQ(calls.last(), "done 3 of 3");
    EXPECT_EQ(batchtree::checksums(in), before);
}

TEST_F(BatchTest, WriteFailureEndsItsWorkerAndIsReportedAfterTheOthers) {
    for (const char* name : {"ok1/a.png", "bad/a.png", "bad/b.png", "ok2/a.png"})
        batchtree::picture(p(name), 8, 8);
    FailingFileSystem fileSystem;
    fileSystem.fail(FailingFileSystem::Call::Write, ENOSPC, o("bad"));
    const QStringList calls = run({p("bad"), p("ok1"), p("ok2")}, fileSystem);
    EXPECT_TRUE(calls.contains("warn Unable to write " + o("bad/a.jpg") + "\n"));
    // bad/b.png is never handled, and no status line is shown for bad/a.png.
    EXPECT_FALSE(calls.contains("log Processing 'b.png'\n"));
    EXPECT_EQ(shell.calls("status ").size(), 2);
    EXPECT_EQ(batchtree::entries(out), "bad ok1 ok1/a.jpg ok2 ok2/a.jpg");
    EXPECT_EQ(calls.mid(calls.size() - 3), (QStringList{"end", "write error " + o("bad"), "done 2 of 4"}));
}

// An error nobody expected (here a file system that throws) ends its worker
// like a write failure, but with a log line naming the file and the reason
// instead of a sheet; the other folders go on.
TEST_F(BatchTest, UnexpectedErrorEndsItsWorkerWithALineSayingWhy) {
    struct ThrowingFileSystem : FileSystem {
        QString poisoned;
        bool write(File& file, const void* data, std::size_t size) override {
            if (QFile::decodeName(file.path()).startsWith(poisoned))
                throw std::runtime_error("controller fault");
            return FileSystem::write(file, data, size);
        }
    } fileSystem;
    fileSystem.poisoned = o("bad");
    for (const char* name : {"bad/a.png", "bad/b.png", "ok/a.png"})
        batchtree::picture(p(name), 8, 8);
    const QStringList calls = run({p("bad"), p("ok")}, fileSystem);
    EXPECT_TRUE(calls.contains("warn Stopped in folder '" + o("bad") + "' at 'a.png': controller fault\n"));
    EXPECT_FALSE(calls.contains("log Processing 'b.png'\n"));
    EXPECT_TRUE(calls.filter(QStringLiteral(" error ")).isEmpty());
    EXPECT_EQ(batchtree::entries(out), "bad ok ok/a.jpg");
    EXPECT_EQ(calls.last(), "done 1 of 3");
}

TEST_F(BatchTest, FolderThatCannotBeMadeIsReportedAfterTheOthersAndTheLastFailureWins) {
    for (const char* name : {"x/a.png", "y/a.png", "z/a.png"})
        batchtree::picture(p(name), 8, 8);
    FailingFileSystem fileSystem;
    for (const QString& folder : {o("x"), o("z")})
        fileSystem.fail(FailingFileSystem::Call::MakeFolder, EACCES, folder);
    const QStringList calls = run({p("x"), p("y"), p("z")}, fileSystem);
    EXPECT_EQ(batchtree::entries(out), "y y/a.jpg");
    EXPECT_EQ(calls.mid(calls.size() - 3), (QStringList{"end", "folder error " + o("z"), "done 1 of 3"}));
}

// Pause and cancel, in a serial and in a parallel batch over d/0.png, d/1.png, ...
class BatchRunModeTest : public BatchTest, public ::testing::WithParamInterface<bool> {
  protected:
    void start(int count, std::function<void(const QString&)> onStatus) {
        options.parallel = GetParam();
        options.renderThreads = 2;
        for (int i = 0; i < count; ++i)
            batchtree::picture(p(QStringLiteral("d/%1.png").arg(i)), 30, 30);
        shell.onStatus = std::move(onStatus);
        job.processFiles({p("d")}, ProcessingRequest::fromRecord(params), out, 0, options);
    }
    ImageProcessor job{shell, renamer};
};

TEST_P(BatchRunModeTest, CancelStopsBetweenFilesAndDropsWorkDoneAhead) {
    start(6, [&](const QString&) { job.cancel(); });
    job.waitForFinished();
    EXPECT_EQ(shell.calls().last(), "done 1 of 6");
    EXPECT_EQ(batchtree::entries(out), "d d/0.jpg");
    EXPECT_EQ(shell.calls("log Processing").size(), 1);
}

TEST_P(BatchRunModeTest, PauseHoldsBetweenFilesPausingAgainResumesAndCancelEndsAPausedBatch) {
    start(4, [&](const QString& text) {
        if (text.contains(QLatin1String("'0.png'")) || text.contains(QLatin1String("'1.png'")))
            job.pause();
    });
    for (int held = 1; held <= 2; ++held) {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        EXPECT_EQ(shell.calls("status ").size(), held);
        EXPECT_TRUE(job.isRunning());
        if (held == 1)
            job.pause();
    }
    job.cancel();
    job.waitForFinished();
    EXPECT_EQ(shell.calls().last(), "done 2 of 4");
}

INSTANTIATE_TEST_SUITE_P(SerialAndParallel, BatchRunModeTest, ::testing::Bool());

TEST_F(BatchTest, LinksAreFollowedAndAFolderLoopIsEnteredOnce) {
    batchtree::picture(p("a/x.png"), 8, 8);
    batchtree::picture(tmp->path() + "/elsewhere/pic.png", 8, 8);
    ASSERT_TRUE(QFile::link(p("a"), p("a/loop")));
    ASSERT_TRUE(QFile::link(tmp->path() + "/elsewhere", p("a/linked")));
    ASSERT_TRUE(QFile::link(tmp->path() + "/elsewhere/pic.png", p("a/alias.png")));
    ASSERT_TRUE(QFile::link(tmp->path() + "/nowhere", p("a/dangling")));
    const QStringList calls = run({p("a")});
    EXPECT_TRUE(calls.contains("warn Skipping folder '" + p("a/loop") + "': already visited (link loop)\n"));
    EXPECT_EQ(calls.last(), "done 3 of 3");
    EXPECT_EQ(batchtree::entries(out), "a a/alias.jpg a/linked a/linked/pic.jpg a/x.jpg");
}

TEST_F(BatchTest, CorruptEmptyAndFakePicturesAreSkippedWithoutStoppingTheBatch) {
    batchtree::picture(p("good.jpg"), 16, 16);
    batchtree::text(p("broken.jpg"), testsupport::readFile(p("good.jpg")).left(40));
    batchtree::text(p("empty.jpg"), "");
    batchtree::text(p("table.csv"), "1,2,3\n4,5,6\n");
    // Reading a pipe would wait for a writer forever.
    ASSERT_EQ(::mkfifo(QFile::encodeName(p("pipe.jpg")).constData(), 0600), 0);
    options.copyNonImageFiles = true;
    const QStringList calls =
        run({p("broken.jpg"), p("empty.jpg"), p("table.csv"), p("pipe.jpg"), p("good.jpg")});
    EXPECT_TRUE(calls.contains("status Copying 'broken.jpg'"));
    // A pipe is not copied, but the line says what the option asked for.
    EXPECT_TRUE(calls.contains("log Copying 'pipe.jpg'\n"));
    EXPECT_TRUE(calls.contains("status Processing 'good.jpg'"));
    EXPECT_EQ(calls.last(), "done 5 of 5");
    EXPECT_EQ(batchtree::entries(out), "broken.jpg empty.jpg good.jpg table.csv");
}

// Real camera files, where EXIF, orientation and capture dates meet the naming and the file attributes.
TEST_F(BatchTest, AutoRotatedPictureKeepsItsExifWithOrientationReset) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "orientation-landscape_6.jpg");
    ASSERT_TRUE(QFile::copy(sample, p("turned.jpg")));
    const vips::VImage original = vips::VImage::new_from_file(QFile::encodeName(sample).constData());
    params = ProcessingParams::defaults();
    params.setInt(ParamKey::Rotation, Rotation::Automatic);
    params.setBool(ParamKey::PreserveHeader, true);
    options.parallel = true;
    const QStringList calls = run({p("turned.jpg")});
    const vips::VImage written = vips::VImage::new_from_file(QFile::encodeName(o("turned.jpg")).constData());
    // A quarter turn: the sides swap.
    EXPECT_EQ(std::pair(written.width(), written.height()), std::pair(original.height(), original.width()));
    EXPECT_TRUE(calls.contains(
        QStringLiteral("log \tDimension: %1 x %2\n").arg(original.height()).arg(original.width())));
    // The copy succeeded, which the log reports the other way round.
    EXPECT_TRUE(calls.contains("warn \tUnable to read and copy EXIF\n"));
    EXPECT_EQ(KVImageInfo::orientationForPath(o("turned.jpg")), 1);
    EXPECT_EQ(testsupport::readFile(p("turned.jpg")), testsupport::readFile(sample))
        << "the source must stay untouched";
}

TEST_F(BatchTest, ExifCopyAndFileDatesGoThroughTheBatchFileSystem) {
    QString canon;
    QUILLET_SAMPLE_OR_SKIP(canon, "Canon_40D.jpg");
    ASSERT_TRUE(QFile::copy(canon, p("a.jpg")));
    params.setBool(ParamKey::PreserveHeader, true);
    options.setCreationDate = true;
    options.setModificationDate = true;
    FailingFileSystem fileSystem;
    // The output's own write lands; the EXIF rewrite's move of it aside does not.
    fileSystem.fail(FailingFileSystem::Call::Rename, EACCES, o("a.jpg"), 1);
    fileSystem.fail(FailingFileSystem::Call::SetTimes, EPERM);
    const QStringList calls = run({p("a.jpg")}, fileSystem);
    // A failed copy, which the log reports the other way round.
    EXPECT_TRUE(calls.contains("log \tEXIF copied\n"));
    EXPECT_EQ(KVImageInfo::fromFile(o("a.jpg"), false, false).value().cameraModel(), "")
        << "no EXIF came across";
    EXPECT_NE(QFileInfo(o("a.jpg")).lastModified().date(), QDate(2008, 5, 30));
    EXPECT_EQ(batchtree::entries(out), "a.jpg");
    EXPECT_EQ(calls.last(), "done 1 of 1");
}

TEST_F(BatchTest, DateNamesTakeSuffixesAndTheFileDateIsTheCaptureDate) {
    QString canon;
    QUILLET_SAMPLE_OR_SKIP(canon, "Canon_40D.jpg");
    for (const char* name : {"a.jpg", "b.jpg", "c.jpg"})
        ASSERT_TRUE(QFile::copy(canon, p(name)));
    params.setInt(ParamKey::Width, 64);
    params.setInt(ParamKey::Height, 64);
    renamer.setType(Renamer::Date);
    renamer.setDateFormatTag(4); // "%Y%m%d"
    renamer.setConflictFormatTag(1);
    options.setModificationDate = true;
    options.setCreationDate = true;
    options.parallel = true;
    run({p("a.jpg"), p("b.jpg"), p("c.jpg")});
    EXPECT_EQ(batchtree::entries(out), "20080530.jpg 20080530_1.jpg 20080530_2.jpg");
    for (const QString& name : QDir(out).entryList(QDir::Files))
        EXPECT_EQ(QFileInfo(o(name)).lastModified(), QDateTime(QDate(2008, 5, 30), QTime(15, 56, 1)))
            << qPrintable(name);
    EXPECT_TRUE(shell.calls("confirm").isEmpty());
}

// One batch setting under which a serial and a parallel run must write and log exactly the same.
struct Setting {
    const char* name;
    std::vector<std::pair<const char*, QVariant>> params;
    bool sequenceNames = false; // p0001, p0002, ...
};

class ParallelBatchTest : public BatchTest, public ::testing::WithParamInterface<Setting> {
  protected:
    void buildTree() {
        batchtree::picture(p("big.jpg"), 1600, 1200, 40);
        batchtree::picture(p("tall.png"), 90, 240, 200);
        batchtree::picture(p("small.gif"), 12, 9, 90);
        batchtree::text(p("notes.txt"));
        batchtree::text(p(".hidden"), "x");
        batchtree::text(p("cut.jpg"), "\xff\xd8\xff\xe0 broken");
        for (int i = 0; i < 7; ++i)
            batchtree::picture(p(QStringLiteral("a/p%1.jpg").arg(i)), 300 + 40 * i, 200 + 10 * i, 20 * i);
        batchtree::picture(p("a/b/deep.tif"), 400, 300, 77);
        batchtree::picture(p("a/b/deep2.png"), 64, 64, 7);
        QDir().mkpath(p("empty"));
        // Real camera pictures, when the shared samples are there.
        QDir().mkpath(p("camera"));
        for (const char* name : {"Canon_40D.jpg", "orientation-portrait_6.jpg", "orientation-landscape_8.jpg",
                                 "corrupted.jpg", "Nikon_D70.jpg"})
            QFile::copy(testsupport::samplePath(name), p("camera/") + name);
    }
    // Runs the batch over in/ into `folder`: its log, with the folder written as <out>, and its outputs'
    // checksums.
    std::pair<QStringList, QMap<QString, QByteArray>> runInto(const QString& folder, bool parallel) {
        const QString into = tmp->path() + folder;
        // Outputs already there, so that the replace question comes up.
        for (const char* name : {"p1", "p2", "p0001", "p0002"})
            for (const char* extension : {".jpg", ".png", ".tiff"})
                batchtree::text(into + "/in/a/" + name + extension, "old");
        RecordingShell recorder;
        // Deterministic answers: replace p1, skip everything else that clashes.
        recorder.answer = [](const QString& path) {
            return path.contains("p1") || path.contains("0001") ? int(BatchShell::Replace)
                                                                : int(BatchShell::Skip);
        };
        Renamer names;
        if (GetParam().sequenceNames) {
            names.setType(Renamer::Sequence);
            names.setPrefix(QStringLiteral("p"));
            names.setDigits(4);
            names.setStartFrom(1);
        }
        ProcessingParams settings = ProcessingParams::defaults();
        settings.setBool(ParamKey::PreserveHeader, false);
        for (const auto& [key, value] : GetParam().params)
            settings.values().insert(QLatin1String(key), value);
        options.parallel = parallel;
        options.renderThreads = 3;
        options.copyNonImageFiles = true;
        ImageProcessor job(recorder, names);
        job.processFiles({in}, ProcessingRequest::fromRecord(settings), into, 0, options);
        job.waitForFinished();
        return {recorder.calls().replaceInStrings(into, "<out>"), batchtree::checksums(into)};
    }
};

TEST_P(ParallelBatchTest, ParallelRunWritesAndLogsExactlyWhatASerialRunDoes) {
    buildTree();
    const auto inputs = batchtree::checksums(in);
    const auto [serialCalls, serialOutputs] = runInto("/serial", false);
    const auto [parallelCalls, parallelOutputs] = runInto("/parallel", true);

    ASSERT_EQ(serialCalls.size(), parallelCalls.size());
    for (int i = 0; i < serialCalls.size(); ++i)
        EXPECT_EQ(serialCalls[i], parallelCalls[i]) << "line " << i;
    EXPECT_EQ(serialOutputs.keys(), parallelOutputs.keys());
    for (auto it = serialOutputs.cbegin(); it != serialOutputs.cend(); ++it)
        EXPECT_EQ(it.value(), parallelOutputs.value(it.key())) << qPrintable(it.key());
    EXPECT_EQ(batchtree::checksums(in), inputs) << "an input file changed";
    // The run did real work: pictures were written and a question was asked.
    EXPECT_GE(serialCalls.filter("log \tFilename: ").size(), 10);
    EXPECT_FALSE(serialCalls.filter("confirm ").isEmpty());
    EXPECT_TRUE(serialCalls.last().startsWith("done "));
}

namespace P = ParamKey;
INSTANTIATE_TEST_SUITE_P(Settings, ParallelBatchTest,
                         ::testing::Values(Setting{"FitWithAutoRotation",
                                                   {{P::ScaleType, ScaleType::Fit},
                                                    {P::Width, 120},
                                                    {P::Height, 90},
                                                    {P::Rotation, Rotation::Automatic}}},
                                           Setting{"CropToPngWithSequenceNames",
                                                   {{P::ScaleType, ScaleType::Crop},
                                                    {P::Width, 50},
                                                    {P::Height, 40},
                                                    {P::CropAreaPercentage, 80},
                                                    {P::FileFormat, FileFormat::Png}},
                                                   true},
                                           Setting{"PercentToTiffTurned",
                                                   {{P::ScaleType, ScaleType::Percent},
                                                    {P::ScalePercent, 15},
                                                    {P::Rotation, Rotation::Clockwise},
                                                    {P::FileFormat, FileFormat::Tiff}}},
                                           Setting{"FillUnderASizeLimit",
                                                   {{P::ScaleType, ScaleType::Fill},
                                                    {P::Width, 200},
                                                    {P::Height, 200},
                                                    {P::JpegQuality, 95},
                                                    {P::HasFizeLimit, true},
                                                    {P::SizeLimit, 2}}}),
                         [](const ::testing::TestParamInfo<Setting>& info) {
                             return std::string(info.param.name);
                         });

} // namespace

namespace {

TEST_F(BatchTest, AnUnreadableWatermarkIsReportedOnceAndTheBatchGoesOn) {
    batchtree::picture(p("a.png"), 80, 60);
    batchtree::picture(p("b.png"), 80, 60);
    params.setBool(ParamKey::WatermarkEnabled, true);
    params.setBool(ParamKey::ImageWatermarkEnabled, true);
    params.setString(ParamKey::WatermarkPath, p("gone.png"));
    const QStringList calls = run({p("a.png"), p("b.png")});
    EXPECT_EQ(calls.filter(QStringLiteral("Unable to read the watermark")).size(), 1);
    EXPECT_EQ(batchtree::entries(out), "a.jpg b.jpg");
}

// A sizing that leaves no pixels fails that file alone, not as a write error.
TEST_F(BatchTest, AGeometryFailureIsThatFilesAlone) {
    batchtree::picture(p("a.png"), 80, 60);
    params.setInt(ParamKey::ScaleType, ScaleType::ToWidth);
    params.setInt(ParamKey::Width, 0);
    const QStringList calls = run({p("a.png")});
    EXPECT_FALSE(calls.filter(QStringLiteral("Unable to process 'a.png'")).isEmpty())
        << calls.join('|').toStdString();
    EXPECT_TRUE(calls.filter(QStringLiteral("Unable to write")).isEmpty());
    EXPECT_EQ(calls.last(), "done 1 of 1");
}

} // namespace

namespace {

// Holds the batch thread in its first call until let go, and notes which
// threads the calls come from.
class HeldShell : public RecordingShell {
  public:
    void beginProgressSheet(int total) override {
        RecordingShell::beginProgressSheet(total);
        note();
        m_release.wait();
    }
    void writeWarningActivity(const QString& line) override {
        RecordingShell::writeWarningActivity(line);
        note();
    }
    void didProcess(int processed, int total) override {
        RecordingShell::didProcess(processed, total);
        note();
    }
    void release() { m_go.set_value(); }
    std::set<std::thread::id> threads() const {
        std::lock_guard lock(m_mutex);
        return m_threads;
    }

  private:
    void note() {
        std::lock_guard lock(m_mutex);
        m_threads.insert(std::this_thread::get_id());
    }
    std::promise<void> m_go;
    std::shared_future<void> m_release = m_go.get_future().share();
    mutable std::mutex m_mutex;
    std::set<std::thread::id> m_threads;
};

// The caller gets control back before anything is listed; a cancel then
// ends the listing at once, with no total and no folder made.
TEST_F(BatchTest, StartReturnsBeforeTheListingAndACancelDuringItEndsTheBatch) {
    for (const char* name : {"tree/a/1.png", "tree/b/2.png"})
        batchtree::picture(p(name), 8, 8);
    HeldShell held;
    ImageProcessor job(held, renamer);
    job.processFiles({p("gone.png"), p("tree")}, ProcessingRequest::fromRecord(params), out, 0, options);
    EXPECT_TRUE(job.isRunning());
    EXPECT_TRUE(held.calls("warn ").isEmpty()) << "listed on the caller's thread";
    job.cancel();
    held.release();
    job.waitForFinished();
    EXPECT_EQ(held.calls(), (QStringList{"begin -1", "warn Unable to find '" + p("gone.png") + "'\n", "end",
                                         "done 0 of -1"}));
    EXPECT_FALSE(QFileInfo::exists(out));
    EXPECT_EQ(held.threads().size(), 1u);
    EXPECT_EQ(held.threads().count(std::this_thread::get_id()), 0u);
}

// Many loose files are sorted out in stretches, with a look at the cancel
// between them, as the entries of a large folder are.
TEST_F(BatchTest, CancelReachesTheListingOfALongListOfPaths) {
    QStringList paths;
    for (int i = 0; i < 1000; ++i) {
        paths.append(p(QStringLiteral("f%1.txt").arg(i)));
        batchtree::text(paths.last());
    }
    HeldShell held;
    ImageProcessor job(held, renamer);
    job.processFiles(paths, ProcessingRequest::fromRecord(params), out, 0, options);
    job.cancel();
    held.release();
    job.waitForFinished();
    EXPECT_EQ(held.calls(), (QStringList{"begin -1", "end", "done 0 of -1"}));
}

TEST_F(BatchTest, TheBatchKeepsTheNamingSchemeItStartedWith) {
    renamer.setType(Renamer::PrefixSuffix);
    renamer.setPrefix(QStringLiteral("old-"));
    for (const char* name : {"a.png", "b.png", "c.png"})
        batchtree::picture(p(name), 8, 8);
    // The scheme is edited after the first file, as the user may while a batch runs.
    shell.onStatus = [this](const QString&) { renamer.setPrefix(QStringLiteral("new-")); };
    run({p("a.png"), p("b.png"), p("c.png")});
    EXPECT_EQ(batchtree::entries(out), "old-a.jpg old-b.jpg old-c.jpg");
    EXPECT_EQ(renamer.prefix(), "new-");
}

TEST_F(BatchTest, SingleFileRunWorksOnTheBatchThreadAndHandsItsOutputBack) {
    batchtree::picture(p("one.png"), 80, 60);
    batchtree::text(p("notes.txt"));
    ImageProcessor job(shell, renamer);
    std::promise<std::pair<std::optional<QString>, std::thread::id>> result;
    ASSERT_TRUE(job.processSingleFile(p("one.png"), ProcessingRequest::fromRecord(params), true, options,
                                      [&](const std::optional<QString>& output) {
                                          result.set_value({output, std::this_thread::get_id()});
                                      }));
    const auto [output, thread] = result.get_future().get();
    job.waitForFinished();
    ASSERT_TRUE(output);
    EXPECT_NE(thread, std::this_thread::get_id());
    EXPECT_EQ(QFileInfo(*output).fileName(), "one.jpg");
    EXPECT_EQ(vips::VImage::new_from_file(QFile::encodeName(*output).constData()).width(), 40);
    EXPECT_TRUE(shell.calls().contains("status Processing one.png"));

    // Not a picture: nothing written, and the job is free for the next run.
    std::promise<std::optional<QString>> none;
    ASSERT_TRUE(job.processSingleFile(p("notes.txt"), ProcessingRequest::fromRecord(params), false, options,
                                      [&](const std::optional<QString>& out) { none.set_value(out); }));
    EXPECT_FALSE(none.get_future().get());
    job.waitForFinished();
    EXPECT_FALSE(job.isRunning());
}

} // namespace
