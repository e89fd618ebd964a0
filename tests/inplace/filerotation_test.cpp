#include "inplace/filerotation.h"
#include "inplace/jpegtranrunner.h"
#include "jpegfixtures.h"
#include "metadata/jpegsegmentlist.h"
#include "metadata/kvimageinfo.h"
#include "metadata/orientationtag.h"
#include "orientationset.h"
#include "support/activitylog.h"
#include "support/failingfilesystem.h"

#include <QDir>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>
#include <unistd.h>

using namespace quillet;

using namespace testsupport;
using namespace jpegfixtures;
using Outcome = FileRotation::Outcome;

namespace {

// The fixture stands in for the log and the tool: the real tool, with its
// calls kept and failures on demand. The file system fails on demand too.
class FileRotationTest : public ::testing::Test, ActivityLog, JpegtranRunner {
  protected:
    void writeActivity(const QString& line) override { lines.append(line); }
    void writeWarningActivity(const QString& line) override { warnings.append(line); }
    // failWith: the tool fails after scribbling over its output (-1: could not be run).
    int run(const QStringList& arguments) override {
        calls.append(arguments);
        if (failWith != 0)
            writeFile(arguments.at(arguments.indexOf(u"-outfile"_s) + 1), "half a picture");
        return failWith != 0 ? failWith : JpegtranRunner::run(arguments);
    }
    // One refused rename after `after` that work.
    void failRename(int after) { files.fail(FailingFileSystem::Call::Rename, EACCES, {}, after, 1); }

