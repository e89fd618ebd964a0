// The command-line front end of the in-place operations, run as a process.

#include "inplace/filerotation.h"
#include "jpegfixtures.h"
#include "metadata/kvimageinfo.h"
#include "testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace testsupport;
using namespace jpegfixtures;

namespace {

struct Result {
    int status = -1;
    QString out, err;
};

Result runCli(const QStringList& args, const QString& jpegtran = {}) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    if (!jpegtran.isEmpty())
        env.insert(QStringLiteral("QUILLET_JPEGTRAN"), jpegtran);
    process.setProcessEnvironment(env);
    process.start(cliPath(), args);
    process.waitForFinished(120000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}

class RotateCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        // Icons are thumbnails in the cache; keep them out of the user's own.
        qputenv("XDG_CACHE_HOME", dir.filePath("cache").toLocal8Bit());
    }
    QString put(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(writeFile(path, bytes));
        return path;
    }
    QTemporaryDir dir;
};

TEST_F(RotateCommandTest, ReportsProgressActivityAndNonJpegFiles) {
    const QString photo = put(QStringLiteral("photo.jpg"), markedJpeg(6));
    const QString upright = put(QStringLiteral("upright.jpg"), markedJpeg(1));
    const QByteArray png = QByteArray("\x89PNG\r\n\x1a\n", 8) + QByteArray(64, 'x');
    const QString picture = put(QStringLiteral("picture.png"), png);

    Result result = runCli({QStringLiteral("rotate"), QStringLiteral("auto"), photo, upright});
    EXPECT_EQ(result.status, 0) << result.err.toStdString();
    EXPECT_EQ(result.out, QStringLiteral("[1/2] Rotating photo.jpg\nRotated 'photo.jpg'\n"
                                         "[2/2] Rotating upright.jpg\nSkipping 'upright.jpg'\n"));
    EXPECT_EQ(KVImageInfo::orientationForPath(photo), 1);

    result = runCli(
        {QStringLiteral("rotate"), QStringLiteral("cw"), QStringLiteral("--backup"), picture, upright});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(result.err.contains(QStringLiteral("'picture.png' is not a JPEG\n")));
    EXPECT_TRUE(
        result.err.contains(QStringLiteral("Non-JPEG Files: Lossless JPEG operations can only be performed "
                                           "on JPEG files. Non-JPEG files ignored.\n")));
    EXPECT_TRUE(result.out.contains(QStringLiteral("Rotated 'upright.jpg'\n")));
    EXPECT_EQ(readFile(picture), png);
    EXPECT_EQ(readFile(dir.filePath("Quillet Originals/upright.jpg")), markedJpeg(1));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Hidden | QDir::Files).filter(QStringLiteral(".qlt.")),
              QStringList());
}

TEST_F(RotateCommandTest, UsageErrorsAndAMissingToolTouchNothing) {
    const QString photo = put(QStringLiteral("photo.jpg"), markedJpeg(6));
    EXPECT_EQ(runCli({QStringLiteral("rotate"), photo}).status, 2);
    EXPECT_EQ(runCli({QStringLiteral("rotate"), QStringLiteral("cw")}).status, 2);
    EXPECT_EQ(
        runCli({QStringLiteral("rotate"), QStringLiteral("cw"), QStringLiteral("--mirror"), photo}).status,
        2);
    EXPECT_EQ(runCli({QStringLiteral("icons"), QStringLiteral("paint"), photo}).status, 2);
    EXPECT_EQ(runCli({QStringLiteral("dates")}).status, 2);

    const Result missing =
        runCli({QStringLiteral("rotate"), QStringLiteral("cw"), photo}, dir.filePath("none"));
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("jpegtran not found"))) << missing.err.toStdString();
    EXPECT_EQ(readFile(photo), markedJpeg(6));
}

