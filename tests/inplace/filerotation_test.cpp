#include "inplace/filerotation.h"
#include "inplace/inplacefilesystem.h"
#include "inplace/jpegtranrunner.h"
#include "jpegfixtures.h"
#include "metadata/kvimageinfo.h"
#include "support/activitylog.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace testsupport;
using namespace jpegfixtures;

namespace {

// Keeps every line, to check what the user was told.
class RecordingLog final : public ActivityLog {
  public:
    void writeActivity(const QString& line) override { lines.append(line); }
    void writeWarningActivity(const QString& line) override { warnings.append(line); }
    QStringList lines, warnings;
};

// The real tool, with its arguments kept; or a stand-in that fails after
// scribbling over the output, as a crashing tool would.
class RecordingJpegtran final : public JpegtranRunner {
  public:
    int run(const QStringList& arguments) override {
        calls.append(arguments);
        if (failWith == 0)
            return JpegtranRunner::run(arguments);
        writeFile(arguments.at(3), "half a picture");
        return failWith;
    }
    QList<QStringList> calls;
    int failWith = 0;
};

// Fails the calls a test names; the rest reach the disk.
class FailingFileSystem final : public InplaceFileSystem {
  public:
    bool rename(const QString& from, const QString& to) override {
        return renamesLeft-- != 0 && InplaceFileSystem::rename(from, to);
    }
    bool makeFolder(const QString& path) override {
        return !failFolders && InplaceFileSystem::makeFolder(path);
    }
    int renamesLeft = -1; // renames that succeed before the next one fails; -1: all succeed
    bool failFolders = false;
};

class FileRotationTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
    void TearDown() override {
        if (HasFailure()) // what the user would have been told
            std::printf("warnings:\n%s", qPrintable(log.warnings.join(QString())));
    }
    QString put(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(writeFile(path, bytes));
        return path;
    }
    // Nothing but the named files is left in the folder (no hidden temporaries).
    QStringList folderEntries() const {
        return QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    FileRotation::Outcome rotate(const QString& path, int degrees, bool backup = false) {
        return FileRotation(jpegtran, fileSystem, log).rotate(path, degrees, backup);
    }

    QTemporaryDir dir;
    RecordingLog log;
    RecordingJpegtran jpegtran;
    FailingFileSystem fileSystem;
};

TEST_F(FileRotationTest, AutomaticTurnsOrientationSixUprightAndKeepsTheExif) {
    const QByteArray original = markedJpeg(6);
    const QString path = put(QStringLiteral("photo.jpg"), original);
    const QString plain = put(QStringLiteral("plain.jpg"), original);

    ASSERT_EQ(rotate(path, 0), FileRotation::Outcome::Rotated);

    ASSERT_EQ(jpegtran.calls.size(), 1);
    EXPECT_EQ(jpegtran.calls.first(),
              (QStringList{QStringLiteral("-rotate"), QStringLiteral("90"), QStringLiteral("-outfile"), path,
                           dir.filePath(".qlt.photo.jpg")}));
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("Rotated 'photo.jpg'\n")});
    EXPECT_EQ(KVImageInfo::orientationForPath(path), 1);
    const auto info = KVImageInfo::fromFile(path);
    ASSERT_TRUE(info.has_value());
    EXPECT_EQ(info->cameraMake(), QLatin1String(CameraMake));
    EXPECT_EQ(info->creationDateString(), QLatin1String(CaptureDate));

    // The pixels are exactly those of a plain run of the tool.
    ASSERT_EQ(
        QProcess::execute(QStringLiteral("jpegtran"), {QStringLiteral("-rotate"), QStringLiteral("90"),
                                                       QStringLiteral("-outfile"), plain + ".out", plain}),
        0);
    const vips::VImage turned = decode(path);
    EXPECT_EQ(turned.width(), 48);
    EXPECT_EQ(turned.height(), 64);
    EXPECT_EQ(maxDifference(turned, decode(plain + ".out")), 0);
    // The red corner went from top-left to top-right.
    EXPECT_GT(pixelAt(turned, 40, 4)[0], 200);
    EXPECT_LT(pixelAt(turned, 4, 4)[0], 60);
    QFile::remove(plain);
    QFile::remove(plain + ".out");
    EXPECT_EQ(folderEntries(), QStringList{QStringLiteral("photo.jpg")});
}

