#include "inplace/filerotation.h"
#include "inplace/inplacefilesystem.h"
#include "inplace/jpegtranrunner.h"
#include "jpegfixtures.h"
#include "metadata/kvimageinfo.h"
#include "support/activitylog.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <unistd.h>

using namespace testsupport;
using namespace jpegfixtures;
using Outcome = FileRotation::Outcome;

namespace {

class RecordingLog final : public ActivityLog {
  public:
    void writeActivity(const QString& line) override { lines.append(line); }
    void writeWarningActivity(const QString& line) override { warnings.append(line); }
    QStringList lines, warnings;
};

// The real tool with its arguments kept, or one that fails after scribbling
// over its output (failWith -1: could not be run).
class RecordingJpegtran final : public JpegtranRunner {
  public:
    int run(const QStringList& arguments) override {
        calls.append(arguments);
        if (failWith != 0)
            writeFile(arguments.at(3), "half a picture");
        return failWith != 0 ? failWith : JpegtranRunner::run(arguments);
    }
    QList<QStringList> calls;
    int failWith = 0;
};

class FailingFileSystem final : public InplaceFileSystem {
  public:
    bool rename(const QString& from, const QString& to) override {
        return renamesLeft-- != 0 && InplaceFileSystem::rename(from, to);
    }
    bool makeFolder(const QString& path) override {
        return !failFolders && InplaceFileSystem::makeFolder(path);
    }
    int renamesLeft = -1; // renames that work before one fails; -1: all work
    bool failFolders = false;
};

class FileRotationTest : public ::testing::Test {
  protected:
    void TearDown() override {
        if (HasFailure())
            std::printf("warnings:\n%s", qPrintable(log.warnings.join(QString())));
    }
    QString put(const QString& name, const QByteArray& bytes) {
        EXPECT_TRUE(writeFile(dir.filePath(name), bytes));
        return dir.filePath(name);
    }
    QStringList entries(const QString& sub = {}) const {
        return QDir(dir.filePath(sub))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    Outcome rotate(const QString& path, int degrees, bool backup = false) {
        return rotation.rotate(path, degrees, backup);
    }
    QTemporaryDir dir;
    RecordingLog log;
    RecordingJpegtran jpegtran;
    FailingFileSystem fileSystem;
    FileRotation rotation{jpegtran, fileSystem, log};
};

TEST_F(FileRotationTest, AutomaticTurnsACameraPictureUprightAndKeepsItsExif) {
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "orientation-landscape_1.jpg"); // its EXIF block comes first
    const QString path = put(QStringLiteral("portrait.jpg"), readFile(sample));
    ASSERT_EQ(KVImageInfo::setOrientation(6, path), 1);
    const auto before = KVImageInfo::fromFile(path);
    const vips::VImage expected = plainRotation(path, 90);

