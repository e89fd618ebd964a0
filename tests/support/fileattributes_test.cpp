#include "settings/processingparams.h"
#include "support/failingfilesystem.h"
#include "support/fileattributes.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimeZone>

#include <cerrno>

using namespace quillet;

using namespace FileAttributes;

namespace {

const QDateTime taken(QDate(2021, 6, 5), QTime(14, 30, 15), QTimeZone(3600));

class FileAttributesTest : public ::testing::Test {
  protected:
    void SetUp() override {
        path = dir.filePath("picture.jpg");
        ASSERT_TRUE(testsupport::writeFile(path, "bytes"));
    }
    QDateTime modified() const { return QFileInfo(path).lastModified(); }

    QTemporaryDir dir;
    QString path;
    FailingFileSystem files;
};

TEST_F(FileAttributesTest, StoresWhatWasAskedForAndNothingElse) {
    if (!files.setAttribute(QFile::encodeName(path), "user.quillet.probe", "1"))
        GTEST_SKIP() << "this file system keeps no extended attributes";
    const QDateTime before = modified();
    // Creator 0: no codes, only the flag; a modification date alone changes nothing.
    ASSERT_TRUE(setAttributes(path, 0, FileFormat::Jpeg, true, {}, taken));
    EXPECT_TRUE(extensionHidden(path));
    EXPECT_EQ(typeCode(path) | creatorCode(path), 0u);
    EXPECT_FALSE(creationDate(path).isValid());
    EXPECT_EQ(modified(), before);

    ASSERT_TRUE(setAttributes(path, fourCharCode("8BIM"), FileFormat::Png, false, taken, taken));
    EXPECT_EQ(creatorCode(path), 0x3842494Du);
    EXPECT_EQ(fourCharString(typeCode(path)), "PNGf");
    EXPECT_EQ(creationDate(path).toString(Qt::ISODate), "2021-06-05T14:30:15+01:00");
    EXPECT_EQ(modified(), taken);

    // An unknown format clears the type, keeping the creator.
    ASSERT_TRUE(setAttributes(path, fourCharCode("KVQL"), 999, false, {}, {}));
    EXPECT_EQ(typeCode(path), 0u);
    EXPECT_EQ(fourCharString(creatorCode(path)), "KVQL");
}

TEST_F(FileAttributesTest, ReportsFailuresButNotMissingSupport) {
    const QString missing = dir.filePath("missing.jpg");
    EXPECT_FALSE(setAttributes(missing, fourCharCode("KVQL"), FileFormat::Jpeg, true, {}, {}));

    using Call = FailingFileSystem::Call;
    files.fail(Call::SetAttribute, ENOTSUP);
    files.fail(Call::RemoveAttribute, EOPNOTSUPP);
    EXPECT_TRUE(setAttributes(path, fourCharCode("KVQL"), 999, true, taken, taken, files));
    EXPECT_EQ(modified(), taken);

    files.heal();
    files.fail(Call::SetAttribute, EIO);
    EXPECT_FALSE(setAttributes(path, 0, FileFormat::Jpeg, true, {}, {}, files));

    files.heal();
    files.fail(Call::SetTimes, EPERM);
    EXPECT_FALSE(setAttributes(path, 0, FileFormat::Jpeg, false, taken, taken, files));
}

} // namespace