    QString put(const QString& name, const QByteArray& bytes) {
        EXPECT_TRUE(writeFile(dir.filePath(name), bytes));
        return dir.filePath(name);
    }
    QStringList entries(const QString& sub = {}) const {
        return QDir(dir.filePath(sub))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    int runTool(const QStringList& args) {
        QProcess process;
        process.start(cliPath(), args);
        process.waitForFinished(120000);
        out = QString::fromLocal8Bit(process.readAllStandardOutput());
        err = QString::fromLocal8Bit(process.readAllStandardError());
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    QTemporaryDir dir;
    QStringList lines, warnings;
    QString out, err; // of the command-line tool
    QList<QStringList> calls;
    int failWith = 0;
    FailingFileSystem files;
    FileRotation rotation{*this, files, *this};
};

TEST_F(FileRotationTest, AutomaticTurnsACameraPictureUprightAndKeepsItsExif) {
    QString sample;
    // Its EXIF block comes first; 450 rows are not whole 8-row blocks.
    QUILLET_SAMPLE_OR_SKIP(sample, "orientation-landscape_1.jpg");
    const QString path = put(u"portrait.jpg"_s, readFile(sample));
    ASSERT_EQ(KVImageInfo::setOrientation(6, path), 1);
    // value() throws, failing the test, when the EXIF cannot be read.
    const auto exif = [&path] {
        const KVImageInfo info = KVImageInfo::fromFile(path).value();
        return std::tuple(info.cameraModel(), info.creationDate(), info.exposureTimeFloat(), info.isoInt());
    };
    const auto before = exif();
    const vips::VImage expected = plainRotation(path, 90);

    ASSERT_EQ(rotation.rotate(path, 0, false), Outcome::Rotated);
    const QString moved = dir.filePath(".qlt.portrait.jpg");
    EXPECT_EQ(calls,
              (QList<QStringList>{
                  {u"-copy"_s, u"all"_s, u"-perfect"_s, u"-rotate"_s, u"90"_s, u"-outfile"_s, path, moved},
                  {u"-copy"_s, u"all"_s, u"-trim"_s, u"-rotate"_s, u"90"_s, u"-outfile"_s, path, moved}}));
    EXPECT_EQ(lines, QStringList{u"Rotated 'portrait.jpg'\n"_s});
    ASSERT_EQ(warnings.size(), 1);
    EXPECT_TRUE(warnings[0].startsWith(u"\tTrimmed 'portrait.jpg'"_s));
    EXPECT_EQ(KVImageInfo::orientationForPath(path), 1);
    EXPECT_EQ(exif(), before);
    EXPECT_EQ(maxDifference(path, expected), 0);
    EXPECT_EQ(entries(), QStringList{u"portrait.jpg"_s});
}

TEST_F(FileRotationTest, AnglesAndWhatBecomesOfTheTag) {
    // {orientation (-1: no EXIF), JFIF in front, degrees asked, where the red corner ends up, tag afterwards}
    // Automatic mode mirrors as well as turns, and finds EXIF behind JFIF.
    const int cases[][6] = {
        {8, 0, 0, 4, 60, 1},   {3, 0, 0, 60, 44, 1}, {6, 0, 180, 60, 44, 6}, {-1, 0, 90, 44, 4, 0},
        {6, 1, 270, 4, 60, 6}, {2, 0, 0, 60, 4, 1},  {4, 0, 0, 4, 44, 1},    {5, 0, 0, 4, 4, 1},
        {7, 1, 0, 44, 60, 1},  {6, 1, 0, 44, 4, 1},
    };
    for (const auto& [orientation, jfifFirst, degrees, x, y, tag] : cases) {
        const QString path = put(u"photo.jpg"_s, markedJpeg(orientation, jfifFirst));
        // The mode is kept, though the tool writes a new file.
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        ASSERT_EQ(rotation.rotate(path, degrees, false), Outcome::Rotated) << orientation;
        EXPECT_GT(pixelAt(decode(path), x, y)[0], 200) << orientation;
        EXPECT_EQ(readExifOrientation(path.toLocal8Bit().constData()), tag) << orientation;
        EXPECT_EQ(QFile::permissions(path) & 0x7077, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }

    // Automatic mode leaves alone an upright picture, no tag and no EXIF.
    for (const int orientation : {1, 0, -1}) {
        const QByteArray original = markedJpeg(orientation, orientation == 1);
        const QString path = put(u"photo.jpg"_s, original);
        EXPECT_EQ(rotation.rotate(path, 0, false), Outcome::Skipped) << orientation;
        EXPECT_EQ(readFile(path), original);
    }
    EXPECT_EQ(calls.size(), qsizetype(std::size(cases)));
    EXPECT_EQ(lines.last(), u"Skipping 'photo.jpg'\n"_s);
    EXPECT_EQ(entries(), QStringList{u"photo.jpg"_s});
}

TEST_F(FileRotationTest, EveryOrientationOfACameraPictureTurnsUpright) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "orientation-landscape_1.jpg");
    const vips::VImage upright = orientationset::write(dir.path(), sample);
    for (int orientation = 1; orientation <= 8; ++orientation) {
        const QString path = dir.filePath(u"o%1.jpg"_s.arg(orientation));
        ASSERT_EQ(rotation.rotate(path, 0, false), orientation == 1 ? Outcome::Skipped : Outcome::Rotated);
        const vips::VImage image = decode(path);
        ASSERT_EQ(std::pair(image.width(), image.height()), std::pair(592, 448)) << orientation;
        // Lossless: only the stored picture's own encoding noise remains.
        EXPECT_LT(orientationset::meanDifference(image, upright), 2) << orientation;
        EXPECT_EQ(readExifOrientation(path.toLocal8Bit().constData()), 1) << orientation;
    }
    EXPECT_TRUE(warnings.isEmpty()) << "whole blocks need no trimming";
}

TEST_F(FileRotationTest, ProfileAndXmpComeThroughByteForByte) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "xmp-BlueSquare.jpg"); // JFIF, EXIF, XMP, ICC, Photoshop
    const QString path = put(u"square.jpg"_s, readFile(sample));
    ASSERT_EQ(rotation.rotate(path, 90, false), Outcome::Rotated);
    const auto before = JpegSegmentList::parse(readFile(sample)).value();
    const auto after = JpegSegmentList::parse(readFile(path)).value();
    ASSERT_FALSE(before.iccProfile().isEmpty());
    EXPECT_EQ(after.iccProfile(), before.iccProfile());
    const qsizetype xmp = before.find(0xE1, JpegSegmentList::XmpSignature);
    ASSERT_GE(after.find(0xE1, JpegSegmentList::XmpSignature), 0);
    EXPECT_EQ(after.segments()[after.find(0xE1, JpegSegmentList::XmpSignature)].payload,
              before.segments()[xmp].payload);
    EXPECT_EQ(KVImageInfo::fromFile(path).value().cameraModel(),
              KVImageInfo::fromFile(sample).value().cameraModel());
    // 216 rows are not whole 16-row blocks: trimmed, and said so.
    EXPECT_EQ(decode(path).width(), 208);
    EXPECT_EQ(warnings.size(), 1);
}