    ASSERT_EQ(rotate(path, 0), Outcome::Rotated);
    const QStringList arguments{QStringLiteral("-rotate"), QStringLiteral("90"), QStringLiteral("-outfile"),
                                path, dir.filePath(".qlt.portrait.jpg")};
    EXPECT_EQ(jpegtran.calls, QList<QStringList>{arguments});
    EXPECT_EQ(log.lines, QStringList{QStringLiteral("Rotated 'portrait.jpg'\n")});
    EXPECT_EQ(KVImageInfo::orientationForPath(path), 1);
    const auto after = KVImageInfo::fromFile(path);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(after->cameraModel(), before->cameraModel());
    EXPECT_EQ(after->creationDate(), before->creationDate());
    EXPECT_EQ(after->exposureTimeFloat(), before->exposureTimeFloat());
    EXPECT_EQ(after->isoInt(), before->isoInt());
    EXPECT_EQ(maxDifference(decode(path), expected), 0);
    EXPECT_EQ(entries(), QStringList{QStringLiteral("portrait.jpg")});
}

TEST_F(FileRotationTest, AnglesAndWhatBecomesOfTheTag) {
    // {orientation, degrees asked, where the red corner ends up, tag afterwards}
    const struct {
        int orientation, degrees, x, y, tag;
        bool jfifFirst;
    } cases[] = {{8, 0, 4, 60, 1, false},
                 {3, 0, 60, 44, 1, false},
                 {6, 180, 60, 44, 6, false},
                 {-1, 90, 44, 4, 0, false},
                 {6, 270, 4, 60, 6, true}};
    for (const auto& c : cases) {
        const QString path = put(QStringLiteral("photo.jpg"), markedJpeg(c.orientation, c.jfifFirst));
        // The mode is kept, though the tool writes a new file.
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        ASSERT_EQ(rotate(path, c.degrees), Outcome::Rotated) << c.orientation;
        EXPECT_GT(pixelAt(decode(path), c.x, c.y)[0], 200) << c.orientation;
        EXPECT_EQ(KVImageInfo::orientationForPath(path), c.tag) << c.orientation;
        EXPECT_EQ(QFile::permissions(path) & 0x7077, QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
}

TEST_F(FileRotationTest, AutomaticModeLeavesOtherOrientationsAlone) {
    // Upright, the mirrored values, no tag, no EXIF, and EXIF behind JFIF.
    for (const auto& [orientation, jfifFirst] : {std::pair{1, false},
                                                 {2, false},
                                                 {4, false},
                                                 {5, false},
                                                 {7, false},
                                                 {0, false},
                                                 {-1, false},
                                                 {6, true}}) {
        const QByteArray original = markedJpeg(orientation, jfifFirst);
        const QString path = put(QStringLiteral("photo.jpg"), original);
        EXPECT_EQ(rotate(path, 0), Outcome::Skipped) << orientation;
        EXPECT_EQ(readFile(path), original);
    }
    EXPECT_TRUE(jpegtran.calls.isEmpty());
    EXPECT_EQ(log.lines.last(), QStringLiteral("Skipping 'photo.jpg'\n"));
    EXPECT_EQ(entries(), QStringList{QStringLiteral("photo.jpg")});
}

TEST_F(FileRotationTest, FilesThatCannotBeTurnedComeBackByteForByte) {
    const QByteArray png = blobBytes(solidImage(8, 8, 1, 2, 3).pngsave_buffer());
    for (const QByteArray& bytes : {png, markedJpeg(6).left(400), QByteArray()}) {
        for (const bool backup : {false, true}) {
            const QString path = put(QStringLiteral("picture.jpg"), bytes);
            EXPECT_EQ(rotate(path, 90, backup), Outcome::Bad);
            EXPECT_EQ(readFile(path), bytes);
            EXPECT_EQ(log.warnings.last(), QStringLiteral("'picture.jpg' is not a JPEG\n"));
        }
    }
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("Quillet Originals"), QStringLiteral("picture.jpg")}));
    EXPECT_TRUE(entries(QStringLiteral("Quillet Originals")).isEmpty());

    QDir(dir.path()).mkdir(QStringLiteral("album.jpg"));
    EXPECT_EQ(rotate(dir.filePath("album.jpg"), 90), Outcome::Bad);
    EXPECT_EQ(log.warnings.last(), QStringLiteral("'album.jpg' is a folder\n"));
}

TEST_F(FileRotationTest, ReadOnlyFilesAndFoldersAreLeftAlone) {
    const QByteArray original = markedJpeg(6);
    const QString locked = put(QStringLiteral("locked.jpg"), original);
    QFile::setPermissions(locked, QFileDevice::ReadOwner);
    EXPECT_EQ(rotate(locked, 90), Outcome::Bad);
    EXPECT_EQ(log.warnings.last(), QStringLiteral("'locked.jpg' is read-only\n"));

    QDir(dir.path()).mkdir(QStringLiteral("shelf"));
    const QString shelved = put(QStringLiteral("shelf/photo.jpg"), original);
    QFile::setPermissions(dir.filePath("shelf"), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    EXPECT_EQ(rotate(shelved, 90, true), Outcome::Bad);
    EXPECT_EQ(rotate(shelved, 0, false), Outcome::Bad);
    EXPECT_EQ(entries(QStringLiteral("shelf")), QStringList{QStringLiteral("photo.jpg")});
    QFile::setPermissions(dir.filePath("shelf"),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    EXPECT_EQ(readFile(locked), original);
    EXPECT_EQ(readFile(shelved), original);
    EXPECT_TRUE(jpegtran.calls.isEmpty());
}

TEST_F(FileRotationTest, BackupKeepsOneGenerationOfTheOriginal) {
    const QString path = put(QStringLiteral("photo.jpg"), markedJpeg(1));
    const QString backup = dir.filePath("Quillet Originals/photo.jpg");
    // After a restore, the backup can be a second name of the file itself.
    QDir(dir.path()).mkdir(QStringLiteral("Quillet Originals"));
    ASSERT_EQ(::link(path.toLocal8Bit().constData(), backup.toLocal8Bit().constData()), 0);
    ASSERT_EQ(rotate(path, 90, true), Outcome::Rotated);
    EXPECT_EQ(jpegtran.calls.last().last(), backup);
    EXPECT_EQ(readFile(backup), markedJpeg(1));
    const QByteArray once = readFile(path);
    ASSERT_EQ(rotate(path, 90, true), Outcome::Rotated);
    EXPECT_EQ(readFile(backup), once);
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("Quillet Originals"), QStringLiteral("photo.jpg")}));
}