TEST_F(FileRotationTest, AutomaticAnglesFollowTheTag) {
    for (const auto& [orientation, degrees] : {std::pair{8, 270}, std::pair{3, 180}}) {
        const QString path = put(QStringLiteral("o%1.jpg").arg(orientation), markedJpeg(orientation));
        ASSERT_EQ(rotate(path, 0), FileRotation::Outcome::Rotated) << orientation;
        EXPECT_EQ(jpegtran.calls.last().at(1), QString::number(degrees));
        EXPECT_EQ(KVImageInfo::orientationForPath(path), 1);
    }
}

TEST_F(FileRotationTest, ExplicitAngleKeepsTheTag) {
    const QString path = put(QStringLiteral("photo.jpg"), markedJpeg(6));
    ASSERT_EQ(rotate(path, 180), FileRotation::Outcome::Rotated);
    EXPECT_EQ(KVImageInfo::orientationForPath(path), 6);
    const vips::VImage turned = decode(path);
    EXPECT_EQ(turned.width(), 64);
    EXPECT_GT(pixelAt(turned, 60, 44)[0], 200); // red corner now bottom-right

    // Pictures without EXIF, or with JFIF in front of it, turn just the same.
    for (const bool jfifFirst : {false, true}) {
        const QString other = put(QStringLiteral("other.jpg"), markedJpeg(jfifFirst ? 6 : -1, jfifFirst));
        ASSERT_EQ(rotate(other, 270), FileRotation::Outcome::Rotated) << jfifFirst;
        EXPECT_EQ(decode(other).width(), 48);
        EXPECT_GT(pixelAt(decode(other), 4, 60)[0], 200); // red corner now bottom-left
    }
}

// Files that automatic mode must leave byte for byte as they are, unreported.
struct SkipCase {
    const char* label;
    int orientation;
    bool jfifFirst;
};

class AutomaticSkipTest : public FileRotationTest, public ::testing::WithParamInterface<SkipCase> {};

TEST_P(AutomaticSkipTest, LeavesTheFileAlone) {
    const QByteArray original = markedJpeg(GetParam().orientation, GetParam().jfifFirst);
    const QString path = put(QStringLiteral("photo.jpg"), original);
    EXPECT_EQ(rotate(path, 0), FileRotation::Outcome::Skipped);
    EXPECT_TRUE(jpegtran.calls.isEmpty());
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("Skipping 'photo.jpg'\n")});
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(folderEntries(), QStringList{QStringLiteral("photo.jpg")});
}

INSTANTIATE_TEST_SUITE_P(Orientations, AutomaticSkipTest,
                         ::testing::Values(SkipCase{"upright", 1, false}, SkipCase{"mirrored", 2, false},
                                           SkipCase{"mirrored180", 4, false},
                                           SkipCase{"transposed", 5, false},
                                           SkipCase{"transversed", 7, false}, SkipCase{"noTag", 0, false},
                                           SkipCase{"noExif", -1, false},
                                           SkipCase{"jfifBeforeExif", 6, true}),
                         [](const auto& info) { return std::string(info.param.label); });

// Files a rotation must refuse: each comes back byte-identical, reported, with
// no temporary left beside it.
struct RefusalCase {
    const char* label;
    QByteArray bytes;
    const char* warning;
};

class RefusalTest : public FileRotationTest, public ::testing::WithParamInterface<RefusalCase> {};

TEST_P(RefusalTest, KeepsTheOriginal) {
    for (const bool backup : {false, true}) {
        const QString path = put(QStringLiteral("picture.jpg"), GetParam().bytes);
        EXPECT_EQ(rotate(path, 90, backup), FileRotation::Outcome::Bad) << backup;
        EXPECT_EQ(readFile(path), GetParam().bytes);
        EXPECT_EQ(log.warnings.last(), QString::fromLatin1(GetParam().warning));
        EXPECT_FALSE(QFileInfo::exists(FileRotation::temporaryPath(path)));
        EXPECT_FALSE(QFileInfo::exists(FileRotation::backupPath(path)));
    }
}

QByteArray pngBytes() {
    return blobBytes(solidImage(8, 8, 1, 2, 3).pngsave_buffer());
}

INSTANTIATE_TEST_SUITE_P(
    Files, RefusalTest,
    ::testing::Values(RefusalCase{"png", pngBytes(), "'picture.jpg' is not a JPEG\n"},
                      RefusalCase{"truncated", markedJpeg(6).left(400), "'picture.jpg' is not a JPEG\n"},
                      RefusalCase{"empty", QByteArray(), "'picture.jpg' is not a JPEG\n"}),
    [](const auto& info) { return std::string(info.param.label); });