// The APPn segments of a file, in order, each as its marker and payload.
QList<QByteArray> appSegments(const QByteArray& jpeg) {
    const JpegSegmentList list = JpegSegmentList::parse(jpeg).value();
    QList<QByteArray> out;
    for (const JpegSegmentList::Segment& segment : list.segments())
        if (segment.marker >= 0xE0 && segment.marker <= 0xEF)
            out.append(char(segment.marker) + segment.payload);
    return out;
}

TEST_F(FileRotationTest, XmpOrientationFollowsTheExifOneOnlyInAnAutomaticTurn) {
    for (const bool asElement : {false, true}) {
        const auto xmp = [asElement](char value) {
            const QByteArray digit(1, value);
            return xmpSegment(xmpPacket(asElement ? "><tiff:Orientation>" + digit + "</tiff:Orientation>"
                                                  : "tiff:Orientation=\"" + digit + "\">"));
        };
        const QString automatic = put(u"auto.jpg"_s, markedJpeg(6, true, xmp('6')));
        ASSERT_EQ(rotation.rotate(automatic, 0, false), Outcome::Rotated);
        // Nothing else of the metadata changes: the JFIF segment, the EXIF
        // block but for its orientation, the XMP but for one digit.
        EXPECT_EQ(appSegments(readFile(automatic)), appSegments(markedJpeg(1, true, xmp('1'))));

        const QString turned = put(u"turned.jpg"_s, markedJpeg(6, true, xmp('6')));
        ASSERT_EQ(rotation.rotate(turned, 90, false), Outcome::Rotated);
        EXPECT_EQ(appSegments(readFile(turned)), appSegments(markedJpeg(6, true, xmp('6'))));
    }
}

TEST_F(FileRotationTest, ExtendedXmpAndStalePiecesStayInPlaceByteForByte) {
    // Without an orientation in it the XMP has nothing to change, even in an
    // automatic turn; a rotation keeps every segment, the stale piece too.
    const QByteArray guid("0123456789ABCDEF0123456789ABCDEF");
    const QByteArray xmp = xmpSegment(xmpPacket("xmpNote:HasExtendedXMP=\"" + guid + "\">")) +
                           xmpExtension(guid, 120000, 0, QByteArray(60000, 'a')) +
                           xmpExtension("FEDCBA9876543210FEDCBA9876543210", 5, 0, "stale") +
                           xmpExtension(guid, 120000, 60000, QByteArray(60000, 'b'));
    const QString path = put(u"deep.jpg"_s, markedJpeg(8, true, xmp));
    ASSERT_EQ(rotation.rotate(path, 0, false), Outcome::Rotated);
    EXPECT_EQ(appSegments(readFile(path)), appSegments(markedJpeg(1, true, xmp)));
    ASSERT_EQ(rotation.rotate(path, 180, true), Outcome::Rotated);
    EXPECT_EQ(appSegments(readFile(path)), appSegments(markedJpeg(1, true, xmp)));
}

TEST_F(FileRotationTest, ReadOnlyFilesAndFoldersAreLeftAlone) {
    const QByteArray original = markedJpeg(6);
    const QString locked = put(u"locked.jpg"_s, original);
    QFile::setPermissions(locked, QFileDevice::ReadOwner);
    EXPECT_EQ(rotation.rotate(locked, 90, false), Outcome::Bad);
    EXPECT_EQ(warnings.last(), u"'locked.jpg' is read-only\n"_s);

    QDir(dir.path()).mkdir(u"shelf"_s);
    const QString shelved = put(u"shelf/photo.jpg"_s, original);
    const auto rx = QFileDevice::ReadOwner | QFileDevice::ExeOwner;
    QFile::setPermissions(dir.filePath("shelf"), rx);
    EXPECT_EQ(rotation.rotate(shelved, 90, true), Outcome::Bad);
    EXPECT_EQ(rotation.rotate(shelved, 0, false), Outcome::Bad);
    EXPECT_EQ(entries(u"shelf"_s), QStringList{u"photo.jpg"_s});
    QFile::setPermissions(dir.filePath("shelf"), rx | QFileDevice::WriteOwner);
    EXPECT_EQ(readFile(locked), original);
    EXPECT_EQ(readFile(shelved), original);
    EXPECT_TRUE(calls.isEmpty());
}

