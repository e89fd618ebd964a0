// The command-line front end of the in-place operations, run as a process.

#include "inplace/filerotation.h"
#include "jpegfixtures.h"
#include "metadata/kvimageinfo.h"

#include <QDir>
#include <QElapsedTimer>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

using namespace testsupport;
using namespace jpegfixtures;

namespace {

class RotateCommandTest : public ::testing::Test {
  protected:
    // Starts the tool; with a jpegtran given, through QUILLET_JPEGTRAN.
    void start(QProcess& process, const QStringList& args, const QString& jpegtran = {}) {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        if (!jpegtran.isEmpty())
            env.insert(QStringLiteral("QUILLET_JPEGTRAN"), jpegtran);
        process.setProcessEnvironment(env);
        process.start(cliPath(), args);
        ASSERT_TRUE(process.waitForStarted());
    }
    int run(const QStringList& args, const QString& jpegtran = {}) {
        QProcess process;
        start(process, args, jpegtran);
        process.waitForFinished(120000);
        out = QString::fromLocal8Bit(process.readAllStandardOutput());
        err = QString::fromLocal8Bit(process.readAllStandardError());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    QString put(const QString& name, const QByteArray& bytes) {
        EXPECT_TRUE(writeFile(dir.filePath(name), bytes));
        return dir.filePath(name);
    }
    QTemporaryDir dir;
    QString out, err;
};

TEST_F(RotateCommandTest, ReportsProgressActivityAndNonJpegFiles) {
    const QString photo = put(QStringLiteral("photo.jpg"), markedJpeg(6));
    const QString upright = put(QStringLiteral("upright.jpg"), markedJpeg(1));
    const QString png = put(QStringLiteral("picture.png"), "\x89PNG\r\n\x1a\n");

    EXPECT_EQ(run({QStringLiteral("rotate"), QStringLiteral("auto"), photo, upright}), 0)
        << err.toStdString();
    EXPECT_EQ(out, QStringLiteral("[1/2] Rotating photo.jpg\nRotated 'photo.jpg'\n"
                                  "[2/2] Rotating upright.jpg\nSkipping 'upright.jpg'\n"));
    EXPECT_EQ(err, QString()); // skipped files are not bad ones
    EXPECT_EQ(KVImageInfo::orientationForPath(photo), 1);

    EXPECT_EQ(run({QStringLiteral("rotate"), QStringLiteral("cw"), QStringLiteral("--backup"), png, upright}),
              1);
    EXPECT_TRUE(
        err.startsWith(QStringLiteral("'picture.png' is not a JPEG\nNon-JPEG Files: Lossless JPEG operations "
                                      "can only be performed on JPEG files. Non-JPEG files ignored.\n")));
    EXPECT_EQ(readFile(png), QByteArray("\x89PNG\r\n\x1a\n"));
    EXPECT_EQ(readFile(dir.filePath("Quillet Originals/upright.jpg")), markedJpeg(1));

    const QByteArray rotated = readFile(photo);
    EXPECT_EQ(run({QStringLiteral("rotate"), QStringLiteral("cw"), photo}, dir.filePath("none")), 1);
    EXPECT_TRUE(err.contains(QStringLiteral("QUILLET_JPEGTRAN names '%1'").arg(dir.filePath("none"))));
    EXPECT_EQ(readFile(photo), rotated);
    EXPECT_EQ(run({QStringLiteral("rotate"), QStringLiteral("sideways"), photo}), 2);
    EXPECT_EQ(run({QStringLiteral("dates"), QStringLiteral("--modification"), photo}), 0);
    EXPECT_EQ(out, QStringLiteral("[1/1] Setting date for photo.jpg\n"));
}

// Runs killed outright at several steps of a rotation never lose a file; the
// next run of the same command puts every leftover back and finishes the job.
// A run that is asked to stop finishes the file in hand and stops.
TEST_F(RotateCommandTest, KilledRunsLoseNothingAndTheNextRunRecovers) {
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("jpegtran"));
    const QString slowTool =
        put(QStringLiteral("slow-jpegtran"),
            "#!/bin/sh\nsleep 0.15\n" + tool.toLocal8Bit() + " \"$@\" || exit $?\nsleep 0.15\n");
    QFile::setPermissions(slowTool, QFile::permissions(slowTool) | QFileDevice::ExeOwner);
    const QByteArray original = markedJpeg(6);
    const vips::VImage expected = plainRotation(put(QStringLiteral("plain.jpg"), original), 90);
    const QDir batch(dir.filePath("batch"));
    const QStringList leftovers{QStringLiteral(".qlt.*")};

    for (const bool backup : {false, true}) {
        batch.mkpath(QStringLiteral("."));
        QStringList args{QStringLiteral("rotate"), QStringLiteral("auto")};
        if (backup)
            args.append(QStringLiteral("--backup"));
        QStringList paths;
        for (int i = 0; i < 12; ++i)
            paths.append(put(QStringLiteral("batch/p%1.jpg").arg(i), original));
        args += paths;

        for (const int killAfter : {-1, 0, 90, 180, 270}) {
            // Counted from the moment a file has been moved aside.
            QProcess process;
            start(process, args, slowTool);
            QElapsedTimer waited;
            waited.start();
            while (batch.entryList(leftovers, QDir::Files | QDir::Hidden).isEmpty() &&
                   waited.elapsed() < 30000)
                QThread::msleep(5);
            if (killAfter < 0) {
                // A plain kill lets the file in hand finish: nothing is left over.
                process.terminate();
                process.waitForFinished();
                EXPECT_EQ(process.exitCode(), 130);
                EXPECT_EQ(batch.entryList(leftovers, QDir::Files | QDir::Hidden), QStringList());
            }
            QThread::msleep(std::max(killAfter, 0));
            process.kill();
            process.waitForFinished();
            for (const QString& path : paths) {
                const QString temporary = FileRotation::temporaryPath(path);
                const bool kept = readFile(path) == original || readFile(temporary) == original;
                const bool done = !QFile::exists(temporary) && KVImageInfo::orientationForPath(path) == 1;
                EXPECT_TRUE(kept || done) << path.toStdString() << " killed after " << killAfter << " ms";
            }
        }
        const bool interrupted = !batch.entryList(leftovers, QDir::Files | QDir::Hidden).isEmpty();

        EXPECT_EQ(run(args), 0) << err.toStdString();
        EXPECT_EQ(out.contains(QStringLiteral("from an interrupted rotation")), interrupted);
        for (const QString& path : paths) {
            EXPECT_EQ(KVImageInfo::orientationForPath(path), 1) << path.toStdString();
            EXPECT_EQ(maxDifference(decode(path), expected), 0) << path.toStdString();
            EXPECT_FALSE(QFile::exists(FileRotation::temporaryPath(path)));
            if (backup) {
                EXPECT_EQ(readFile(FileRotation::backupPath(path)), original);
            }
        }
        QDir(batch).removeRecursively();
    }
}

} // namespace