TEST_F(FileRotationTest, FoldersAndReadOnlyPlacesAreRefused) {
    QDir(dir.path()).mkdir(QStringLiteral("album.jpg"));
    EXPECT_EQ(rotate(dir.filePath("album.jpg"), 90), FileRotation::Outcome::Bad);
    EXPECT_EQ(log.warnings.last(), QStringLiteral("'album.jpg' is a folder\n"));

    const QByteArray original = markedJpeg(6);
    const QString locked = put(QStringLiteral("locked.jpg"), original);
    QFile::setPermissions(locked, QFileDevice::ReadOwner | QFileDevice::ReadGroup);
    EXPECT_EQ(rotate(locked, 90), FileRotation::Outcome::Bad);
    EXPECT_EQ(log.warnings.last(), QStringLiteral("'locked.jpg' is read-only\n"));
    EXPECT_EQ(readFile(locked), original);

    const QString inner = dir.filePath("shelf");
    QDir(dir.path()).mkdir(QStringLiteral("shelf"));
    const QString shelved = inner + "/photo.jpg";
    ASSERT_TRUE(writeFile(shelved, original));
    QFile::setPermissions(inner, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    EXPECT_EQ(rotate(shelved, 90, true), FileRotation::Outcome::Bad);
    EXPECT_EQ(rotate(shelved, 90, false), FileRotation::Outcome::Bad);
    EXPECT_EQ(readFile(shelved), original);
    EXPECT_EQ(QDir(inner).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("photo.jpg")});
    QFile::setPermissions(inner, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    EXPECT_TRUE(jpegtran.calls.isEmpty());
}

TEST_F(FileRotationTest, BackupKeepsOneGenerationOfTheOriginal) {
    const QByteArray original = markedJpeg(1);
    const QString path = put(QStringLiteral("photo.jpg"), original);
    ASSERT_EQ(rotate(path, 90, true), FileRotation::Outcome::Rotated);
    const QString backup = dir.filePath("Quillet Originals/photo.jpg");
    EXPECT_EQ(jpegtran.calls.last().last(), backup);
    EXPECT_EQ(readFile(backup), original);
    const QByteArray once = readFile(path);
    EXPECT_NE(once, original);

    ASSERT_EQ(rotate(path, 90, true), FileRotation::Outcome::Rotated);
    EXPECT_EQ(readFile(backup), once);
    EXPECT_EQ(folderEntries(),
              (QStringList{QStringLiteral("Quillet Originals"), QStringLiteral("photo.jpg")}));
}

TEST_F(FileRotationTest, FailingStepsPutTheOriginalBack) {
    const QByteArray original = markedJpeg(6);
    const QString path = put(QStringLiteral("photo.jpg"), original);

    fileSystem.failFolders = true; // no backup folder: untouched
    EXPECT_EQ(rotate(path, 90, true), FileRotation::Outcome::Bad);
    EXPECT_EQ(readFile(path), original);
    fileSystem.failFolders = false;

    fileSystem.renamesLeft = 0; // the move aside fails: untouched
    EXPECT_EQ(rotate(path, 90, false), FileRotation::Outcome::Bad);
    fileSystem.renamesLeft = 0;
    EXPECT_EQ(rotate(path, 90, true), FileRotation::Outcome::Bad);
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(folderEntries(),
              (QStringList{QStringLiteral("Quillet Originals"), QStringLiteral("photo.jpg")}));
    fileSystem.renamesLeft = -1;

    jpegtran.failWith = 1; // the tool fails after writing half a file
    for (const bool backup : {false, true}) {
        EXPECT_EQ(rotate(path, 90, backup), FileRotation::Outcome::Bad);
        EXPECT_EQ(readFile(path), original);
        EXPECT_EQ(log.warnings.last(), QStringLiteral("'photo.jpg' is not a JPEG\n"));
        EXPECT_FALSE(QFileInfo::exists(FileRotation::temporaryPath(path)));
    }
    jpegtran.failWith = -1; // a tool that cannot be run counts the same
    EXPECT_EQ(rotate(path, 90), FileRotation::Outcome::Bad);
    EXPECT_EQ(readFile(path), original);
}

TEST_F(FileRotationTest, OriginalThatCannotBePutBackStaysRecoverable) {
    const QByteArray original = markedJpeg(6);
    const QString path = put(QStringLiteral("photo.jpg"), original);
    jpegtran.failWith = 1;
    fileSystem.renamesLeft = 1; // the move aside works, the move back fails
    EXPECT_EQ(rotate(path, 90), FileRotation::Outcome::Bad);
    EXPECT_EQ(readFile(FileRotation::temporaryPath(path)), original);

    // Until it is put back the file is not touched again.
    jpegtran.failWith = 0;
    EXPECT_EQ(rotate(path, 90), FileRotation::Outcome::Bad);
    EXPECT_EQ(readFile(FileRotation::temporaryPath(path)), original);

    FileRotation rotation(jpegtran, fileSystem, log);
    EXPECT_TRUE(rotation.restoreLeftover(path));
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(folderEntries(), QStringList{QStringLiteral("photo.jpg")});
}

// What an interrupted run can leave at the file's own name while the original
// waits under its temporary name.
struct LeftoverCase {
    const char* label;
    int targetState; // 0 nothing, 1 half-written, 2 turned but without EXIF, 3 the original itself
};

class LeftoverTest : public FileRotationTest, public ::testing::WithParamInterface<LeftoverCase> {};

TEST_P(LeftoverTest, NextRunPutsTheOriginalBackAndRotatesIt) {
    const QByteArray original = markedJpeg(6);
    const QString path = dir.filePath("photo.jpg");
    const QString temporary = put(QStringLiteral(".qlt.photo.jpg"), original);
    switch (GetParam().targetState) {
    case 1:
        writeFile(path, original.left(original.size() / 2));
        break;
    case 2:
        QProcess::execute(QStringLiteral("jpegtran"), {QStringLiteral("-rotate"), QStringLiteral("90"),
                                                       QStringLiteral("-outfile"), path, temporary});
        break;
    case 3:
        ASSERT_EQ(::link(temporary.toLocal8Bit().constData(), path.toLocal8Bit().constData()), 0);
        break;
    }
    FileRotation rotation(jpegtran, fileSystem, log);
    EXPECT_TRUE(rotation.restoreLeftover(path));
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(folderEntries(), QStringList{QStringLiteral("photo.jpg")});

    EXPECT_EQ(rotation.rotate(path, 0, true), FileRotation::Outcome::Rotated);
    EXPECT_EQ(KVImageInfo::orientationForPath(path), 1);
    EXPECT_EQ(readFile(FileRotation::backupPath(path)), original);
}

INSTANTIATE_TEST_SUITE_P(States, LeftoverTest,
                         ::testing::Values(LeftoverCase{"targetMissing", 0},
                                           LeftoverCase{"targetHalfWritten", 1},
                                           LeftoverCase{"targetTurned", 2}, LeftoverCase{"sameFile", 3}),
                         [](const auto& info) { return std::string(info.param.label); });

TEST_F(FileRotationTest, RunRestoresListedFilesAndMissingOnesOnly) {
    const QByteArray original = markedJpeg(6);
    put(QStringLiteral(".qlt.listed.jpg"), original);
    const QString listed = put(QStringLiteral("listed.jpg"), "half");
    put(QStringLiteral(".qlt.gone.jpg"), original);
    put(QStringLiteral(".qlt.other.jpg"), original);
    const QString other = put(QStringLiteral("other.jpg"), "not ours to judge");

    FileRotation(jpegtran, fileSystem, log).restoreLeftovers({listed});
    EXPECT_EQ(readFile(listed), original);
    EXPECT_EQ(readFile(dir.filePath("gone.jpg")), original);
    EXPECT_EQ(readFile(other), "not ours to judge");
    EXPECT_EQ(folderEntries(), (QStringList{QStringLiteral(".qlt.other.jpg"), QStringLiteral("gone.jpg"),
                                            QStringLiteral("listed.jpg"), QStringLiteral("other.jpg")}));
    EXPECT_EQ(log.lines,
              (QStringList{QStringLiteral("Restored 'gone.jpg' from an interrupted rotation\n"),
                           QStringLiteral("Restored 'listed.jpg' from an interrupted rotation\n")}));
}

TEST_F(FileRotationTest, RotationAfterARestoreWithBackupReadsAnIntactOriginal) {
    // After a restore, the backup and the file can be two names of one file.
    const QByteArray original = markedJpeg(1);
    const QString path = put(QStringLiteral("photo.jpg"), original);
    QDir(dir.path()).mkdir(QStringLiteral("Quillet Originals"));
    const QString backup = FileRotation::backupPath(path);
    ASSERT_EQ(::link(path.toLocal8Bit().constData(), backup.toLocal8Bit().constData()), 0);

    ASSERT_EQ(rotate(path, 90, true), FileRotation::Outcome::Rotated);
    EXPECT_EQ(readFile(backup), original);
    EXPECT_EQ(decode(path).width(), 48);
}

// The camera sample with its JFIF segment dropped and its EXIF block moved
// to the front, so that its orientation tag counts.
QByteArray exifFirst(const QByteArray& jpeg) {
    QByteArray exif, others;
    qsizetype at = 2;
    while (at + 4 <= jpeg.size() && uchar(jpeg[at]) == 0xFF && uchar(jpeg[at + 1]) != 0xDA) {
        const qsizetype length = 2 + ((uchar(jpeg[at + 2]) << 8) | uchar(jpeg[at + 3]));
        const QByteArray segment = jpeg.mid(at, length);
        if (uchar(jpeg[at + 1]) == 0xE1 && segment.mid(4, 4) == "Exif" && exif.isEmpty())
            exif = segment;
        else if (uchar(jpeg[at + 1]) != 0xE0)
            others += segment;
        at += length;
    }
    return jpeg.left(2) + exif + others + jpeg.mid(at);
}

TEST_F(FileRotationTest, RealCameraPictureTurnsUprightWithItsExif) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "orientation-portrait_6.jpg");
    const QByteArray original = exifFirst(readFile(sample));
    const QString path = put(QStringLiteral("portrait.jpg"), original);
    const QString plain = put(QStringLiteral("plain.jpg"), original);
    ASSERT_EQ(KVImageInfo::orientationForPath(path), 6);
    const auto before = KVImageInfo::fromFile(path);

    ASSERT_EQ(rotate(path, 0), FileRotation::Outcome::Rotated);
    EXPECT_EQ(jpegtran.calls.last().at(1), QStringLiteral("90"));
    EXPECT_EQ(KVImageInfo::orientationForPath(path), 1);
    const auto after = KVImageInfo::fromFile(path);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(after->cameraMake(), before->cameraMake());
    EXPECT_EQ(after->cameraModel(), before->cameraModel());
    EXPECT_EQ(after->creationDate(), before->creationDate());
    EXPECT_EQ(after->exposureTimeFloat(), before->exposureTimeFloat());
    EXPECT_EQ(after->apertureFloat(), before->apertureFloat());
    EXPECT_EQ(after->focalLengthFloat(), before->focalLengthFloat());
    EXPECT_EQ(after->isoInt(), before->isoInt());
    EXPECT_EQ(after->width(), before->height());
    EXPECT_EQ(after->height(), before->width());

    ASSERT_EQ(
        QProcess::execute(QStringLiteral("jpegtran"), {QStringLiteral("-rotate"), QStringLiteral("90"),
                                                       QStringLiteral("-outfile"), plain + ".out", plain}),
        0);
    EXPECT_EQ(maxDifference(decode(path), decode(plain + ".out")), 0);
}