TEST_F(FileRotationTest, BackupKeepsOneGenerationOfTheOriginal) {
    const QString path = put(u"photo.jpg"_s, markedJpeg(1));
    const QString backup = dir.filePath("Quillet Originals/photo.jpg");
    // After a restore, the backup can be a second name of the file itself.
    QDir(dir.path()).mkdir(u"Quillet Originals"_s);
    ASSERT_EQ(::link(path.toLocal8Bit().constData(), backup.toLocal8Bit().constData()), 0);
    ASSERT_EQ(rotation.rotate(path, 90, true), Outcome::Rotated);
    EXPECT_EQ(calls.last().last(), backup);
    EXPECT_EQ(readFile(backup), markedJpeg(1));
    const QByteArray once = readFile(path);
    ASSERT_EQ(rotation.rotate(path, 90, true), Outcome::Rotated);
    EXPECT_EQ(readFile(backup), once);
    EXPECT_EQ(entries(), (QStringList{u"Quillet Originals"_s, u"photo.jpg"_s}));
}

TEST_F(FileRotationTest, AFailingStepPutsTheOriginalBack) {
    const QByteArray original = markedJpeg(6);
    const QString path = put(u"photo.jpg"_s, original);
    files.fail(FailingFileSystem::Call::MakeFolder, EACCES); // no backup folder
    EXPECT_EQ(rotation.rotate(path, 90, true), Outcome::Bad);
    files.heal();
    for (const bool backup : {false, true}) {
        failRename(0); // the move aside
        EXPECT_EQ(rotation.rotate(path, 90, backup), Outcome::Bad);
        failWith = backup ? 1 : -1; // the tool, after writing half a file
        EXPECT_EQ(rotation.rotate(path, 90, backup), Outcome::Bad);
        failWith = 0;
    }
    // The disk fills up while the EXIF block goes into the turned file.
    files.fail(FailingFileSystem::Call::Write, ENOSPC);
    EXPECT_EQ(rotation.rotate(path, 90, false), Outcome::Bad);
    EXPECT_TRUE(warnings.contains(u"Unable to copy the EXIF data into 'photo.jpg'\n"_s));
    files.heal();
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(entries(), (QStringList{u"Quillet Originals"_s, u"photo.jpg"_s}));
    EXPECT_EQ(calls.size(), 4); // a failing tool is tried again with the edges trimmed

    // When even the move back fails, the original waits under its temporary
    // name, the file is not touched again, and the next run puts it back.
    failWith = 1;
    failRename(1);
    EXPECT_EQ(rotation.rotate(path, 90, false), Outcome::Bad);
    failWith = 0;
    EXPECT_EQ(rotation.rotate(path, 90, false), Outcome::Bad);
    EXPECT_EQ(readFile(FileRotation::temporaryPath(path)), original);
    rotation.restoreLeftovers({path});
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(entries().size(), 2);
}

TEST_F(FileRotationTest, LeftoversOfAnInterruptedRunArePutBack) {
    // What a killed run can leave at the file's name while the original waits
    // under its temporary name: nothing, half a file, a turned copy without
    // EXIF, or the original itself under both names.
    const QByteArray original = markedJpeg(6);
    const QString path = dir.filePath("photo.jpg");
    for (int state = 0; state < 4; ++state) {
        const QString temporary = put(u".qlt.photo.jpg"_s, original);
        if (state == 1)
            writeFile(path, original.left(300));
        if (state == 2)
            QProcess::execute(u"jpegtran"_s, {u"-rotate"_s, u"90"_s, u"-outfile"_s, path, temporary});
        ASSERT_TRUE(state != 3 ||
                    ::link(temporary.toLocal8Bit().constData(), path.toLocal8Bit().constData()) == 0);
        rotation.restoreLeftovers({path});
        EXPECT_EQ(readFile(path), original) << state;
        EXPECT_EQ(entries(), QStringList{u"photo.jpg"_s}) << state;
        QFile::remove(path);
    }
    EXPECT_EQ(lines.last(), u"Restored 'photo.jpg' from an interrupted rotation\n"_s);
}

