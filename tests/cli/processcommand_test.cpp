#include "testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>

using namespace quillet;

namespace {

struct Outcome {
    int status = -1;
    QString out;
    QString err;
};

Outcome runQuillet(const QStringList& args, int timeoutMs = 120000,
                   const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProgram(testsupport::cliPath());
    process.setArguments(QStringList{QStringLiteral("process")} + args);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start();
    process.waitForFinished(timeoutMs);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}

void picture(const QString& path, int width, int height) {
    QDir().mkpath(QFileInfo(path).path());
    testsupport::solidImage(width, height, 90, 120, 150).write_to_file(QFile::encodeName(path).constData());
}

class ProcessCommandTest : public ::testing::Test {
  protected:
    QString path(const QString& relative) const { return dir->path() + QLatin1Char('/') + relative; }
    std::unique_ptr<QTemporaryDir> dir = testsupport::scratchDir(QStringLiteral("cli"));
};

TEST_F(ProcessCommandTest, ShippedSamplesConvertAsTheReadmeSays) {
    const Outcome run =
        runQuillet({QStringLiteral("--fit"), QStringLiteral("320x320"), QStringLiteral("--quality"),
                    QStringLiteral("85"), QStringLiteral("--dest"), path(QStringLiteral("demo")),
                    testsupport::projectSamplesDir()});
    ASSERT_EQ(run.status, 0) << qPrintable(run.err);
    EXPECT_TRUE(run.out.contains(QLatin1String("Processing Completed (")));
    EXPECT_TRUE(run.out.contains(QLatin1String("\tJPEG quality: 85\n")));
    int pictures = 0;
    QDirIterator it(path(QStringLiteral("demo")), {QStringLiteral("*.jpg")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const vips::VImage image = vips::VImage::new_from_file(QFile::encodeName(it.next()).constData());
        EXPECT_TRUE((image.width() == 320 && image.height() <= 320) ||
                    (image.height() == 320 && image.width() <= 320));
        ++pictures;
    }
    EXPECT_GE(pictures, 1);
}

TEST_F(ProcessCommandTest, BadUsageExitsWithTwoAndSaysWhy) {
    picture(path(QStringLiteral("in/a.png")), 10, 10);
    const QString in = path(QStringLiteral("in"));
    const std::vector<std::pair<QStringList, QString>> cases = {
        {{in}, QStringLiteral("--dest")},
        {{in, QStringLiteral("--dest"), path(QStringLiteral("o")), QStringLiteral("--bogus")},
         QStringLiteral("--bogus")},
        // No terminal to ask on.
        {{in, QStringLiteral("--dest"), path(QStringLiteral("o")), QStringLiteral("--on-conflict"),
          QStringLiteral("ask")},
         QStringLiteral("terminal")},
        {{in, QStringLiteral("--dest"), path(QStringLiteral("o")), QStringLiteral("--shard"),
          QStringLiteral("4/3")},
         QStringLiteral("--shard")},
        // A later part would list an earlier one's outputs as inputs.
        {{in, QStringLiteral("--dest"), path(QStringLiteral("in/o")), QStringLiteral("--shard"),
          QStringLiteral("1/2")},
         QStringLiteral("outside")},
    };
    for (const auto& [args, message] : cases) {
        const Outcome run = runQuillet(args);
        EXPECT_EQ(run.status, 2) << qPrintable(args.join(QLatin1Char(' ')));
        EXPECT_TRUE(run.err.contains(message)) << qPrintable(run.err);
    }
    EXPECT_FALSE(QFileInfo::exists(path(QStringLiteral("o"))));
    EXPECT_FALSE(QFileInfo::exists(path(QStringLiteral("in/o"))));
}

TEST_F(ProcessCommandTest, ExistingOutputsAreSkippedWithoutATerminalAndReplacedOnRequest) {
    picture(path(QStringLiteral("in/a.png")), 40, 20);
    const QStringList base = {path(QStringLiteral("in")), QStringLiteral("--dest"),
                              path(QStringLiteral("o"))};
    ASSERT_EQ(runQuillet(base).status, 0);
    const QString output = path(QStringLiteral("o/in/a.jpg"));
    testsupport::writeFile(output, "old");
    const Outcome skipped = runQuillet(base);
    EXPECT_EQ(skipped.status, 0);
    EXPECT_TRUE(skipped.out.contains(QLatin1String("\tSkipping duplicate\n")));
    EXPECT_FALSE(skipped.out.contains(QLatin1String("JPEG quality")));
    EXPECT_EQ(testsupport::readFile(output), QByteArray("old"));
    const Outcome replaced =
        runQuillet(base + QStringList{QStringLiteral("--on-conflict"), QStringLiteral("replace")});
    EXPECT_EQ(replaced.status, 0);
    EXPECT_NE(testsupport::readFile(output), QByteArray("old"));
}

TEST_F(ProcessCommandTest, FailingWorkerMakesTheExitStatusOneAndShowsItsError) {
    picture(path(QStringLiteral("in/a.png")), 10, 10);
    testsupport::writeFile(path(QStringLiteral("blocked")), "a file where a folder should go");
    const Outcome run =
        runQuillet({path(QStringLiteral("in")), QStringLiteral("--dest"), path(QStringLiteral("blocked"))});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(run.out.contains(QLatin1String("Cancelled (processed 0 of 1)"))) << qPrintable(run.out);
    EXPECT_TRUE(run.err.contains(QLatin1String("Error Creating Folder: Unable to create folder")))
        << qPrintable(run.err);
}

// A missing path is named in the log and left out; only a run with no input
// at all fails for it.
TEST_F(ProcessCommandTest, MissingInputsAreNamedAndNoneFoundExitsWithOne) {
    picture(path(QStringLiteral("in/a.png")), 10, 10);
    const QString gone = path(QStringLiteral("gone.png"));
    const QStringList dest = {QStringLiteral("--dest"), path(QStringLiteral("o"))};
    const Outcome some = runQuillet(QStringList{gone, path(QStringLiteral("in/a.png"))} + dest);
    EXPECT_EQ(some.status, 0) << qPrintable(some.err);
    EXPECT_TRUE(some.out.contains(QStringLiteral("Unable to find '%1'\n").arg(gone))) << qPrintable(some.out);
    EXPECT_TRUE(some.out.contains(QLatin1String("Processing Completed (1 files processed)")));

    const Outcome none = runQuillet(QStringList{gone, path(QStringLiteral("gone2"))} + dest);
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(none.out.contains(QStringLiteral("Unable to find '%1'\n").arg(path(QStringLiteral("gone2")))))
        << qPrintable(none.out);
}

TEST_F(ProcessCommandTest, LogFileHoldsTheActivityLogAndSerialMatchesParallel) {
    for (int i = 0; i < 6; ++i)
        picture(path(QStringLiteral("in/sub/p%1.png").arg(i)), 100 + i, 60);
    testsupport::writeFile(path(QStringLiteral("in/readme.txt")), "hi");
    const Outcome parallel =
        runQuillet({path(QStringLiteral("in")), QStringLiteral("--dest"), path(QStringLiteral("o")),
                    QStringLiteral("--log"), path(QStringLiteral("p.log")), QStringLiteral("--percent"),
                    QStringLiteral("50"), QStringLiteral("--rename"), QStringLiteral("sequence")});
    const Outcome serial =
        runQuillet({path(QStringLiteral("in")), QStringLiteral("--dest"), path(QStringLiteral("o2")),
                    QStringLiteral("--log"), path(QStringLiteral("s.log")), QStringLiteral("--percent"),
                    QStringLiteral("50"), QStringLiteral("--rename"), QStringLiteral("sequence"),
                    QStringLiteral("--serial")});
    ASSERT_EQ(parallel.status, 0);
    ASSERT_EQ(serial.status, 0);
    const QString log = QString::fromUtf8(testsupport::readFile(path(QStringLiteral("p.log"))));
    // The log's lines appear on the standard output in the same order (the
    // metadata layer may print lines of its own in between).
    const QStringList shown = parallel.out.split(QLatin1Char('\n'));
    int at = 0;
    for (const QString& line : log.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        while (at < shown.size() && shown[at] != line)
            ++at;
        EXPECT_LT(at, shown.size()) << "missing on the output: " << qPrintable(line);
    }
    EXPECT_TRUE(log.contains(QStringLiteral("\tFilename: %1\n").arg(path(QStringLiteral("o/in/sub/0.jpg")))));
    EXPECT_FALSE(log.contains(QLatin1String("Processing Completed")));
    QString serialLog = QString::fromUtf8(testsupport::readFile(path(QStringLiteral("s.log"))));
    EXPECT_EQ(serialLog.replace(path(QStringLiteral("o2/")), path(QStringLiteral("o/"))), log);
}

TEST_F(ProcessCommandTest, InterruptCancelsBetweenFilesAndStillReports) {
    for (int i = 0; i < 40; ++i)
        picture(path(QStringLiteral("in/p%1.png").arg(i, 2, 10, QLatin1Char('0'))), 900, 900);
    QProcess process;
    process.setProgram(testsupport::cliPath());
    process.setArguments({QStringLiteral("process"), path(QStringLiteral("in")), QStringLiteral("--dest"),
                          path(QStringLiteral("o")), QStringLiteral("--format"), QStringLiteral("png")});
    process.setStandardInputFile(QProcess::nullDevice());
    process.start();
    ASSERT_TRUE(process.waitForStarted());
    // Wait for the first file to be done, then interrupt.
    QByteArray err;
    while (!err.contains("[1/40]") && process.state() == QProcess::Running) {
        process.waitForReadyRead(5000);
        err += process.readAllStandardError();
    }
    ::kill(pid_t(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished(60000));
    const QString out = QString::fromLocal8Bit(process.readAllStandardOutput());
    EXPECT_EQ(process.exitCode(), 1);
    EXPECT_TRUE(out.contains(QLatin1String("Cancelled (processed "))) << qPrintable(out);
    // Every file the report counts as handled was written whole; none beyond.
    const int written = int(QDir(path(QStringLiteral("o/in"))).entryList(QDir::Files).size());
    EXPECT_LT(written, 40);
    EXPECT_TRUE(out.contains(QStringLiteral("Cancelled (processed %1 of 40)").arg(written)))
        << qPrintable(out);
}

} // namespace

namespace {

// A file the batch wrote in full: it decodes to the last row.
bool wholePicture(const QString& path) {
    try {
        vips::VImage image = vips::VImage::new_from_file(QFile::encodeName(path).constData(),
                                                         vips::VImage::option()->set("fail", true));
        image.avg();
        return true;
    } catch (const vips::VError&) {
        vips_error_clear();
        return false;
    }
}

} // namespace

TEST_F(ProcessCommandTest, KilledBatchLeavesOnlyWholeOutputs) {
    QString camera;
    QUILLET_SAMPLE_OR_SKIP(camera, "orientation-landscape_6.jpg");
    QDir().mkpath(path(QStringLiteral("in")));
    for (int i = 0; i < 24; ++i)
        QFile::copy(camera, path(QStringLiteral("in/p%1.jpg").arg(i, 2, 10, QLatin1Char('0'))));

    // Kill at several points of a batch that takes about a second; the EXIF
    // rewrite runs after every write, so both writers are caught mid-way.
    for (const int afterMs : {150, 400, 700, 1000}) {
        QDir(path(QStringLiteral("out"))).removeRecursively();
        QProcess process;
        process.setProgram(testsupport::cliPath());
        process.setArguments({QStringLiteral("process"), QStringLiteral("--rotate"), QStringLiteral("auto"),
                              QStringLiteral("--percent"), QStringLiteral("400"),
                              QStringLiteral("--keep-exif"), QStringLiteral("--dest"),
                              path(QStringLiteral("out")), path(QStringLiteral("in"))});
        process.setStandardInputFile(QProcess::nullDevice());
        process.start();
        ASSERT_TRUE(process.waitForStarted());
        QThread::msleep(afterMs);
        ::kill(pid_t(process.processId()), SIGKILL);
        process.waitForFinished();

        QDirIterator it(path(QStringLiteral("out")), QDir::Files | QDir::Hidden | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString file = it.next();
            EXPECT_FALSE(it.fileName().startsWith(QLatin1Char('.'))) << "left behind: " << file.toStdString();
            EXPECT_FALSE(it.fileName().endsWith(QLatin1String(".t")))
                << "left behind: " << file.toStdString();
            EXPECT_TRUE(wholePicture(file))
                << "partial output after " << afterMs << " ms: " << file.toStdString();
        }
    }
}

namespace {

// Output files under `folder`, by name.
QMap<QString, QByteArray> outputs(const QString& folder) {
    QMap<QString, QByteArray> files;
    QDirIterator it(folder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString file = it.next();
        files.insert(QFileInfo(file).fileName(), testsupport::readFile(file));
    }
    return files;
}

} // namespace

// A 30 KB limit the quality search alone cannot meet for camera pictures:
// without shrinking the search and its warnings stay as they were; with it,
// every output fits, and each line says the size it ended at.
TEST_F(ProcessCommandTest, ShrinkToFitMakesEverySampleFitTheLimit) {
    if (testsupport::samplesDir().isEmpty())
        GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
    const QStringList photos = {"Canon_40D.jpg", "Nikon_D70.jpg", "mobile-jolla.jpg",
                                "orientation-portrait_6.jpg", "xmp-BlueSquare.jpg"};
    QDir().mkpath(path(QStringLiteral("in")));
    for (const QString& name : photos)
        QFile::copy(testsupport::samplePath(name), path("in/" + name));
    const QStringList common = {"--fit", "1600x1600", "--max-size", "30", "--format"};
    for (const char* format : {"jpeg", "webp"}) {
        const QString plainDest = path(QStringLiteral("plain-") + format);
        const Outcome plain =
            runQuillet(common + QStringList{format, "--dest", plainDest, path(QStringLiteral("in"))});
        ASSERT_EQ(plain.status, 0) << qPrintable(plain.err);
        const qsizetype warnings = plain.out.count(QLatin1String("Unable to make file size under 30 KB"));
        EXPECT_GT(warnings, 0) << format;
        EXPECT_FALSE(plain.out.contains(QLatin1String("Made smaller")));
        qsizetype over = 0;
        for (const QByteArray& bytes : outputs(plainDest))
            over += bytes.size() > 30 * 1024;
        // A JPEG's EXIF goes in after the search, and may take it over the limit unsaid.
        EXPECT_GE(over, warnings) << format;

        const QString fitDest = path(QStringLiteral("fit-") + format);
        const Outcome fit = runQuillet(
            common + QStringList{format, "--shrink-to-fit", "--dest", fitDest, path(QStringLiteral("in"))});
        ASSERT_EQ(fit.status, 0) << qPrintable(fit.err);
        EXPECT_FALSE(fit.out.contains(QLatin1String("Unable to make file size"))) << qPrintable(fit.out);
        EXPECT_GE(fit.out.count(QLatin1String("\tMade smaller to fit 30 KB: ")), warnings) << format;
        const QMap<QString, QByteArray> files = outputs(fitDest);
        EXPECT_EQ(files.size(), photos.size());
        for (auto it = files.cbegin(); it != files.cend(); ++it) {
            EXPECT_LE(it.value().size(), 30 * 1024) << qPrintable(it.key());
            const vips::VImage image =
                vips::VImage::new_from_buffer(it.value().constData(), size_t(it.value().size()), "");
            EXPECT_GT(image.width(), 0) << qPrintable(it.key());
        }
    }
}

// An input already smaller than its output is copied as it is, when asked,
// and only onto an output of its own format.
TEST_F(ProcessCommandTest, KeepSmallerCopiesTheInputWhenTheOutputWouldBeLarger) {
    QDir().mkpath(path(QStringLiteral("in")));
    // Detail a high quality spends many bytes on, written small at a low one.
    const vips::VImage noise = vips::VImage::gaussnoise(64, 48, vips::VImage::option()->set("sigma", 50))
                                   .bandjoin_const({120, 90})
                                   .cast(VIPS_FORMAT_UCHAR);
    noise.write_to_file(QFile::encodeName(path(QStringLiteral("in/small.jpg"))).constData(),
                        vips::VImage::option()->set("Q", 30)->set("strip", true));
    picture(path(QStringLiteral("in/flat.png")), 64, 48);
    const QByteArray input = testsupport::readFile(path(QStringLiteral("in/small.jpg")));
    const QStringList args = {"--quality", "100", "--keep-exif", "--dest"};

    const Outcome kept = runQuillet(
        args + QStringList{path(QStringLiteral("kept")), "--keep-smaller", path(QStringLiteral("in"))});
    ASSERT_EQ(kept.status, 0) << qPrintable(kept.err);
    EXPECT_EQ(kept.out.count(QLatin1String("\tKept the original (")), 1) << qPrintable(kept.out);
    const QMap<QString, QByteArray> files = outputs(path(QStringLiteral("kept")));
    EXPECT_EQ(files.value(QStringLiteral("small.jpg")), input);
    EXPECT_FALSE(files.value(QStringLiteral("flat.jpg")).isEmpty()); // a PNG input: converted as usual

    const Outcome plain =
        runQuillet(args + QStringList{path(QStringLiteral("plain")), path(QStringLiteral("in"))});
    ASSERT_EQ(plain.status, 0) << qPrintable(plain.err);
    EXPECT_GT(outputs(path(QStringLiteral("plain"))).value(QStringLiteral("small.jpg")).size(), input.size());
}

// libvips finds its JPEG XL saver in a module under VIPSHOME: pointed at an
// empty folder, it is a system without one. The format is refused before
// anything is written, and the other formats still work.
TEST_F(ProcessCommandTest, FormatWithoutAnEncoderIsRefusedBeforeAnythingIsWritten) {
    picture(path(QStringLiteral("in/a.png")), 40, 30);
    QDir().mkpath(path(QStringLiteral("no-modules")));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VIPSHOME"), path(QStringLiteral("no-modules")));
    const QString in = path(QStringLiteral("in"));

    const Outcome refused =
        runQuillet({"--format", "jxl", "--dest", path(QStringLiteral("jxl")), in}, 60000, environment);
    EXPECT_EQ(refused.status, 2) << qPrintable(refused.err);
    EXPECT_TRUE(refused.err.contains(QLatin1String("cannot write JPEG XL pictures: ")))
        << qPrintable(refused.err);
    EXPECT_FALSE(QFileInfo::exists(path(QStringLiteral("jxl"))));

    const Outcome webp =
        runQuillet({"--format", "webp", "--dest", path(QStringLiteral("webp")), in}, 60000, environment);
    EXPECT_EQ(webp.status, 0) << qPrintable(webp.err);
    EXPECT_TRUE(QFileInfo::exists(path(QStringLiteral("webp/in/a.webp"))));
}