TEST_F(FileRotationTest, RealCameraPicturesTurnLosslessly) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "orientation-landscape_6.jpg");
    const QByteArray original = readFile(sample);
    const QString path = put(QStringLiteral("landscape.jpg"), original);
    // Its first segment is JFIF, so automatic mode does not see the tag.
    EXPECT_EQ(rotate(path, 0), FileRotation::Outcome::Skipped);
    EXPECT_EQ(readFile(path), original);

    ASSERT_EQ(rotate(path, 90, true), FileRotation::Outcome::Rotated);
    EXPECT_EQ(readFile(FileRotation::backupPath(path)), original);
    const QString plain = dir.filePath("plain.jpg");
    ASSERT_EQ(QProcess::execute(QStringLiteral("jpegtran"), {QStringLiteral("-rotate"), QStringLiteral("90"),
                                                             QStringLiteral("-outfile"), plain, sample}),
              0);
    EXPECT_EQ(maxDifference(decode(path), decode(plain)), 0);
    const auto before = KVImageInfo::fromFile(sample);
    const auto after = KVImageInfo::fromFile(path);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(after->cameraModel(), before->cameraModel());
    EXPECT_EQ(after->creationDate(), before->creationDate());
    EXPECT_EQ(after->orientation(), before->orientation());
}

} // namespace