TEST_F(FileRotationTest, NonJpegFilesComeBackByteForByteAndAreReported) {
    const QByteArray png("\x89PNG\r\n\x1a\n", 8), truncated = markedJpeg(6).left(400);
    const QStringList bad{put(u"picture.png"_s, png), put(u"cut.jpg"_s, truncated), put(u"empty.jpg"_s, {})};
    const QString upright = put(u"upright.jpg"_s, markedJpeg(1));
    EXPECT_EQ(runTool(QStringList{u"rotate"_s, u"cw"_s, u"--backup"_s} + bad + QStringList{upright}), 1);
    EXPECT_TRUE(
        err.startsWith(u"'picture.png' is not a JPEG\n'cut.jpg' is not a JPEG\n'empty.jpg' is not a JPEG\n"
                       "Non-JPEG Files: Lossless JPEG operations can only be performed on JPEG files. "
                       "Non-JPEG files ignored.\n"_s))
        << err.toStdString();
    EXPECT_EQ(readFile(bad[0]), png);
    EXPECT_EQ(readFile(bad[1]), truncated);
    EXPECT_EQ(readFile(bad[2]), QByteArray());
    EXPECT_EQ(readFile(FileRotation::backupPath(upright)), markedJpeg(1));
    EXPECT_EQ(entries(u"Quillet Originals"_s), QStringList{u"upright.jpg"_s});
}

// Runs killed outright at several steps of a rotation never lose a file; the
// next run of the same command puts every leftover back and finishes the job.
// A run that is asked to stop finishes the file in hand and stops.
TEST_F(FileRotationTest, KilledRunsLoseNothingAndTheNextRunRecovers) {
    const QString slowTool =
        put(u"slow-jpegtran"_s, "#!/bin/sh\nsleep 0.15\njpegtran \"$@\" || exit $?\nsleep 0.15\n");
    QFile::setPermissions(slowTool, QFile::permissions(slowTool) | QFileDevice::ExeOwner);
    const QByteArray original = markedJpeg(6);
    const vips::VImage expected = plainRotation(put(u"plain.jpg"_s, original), 90);
    const QDir batch(dir.filePath("batch"));
    const auto leftovers = [&batch] { return batch.entryList({u".qlt.*"_s}, QDir::Files | QDir::Hidden); };

    for (const bool backup : {false, true}) {
        batch.mkpath(u"."_s);
        QStringList args{u"rotate"_s, u"auto"_s}, paths;
        if (backup)
            args.append(u"--backup"_s);
        for (int i = 0; i < 12; ++i)
            paths.append(put(u"batch/p%1.jpg"_s.arg(i), original));
        args += paths;

        for (const int killAfter : {-1, 0, 90, 180, 270}) {
            // Counted from the moment a file has been moved aside.
            QProcess process;
            process.setEnvironment(QProcess::systemEnvironment() << u"QUILLET_JPEGTRAN="_s + slowTool);
            process.start(cliPath(), args);
            ASSERT_TRUE(process.waitForStarted());
            for (int waited = 0; leftovers().isEmpty() && waited < 30000; waited += 5)
                QThread::msleep(5);
            if (killAfter < 0) {
                // A plain kill lets the file in hand finish: nothing is left over.
                process.terminate();
                process.waitForFinished();
                EXPECT_EQ(process.exitCode(), 130);
                EXPECT_EQ(leftovers(), QStringList());
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
        const bool interrupted = !leftovers().isEmpty();

        EXPECT_EQ(runTool(args), 0) << err.toStdString();
        EXPECT_EQ(out.contains(u"from an interrupted rotation"_s), interrupted);
        for (const QString& path : paths) {
            EXPECT_EQ(KVImageInfo::orientationForPath(path), 1) << path.toStdString();
            EXPECT_EQ(maxDifference(path, expected), 0) << path.toStdString();
            EXPECT_FALSE(QFile::exists(FileRotation::temporaryPath(path)));
            EXPECT_EQ(readFile(FileRotation::backupPath(path)), backup ? original : QByteArray());
        }
        QDir(batch).removeRecursively();
    }
}

} // namespace