TEST_F(FileRotationTest, AFailingStepPutsTheOriginalBack) {
    const QByteArray original = markedJpeg(6);
    const QString path = put(QStringLiteral("photo.jpg"), original);
    fileSystem.failFolders = true; // no backup folder
    EXPECT_EQ(rotate(path, 90, true), Outcome::Bad);
    fileSystem.failFolders = false;
    for (const bool backup : {false, true}) {
        fileSystem.renamesLeft = 0; // the move aside
        EXPECT_EQ(rotate(path, 90, backup), Outcome::Bad);
        fileSystem.renamesLeft = -1;
        jpegtran.failWith = backup ? 1 : -1; // the tool, after writing half a file
        EXPECT_EQ(rotate(path, 90, backup), Outcome::Bad);
        jpegtran.failWith = 0;
    }
    EXPECT_EQ(readFile(path), original);
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("Quillet Originals"), QStringLiteral("photo.jpg")}));
    EXPECT_EQ(jpegtran.calls.size(), 2);

    // When even the move back fails, the original waits under its temporary
    // name, the file is not touched again, and the next run puts it back.
    jpegtran.failWith = 1;
    fileSystem.renamesLeft = 1;
    EXPECT_EQ(rotate(path, 90), Outcome::Bad);
    jpegtran.failWith = 0;
    EXPECT_EQ(rotate(path, 90), Outcome::Bad);
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
    for (int state = 0; state < 4; ++state) {
        const QString path = dir.filePath("photo.jpg");
        const QString temporary = put(QStringLiteral(".qlt.photo.jpg"), original);
        if (state == 1)
            writeFile(path, original.left(300));
        if (state == 2)
            QProcess::execute(QStringLiteral("jpegtran"), {QStringLiteral("-rotate"), QStringLiteral("90"),
                                                           QStringLiteral("-outfile"), path, temporary});
        if (state == 3) {
            ASSERT_EQ(::link(temporary.toLocal8Bit().constData(), path.toLocal8Bit().constData()), 0);
        }
        rotation.restoreLeftovers({path});
        EXPECT_EQ(readFile(path), original) << state;
        EXPECT_EQ(entries(), QStringList{QStringLiteral("photo.jpg")}) << state;
        QFile::remove(path);
    }

    // A missing file is put back from the run over another file of its
    // folder; one that is there and not listed is not ours to judge.
    const QString listed = put(QStringLiteral("listed.jpg"), "half");
    put(QStringLiteral(".qlt.listed.jpg"), original);
    put(QStringLiteral(".qlt.gone.jpg"), original);
    put(QStringLiteral(".qlt.other.jpg"), original);
    put(QStringLiteral("other.jpg"), "someone else's");
    rotation.restoreLeftovers({listed});
    EXPECT_EQ(readFile(listed), original);
    EXPECT_EQ(readFile(dir.filePath("gone.jpg")), original);
    EXPECT_EQ(entries(), (QStringList{QStringLiteral(".qlt.other.jpg"), QStringLiteral("gone.jpg"),
                                      QStringLiteral("listed.jpg"), QStringLiteral("other.jpg")}));
    EXPECT_EQ(log.lines.last(), QStringLiteral("Restored 'listed.jpg' from an interrupted rotation\n"));
}

} // namespace
