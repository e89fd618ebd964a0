#include "settings/processingparams.h"
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
        saved = systemCalls();
    }
    void TearDown() override { systemCalls() = saved; }
    QDateTime modified() const { return QFileInfo(path).lastModified(); }

    QTemporaryDir dir;
    QString path;
    SystemCalls saved;
};

TEST_F(FileAttributesTest, StoresWhatWasAskedForAndNothingElse) {
    if (saved.setxattr(QFile::encodeName(path).constData(), "user.quillet.probe", "1", 1) != 0)
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

    auto failWith = [](int error) {
        return [error](const char*, const char*, const void*, std::size_t) { return errno = error, -1; };
    };
    systemCalls().setxattr = failWith(ENOTSUP);
    EXPECT_TRUE(setAttributes(path, fourCharCode("KVQL"), FileFormat::Jpeg, true, taken, taken));
    EXPECT_EQ(modified(), taken);

    systemCalls().setxattr = failWith(EIO);
    EXPECT_FALSE(setAttributes(path, 0, FileFormat::Jpeg, true, {}, {}));

    systemCalls().setxattr = saved.setxattr;
    systemCalls().utimensat = [](const char*, const struct timespec*) { return errno = EPERM, -1; };
    EXPECT_FALSE(setAttributes(path, 0, FileFormat::Jpeg, false, taken, taken));
}

} // namespace
