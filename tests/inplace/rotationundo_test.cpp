#include "inplace/filerotation.h"
#include "inplace/inplacedelegate.h"
#include "inplace/losslessprocessor.h"
#include "jpegfixtures.h"
#include "support/fileattributes.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

using namespace quillet;
using namespace testsupport;
using namespace jpegfixtures;

namespace {

struct Times {
    timespec accessed{}, modified{};
};

Times timesOf(const QString& path) {
    struct stat info {};
    ::stat(QFile::encodeName(path).constData(), &info);
    return {info.st_atim, info.st_mtim};
}

bool operator==(const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

// The processor's delegate, on the calling thread: the runs are synchronous.
class UndoTest : public ::testing::Test, public InplaceDelegate {
  protected:
    UndoTest() : processor(*this) { processor.setSynchronous(true); }

    void showMessage(const QString& text) override { messages.append(text); }
    void writeActivity(const QString& line) override { lines.append(line); }
    void writeWarningActivity(const QString& line) override { warnings.append(line); }
    void didCompleteWithBadFiles(const QStringList& bad) override { badFiles = bad; }
    void didComplete() override { ++completed; }

    // A picture as a camera leaves it: an old modification time to the
    // nanosecond and, where the file system keeps them, a creation date.
    QString put(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(writeFile(path, bytes));
        const timespec times[2] = {{978307200, 123456789}, {981169445, 987654321}};
        EXPECT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0), 0);
        FileAttributes::setAttributes(path, 0, 0, false, created, {});
        return path;
    }
    QString backupFolder() const { return dir.filePath(QLatin1String(FileRotation::BackupFolderName)); }

    QTemporaryDir dir;
    const QDateTime created = QDateTime::fromString(u"2001-02-03T04:05:06Z"_s, Qt::ISODate);
    LosslessProcessor processor;
    QStringList messages, lines, warnings, badFiles;
    int completed = 0;
};

// The originals come back as they were before the run: every byte, the
// file times to the nanosecond and the creation date; the backup folder
// goes once empty. Skipped and refused files were never noted.
TEST_F(UndoTest, PutsBackEveryOriginalByteForByteWithItsDates) {
    const QStringList files{put(u"a.jpg"_s, markedJpeg(6)), put(u"b.jpg"_s, markedJpeg(1, true)),
                            put(u"c.jpg"_s, "\xFF\xD8" + exifSegment(6) + "no picture"),
                            put(u"d.jpg"_s, markedJpeg(3))};
    QList<QByteArray> before;
    QList<Times> timesBefore;
    for (const QString& file : files) {
        before.append(readFile(file));
        timesBefore.append(timesOf(file));
    }
    const bool keepsDates = FileAttributes::creationDate(files[0]) == created;

    // b.jpg is upright, so skipped; c.jpg only looks like a picture that wants turning.
    ASSERT_TRUE(processor.rotateFiles(files, 0, true));
    ASSERT_EQ(badFiles, QStringList{files[2]});
    EXPECT_EQ(processor.lastRotation().files(), (QStringList{files[0], files[3]}));
    EXPECT_NE(readFile(files[0]), before[0]);
    ASSERT_TRUE(processor.lastRotation().canRestore());

    messages.clear();
    ASSERT_TRUE(processor.undoLastRotation());
    EXPECT_EQ(completed, 1);
    EXPECT_EQ(messages, (QStringList{u"Restoring a.jpg"_s, u"Restoring d.jpg"_s}));
    EXPECT_EQ(warnings, QStringList{u"'c.jpg' is not a JPEG\n"_s});
    for (int i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(files[i].toStdString());
        EXPECT_EQ(readFile(files[i]), before[i]);
        EXPECT_TRUE(timesOf(files[i]).modified == timesBefore[i].modified);
        if (keepsDates) {
            EXPECT_EQ(FileAttributes::creationDate(files[i]), created);
        }
    }
    EXPECT_FALSE(QFileInfo::exists(backupFolder()));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(), 4);
    // Once done, there is nothing left to undo.
    EXPECT_FALSE(processor.lastRotation().canRestore());
    EXPECT_FALSE(processor.undoLastRotation());
}

// An original never goes back over a file changed since the rotation, nor
// does one changed in the backup folder; each is named in the log, the
// others come back, and the folder stays while it holds an original.
TEST_F(UndoTest, LeavesAloneWhatChangedSinceTheRotation) {
    const QStringList files{put(u"edited.jpg"_s, markedJpeg(6)), put(u"gone.jpg"_s, markedJpeg(6)),
                            put(u"swapped.jpg"_s, markedJpeg(6)), put(u"plain.jpg"_s, markedJpeg(6))};
    const QByteArray original = readFile(files[3]);
    ASSERT_TRUE(processor.rotateFiles(files, 90, true));
    ASSERT_TRUE(badFiles.isEmpty());
    const QByteArray edited = "the user's own edit";
    ASSERT_TRUE(writeFile(files[0], edited));
    ASSERT_TRUE(QFile::remove(FileRotation::backupPath(files[1])));
    // Same length, other bytes: a different file under the backup's name.
    const QString swapped = FileRotation::backupPath(files[2]);
    QByteArray other = readFile(swapped);
    other[other.size() - 3] = char(other[other.size() - 3] ^ 1);
    ASSERT_TRUE(QFile::remove(swapped));
    ASSERT_TRUE(writeFile(swapped, other));
    const QByteArray turned = readFile(files[1]);
    EXPECT_TRUE(processor.lastRotation().canRestore());

    ASSERT_TRUE(processor.undoLastRotation());
    EXPECT_EQ(readFile(files[0]), edited);
    EXPECT_TRUE(QFileInfo::exists(FileRotation::backupPath(files[0])));
    EXPECT_EQ(readFile(files[1]), turned);
    EXPECT_TRUE(QFileInfo::exists(swapped));
    EXPECT_EQ(readFile(files[3]), original);
    EXPECT_EQ(warnings.size(), 3);
    EXPECT_TRUE(warnings.join(QString()).contains(u"'edited.jpg' has changed since it was rotated"_s));
    EXPECT_TRUE(warnings.join(QString()).contains(u"'gone.jpg' is no longer in Quillet Originals"_s));
    EXPECT_TRUE(warnings.join(QString()).contains(u"original of 'swapped.jpg' has changed"_s));
    EXPECT_TRUE(QFileInfo(backupFolder()).isDir());
}

// Only the run that made the backups can put them back: a run of any other
// kind, or a rotation without backups, leaves nothing to undo.
TEST_F(UndoTest, AnyLaterRunEndsTheOffer) {
    const QStringList files{put(u"a.jpg"_s, markedJpeg(6))};
    ASSERT_TRUE(processor.rotateFiles(files, 180, true));
    ASSERT_TRUE(processor.lastRotation().canRestore());
    ASSERT_TRUE(processor.resetDatesForFiles(files, false));
    EXPECT_TRUE(processor.lastRotation().isEmpty());
    EXPECT_FALSE(processor.undoLastRotation());

    ASSERT_TRUE(processor.rotateFiles(files, 180, false));
    EXPECT_TRUE(processor.lastRotation().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(FileRotation::backupPath(files[0]))); // the first run's, untouched
}

} // namespace
