#include "support/failingfilesystem.h"
#include "support/filesystem.h"

#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace quillet;

namespace {

using Call = FailingFileSystem::Call;

class FileSystemTest : public ::testing::Test {
  protected:
    QString put(const QString& name, const QByteArray& bytes) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(testsupport::writeFile(path, bytes));
        return path;
    }
    // Hidden entries included: a temporary file left behind would be one.
    QStringList entries() const {
        return QDir(dir.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
    }
    static mode_t mode(const QString& path) {
        struct stat info {};
        ::stat(QFile::encodeName(path).constData(), &info);
        return info.st_mode & 0777;
    }

    QTemporaryDir dir;
    FailingFileSystem files;
};

TEST_F(FileSystemTest, AtomicWriteReplacesWholeOrNotAtAll) {
    const QString path = put("out.jpg", "old contents");
    ASSERT_TRUE(files.writeAtomically(path, "new"));
    EXPECT_EQ(testsupport::readFile(path), "new");
    EXPECT_EQ(mode(path), defaultCreateMode());

    // Nothing to write is refused; a full disk or a refused rename keeps the old bytes.
    EXPECT_FALSE(files.writeAtomically(path, {}));
    files.fail(Call::Write, ENOSPC, path);
    EXPECT_FALSE(files.writeAtomically(path, "lost"));
    files.heal();
    files.fail(Call::Rename, EACCES);
    EXPECT_FALSE(files.writeAtomically(path, "lost"));
    EXPECT_EQ(testsupport::readFile(path), "new");
    EXPECT_EQ(entries(), QStringList{"out.jpg"});

    files.heal();
    EXPECT_FALSE(files.writeAtomically(dir.filePath("missing/out.jpg"), "bytes"));
    EXPECT_EQ(entries(), QStringList{"out.jpg"});
}

TEST_F(FileSystemTest, CopyKeepsPermissionsAndNeverReplacesOrLeavesAPart) {
    QByteArray big(300 * 1024, 'x'); // more than one buffer
    big[200000] = 'y';
    const QString source = put("notes.txt", big);
    ASSERT_EQ(::chmod(QFile::encodeName(source).constData(), 0640), 0);
    const QString copy = dir.filePath("copy.txt");
    ASSERT_TRUE(files.copyFile(source, copy));
    EXPECT_EQ(testsupport::readFile(copy), big);
    EXPECT_EQ(mode(copy), 0640u);

    const QString existing = put("existing.txt", "mine");
    EXPECT_FALSE(files.copyFile(source, existing));
    EXPECT_EQ(testsupport::readFile(existing), "mine");
    EXPECT_FALSE(files.copyFile(dir.path(), dir.filePath("folder copy")));
    EXPECT_FALSE(files.copyFile(dir.filePath("missing"), dir.filePath("other")));

    // The disk fills up after the first buffer went out.
    files.fail(Call::Write, ENOSPC, {}, 1);
    EXPECT_FALSE(files.copyFile(source, dir.filePath("partial.txt")));
    EXPECT_EQ(entries(), (QStringList{"copy.txt", "existing.txt", "notes.txt"}));
}

TEST_F(FileSystemTest, MakePathMakesEveryMissingFolderOrReportsTheOneItCouldNot) {
    const QString deep = dir.filePath("a/b/c");
    ASSERT_TRUE(files.makePath(deep));
    EXPECT_TRUE(QFileInfo(deep).isDir());
    EXPECT_TRUE(files.makePath(deep)); // already there

    put("file", "x");
    EXPECT_FALSE(files.makePath(dir.filePath("file/sub")));
    files.fail(Call::MakeFolder, EACCES, dir.filePath("x/y"));
    EXPECT_FALSE(files.makePath(dir.filePath("x/y/z")));
    EXPECT_TRUE(QFileInfo(dir.filePath("x")).isDir());
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("x/y")));

    // ensureFolder takes an existing folder but not a file of that name.
    EXPECT_TRUE(files.ensureFolder(deep));
    EXPECT_FALSE(files.ensureFolder(dir.filePath("file")));
}

TEST_F(FileSystemTest, LinkFallsBackToACopyButNeverOntoAnExistingFile) {
    const QString original = put("photo.jpg", "picture");
    const QString linked = dir.filePath(".qlt.photo.jpg");
    ASSERT_TRUE(files.linkOrCopy(original, linked));
    EXPECT_TRUE(FileSystem::sameFile(original, linked));
    EXPECT_FALSE(files.linkOrCopy(original, linked));

    files.fail(Call::Link, EXDEV); // a file system without hard links
    const QString copied = dir.filePath("copy.jpg");
    ASSERT_TRUE(files.linkOrCopy(original, copied));
    EXPECT_FALSE(FileSystem::sameFile(original, copied));
    EXPECT_EQ(testsupport::readFile(copied), "picture");
    EXPECT_FALSE(files.linkOrCopy(original, linked));
    EXPECT_TRUE(FileSystem::sameFile(original, linked));
}

} // namespace