TEST_F(RotateCommandTest, DatesAndIconsRunThroughEveryFile) {
    const QString photo = put(QStringLiteral("photo.jpg"), markedJpeg(1));
    Result result = runCli({QStringLiteral("dates"), QStringLiteral("--modification"), photo});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, QStringLiteral("[1/1] Setting date for photo.jpg\n"));
    result = runCli({QStringLiteral("icons"), QStringLiteral("add"), photo});
    EXPECT_EQ(result.out, QStringLiteral("[1/1] Setting icon for photo.jpg\n"));
    result = runCli({QStringLiteral("icons"), QStringLiteral("remove"), photo});
    EXPECT_EQ(result.out, QStringLiteral("[1/1] Clearing icon for photo.jpg\n"));
    EXPECT_EQ(readFile(photo), markedJpeg(1));
}

// A run killed outright, at several moments, never loses a file; the next run
// of the same command puts every leftover back and finishes the job.
TEST_F(RotateCommandTest, KilledRunsLoseNothingAndTheNextRunRecovers) {
    const QString realTool = QStandardPaths::findExecutable(QStringLiteral("jpegtran"));
    ASSERT_FALSE(realTool.isEmpty());
    const QString slowTool =
        put(QStringLiteral("slow-jpegtran"),
            "#!/bin/sh\nsleep 0.15\n" + realTool.toLocal8Bit() + " \"$@\" || exit $?\nsleep 0.15\n");
    QFile::setPermissions(slowTool, QFile::permissions(slowTool) | QFileDevice::ExeOwner);
    const QByteArray original = markedJpeg(6);
    const QString plain = put(QStringLiteral("plain.jpg"), original);
    ASSERT_EQ(QProcess::execute(realTool, {QStringLiteral("-rotate"), QStringLiteral("90"),
                                           QStringLiteral("-outfile"), plain + ".out", plain}),
              0);
    const vips::VImage expected = decode(plain + ".out");

    for (const bool backup : {false, true}) {
        QDir(dir.path()).mkdir(QStringLiteral("batch"));
        QStringList paths;
        for (int i = 0; i < 12; ++i) {
            paths.append(dir.filePath(QStringLiteral("batch/p%1.jpg").arg(i)));
            ASSERT_TRUE(writeFile(paths.last(), original));
        }
        QStringList args{QStringLiteral("rotate"), QStringLiteral("auto")};
        if (backup)
            args.append(QStringLiteral("--backup"));
        args += paths;

        const QDir batch(dir.filePath("batch"));
        const QStringList leftoverFilter{QStringLiteral(".qlt.*")};
        for (const int killAfter : {0, 90, 180, 270}) {
            QProcess process;
            QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
            env.insert(QStringLiteral("QUILLET_JPEGTRAN"), slowTool);
            process.setProcessEnvironment(env);
            process.start(cliPath(), args);
            ASSERT_TRUE(process.waitForStarted());
            // Kill it at a different step of a rotation each time, counted from
            // the moment a file has been moved aside.
            QElapsedTimer waited;
            waited.start();
            while (batch.entryList(leftoverFilter, QDir::Files | QDir::Hidden).isEmpty() &&
                   waited.elapsed() < 30000)
                QThread::msleep(5);
            QThread::msleep(killAfter);
            process.kill();
            process.waitForFinished();
            for (const QString& path : paths) {
                const QString temporary = FileRotation::temporaryPath(path);
                const bool originalThere = readFile(path) == original || readFile(temporary) == original;
                const bool finished = !QFile::exists(temporary) && KVImageInfo::orientationForPath(path) == 1;
                EXPECT_TRUE(originalThere || finished)
                    << path.toStdString() << " after " << killAfter << " ms";
            }
        }
        const bool leftovers = !batch.entryList(leftoverFilter, QDir::Files | QDir::Hidden).isEmpty();

        const Result rerun = runCli(args);
        EXPECT_EQ(rerun.status, 0) << rerun.err.toStdString();
        EXPECT_EQ(rerun.out.contains(QStringLiteral("from an interrupted rotation")), leftovers);
        for (const QString& path : paths) {
            EXPECT_EQ(KVImageInfo::orientationForPath(path), 1) << path.toStdString();
            EXPECT_EQ(maxDifference(decode(path), expected), 0) << path.toStdString();
            EXPECT_FALSE(QFile::exists(FileRotation::temporaryPath(path)));
            if (backup) {
                EXPECT_EQ(readFile(FileRotation::backupPath(path)), original);
            }
        }
        QDir(dir.filePath("batch")).removeRecursively();
    }
}

} // namespace
