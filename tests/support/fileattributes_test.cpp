#include "support/fileattributes.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimeZone>

#include <cerrno>

using namespace FileAttributes;

namespace {

class FileAttributesTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        path = dir.filePath("picture.jpg");
        ASSERT_TRUE(testsupport::writeFile(path, "bytes"));
        saved = systemCalls();
    }
    void TearDown() override { systemCalls() = saved; }

    // Extended attributes need a file system that keeps them.
    bool xattrsSupported() {
        const QByteArray file = QFile::encodeName(path);
        if (saved.setxattr(file.constData(), "user.quillet.probe", "1", 1) != 0)
            return false;
        saved.removexattr(file.constData(), "user.quillet.probe");
        return true;
    }

    QDateTime modified() const { return QFileInfo(path).lastModified(); }

    QTemporaryDir dir;
    QString path;
    SystemCalls saved;
};

const QDateTime taken(QDate(2021, 6, 5), QTime(14, 30, 15), QTimeZone(3600));

TEST_F(FileAttributesTest, StoresCodesFlagAndDates) {
    if (!xattrsSupported())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    ASSERT_TRUE(setAttributes(path, fourCharCode("8BIM"), FileFormat::Png, true, taken, taken));
    EXPECT_EQ(creatorCode(path), fourCharCode("8BIM"));
    EXPECT_EQ(fourCharString(typeCode(path)), "PNGf");
    EXPECT_TRUE(extensionHidden(path));
    EXPECT_EQ(creationDate(path), taken);
    EXPECT_EQ(creationDate(path).offsetFromUtc(), 3600);
    EXPECT_EQ(modified(), taken);

    // An unknown format clears the type but keeps the creator.
    ASSERT_TRUE(setAttributes(path, fourCharCode("KVQL"), 999, false, {}, {}));
    EXPECT_EQ(typeCode(path), 0u);
    EXPECT_EQ(creatorCode(path), fourCharCode("KVQL"));
}

TEST_F(FileAttributesTest, SetsOnlyWhatWasAskedFor) {
    if (!xattrsSupported())
        GTEST_SKIP() << "this file system keeps no extended attributes";
    const QDateTime before = modified();
    // Creator 0: no codes, just the flag.
    ASSERT_TRUE(setAttributes(path, 0, FileFormat::Jpeg, true, {}, {}));
    EXPECT_TRUE(extensionHidden(path));
    EXPECT_EQ(typeCode(path), 0u);
    EXPECT_EQ(creatorCode(path), 0u);
    // A modification date without a creation date changes nothing.
    ASSERT_TRUE(setAttributes(path, 0, FileFormat::Jpeg, false, {}, taken));
    EXPECT_EQ(modified(), before);
    EXPECT_FALSE(creationDate(path).isValid());
    // A creation date alone leaves the modification date alone.
    ASSERT_TRUE(setAttributes(path, 0, FileFormat::Jpeg, false, taken, {}));
    EXPECT_EQ(creationDate(path), taken);
    EXPECT_EQ(modified(), before);
}

TEST_F(FileAttributesTest, ReportsFailuresButNotMissingSupport) {
    systemCalls().setxattr = [](const char*, const char*, const void*, std::size_t) {
        errno = ENOTSUP;
        return -1;
    };
    EXPECT_TRUE(setAttributes(path, fourCharCode("KVQL"), FileFormat::Jpeg, true, taken, taken));
    EXPECT_EQ(modified(), taken);

    systemCalls().setxattr = [](const char*, const char*, const void*, std::size_t) {
        errno = EIO;
        return -1;
    };
    EXPECT_FALSE(setAttributes(path, 0, FileFormat::Jpeg, true, {}, {}));

    systemCalls() = saved;
    systemCalls().utimensat = [](const char*, const struct timespec*) {
        errno = EPERM;
        return -1;
    };
    EXPECT_FALSE(setAttributes(path, 0, FileFormat::Jpeg, false, taken, taken));

    systemCalls() = saved;
    EXPECT_FALSE(setAttributes(dir.filePath("missing.jpg"), fourCharCode("KVQL"), FileFormat::Jpeg, true, {}, {}));
    // Nothing to set is success, even for a missing file.
    EXPECT_TRUE(setAttributes(dir.filePath("missing.jpg"), 0, FileFormat::Jpeg, false, {}, taken));
}

TEST(FileAttributes, FourCharCodes) {
    EXPECT_EQ(fourCharCode("JPEG"), 0x4A504547u);
    EXPECT_EQ(typeCodeForFormat(FileFormat::Png), 0x504E4766u);
    EXPECT_EQ(typeCodeForFormat(FileFormat::Tiff), 0x54494646u);
    EXPECT_EQ(fourCharString(0x4A504547u), "JPEG");
}

} // namespace
