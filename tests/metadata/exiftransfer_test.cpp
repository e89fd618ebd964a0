#include "exifblocks.h"

#include "metadata/exiftransfer.h"
#include "support/failingfilesystem.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace quillet;

using namespace exifblocks;

namespace {

class Transfer : public testing::Test {
  protected:
    QTemporaryDir dir;
    JpegContext ctx;
    Capture out, err;
    void SetUp() override { ctx.OutStream = out.stream(), ctx.ErrStream = err.stream(); }
    QString written(const char* name, const Bytes& content) {
        testsupport::writeFile(dir.filePath(QLatin1String(name)), toQ(content));
        return dir.filePath(QLatin1String(name));
    }
    int copy(const QString& from, const QString& to) {
        return copyExif(ctx, QFile::encodeName(from).constData(), QFile::encodeName(to).constData());
    }
    // Hidden ones included: a temporary left behind would be one.
    QStringList files() const { return QDir(dir.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name); }
    static QByteArray bytes(const QString& path) { return testsupport::readFile(path); }
};

} // namespace

TEST_F(Transfer, CameraExifIntoAnEncodedJpeg) {
    QUILLET_EXIFTOOL_OR_SKIP();
    QString source;
    QUILLET_SAMPLE_OR_SKIP(source, "Canon_40D.jpg");
    ASSERT_TRUE(
        exiftool(source, {QStringLiteral("-ThumbnailOffset")}).contains(QStringLiteral("ThumbnailOffset")));
    const QString destination = dir.filePath(QStringLiteral("out.jpg"));
    testsupport::solidImage(64, 48, 200, 40, 40)
        .extract_band(0, vips::VImage::option()->set("n", 3))
        .jpegsave(QFile::encodeName(destination).constData()); // JFIF first, as the encoder writes it
    testsupport::writeFile(destination + QStringLiteral(".t"), "stale backup");

    ASSERT_EQ(copy(source, destination), 1);
    EXPECT_EQ(files(), QStringList{QStringLiteral("out.jpg")});             // backup and temporary gone
    EXPECT_EQ(bytes(destination).left(4), QByteArray::fromHex("ffd8ffe1")); // no JFIF before EXIF
    EXPECT_NEAR(vips::VImage::new_from_file(QFile::encodeName(destination).constData()).getpoint(10, 10)[0],
                200, 3);
    const QJsonObject tags = exiftool(destination);
    EXPECT_EQ(tags.value(QStringLiteral("Model")).toString(), QStringLiteral("Canon EOS 40D"));
    EXPECT_FALSE(tags.contains(QStringLiteral("ThumbnailOffset")));
    EXPECT_FALSE(tags.contains(QStringLiteral("ThumbnailLength")));
}

// Failed writes and renames leave the destination with its old bytes and no stray
// file; so do a destination or source that is not a JPEG, and a missing source.
TEST_F(Transfer, FailuresLeaveTheDestinationWhole) {
    const QString source = written("src.jpg", jpeg({modelApp1("New"), sof(8, 8)}));
    const QString destination = written("dst.jpg", jpeg({modelApp1("Old"), sof(8, 8)}));
    const QString png = dir.filePath(QStringLiteral("p.png"));
    testsupport::solidImage(8, 8, 1, 2, 3).pngsave(QFile::encodeName(png).constData());
    const QByteArray before = bytes(destination), pngBefore = bytes(png);
    const QStringList all = files();
    const std::string dest = QFile::encodeName(destination).toStdString();
    using Call = FailingFileSystem::Call;
    FailingFileSystem readOnlyFolder, fullDisk, noBackup, noFinalRename;
    readOnlyFolder.fail(Call::Create, EACCES);
    fullDisk.fail(Call::Write, ENOSPC);
    noBackup.fail(Call::Rename, EACCES, destination);
    // The destination's move aside works, the new file's move in fails, the move back works.
    noFinalRename.fail(Call::Rename, EXDEV, destination, 1, 1);
    for (FailingFileSystem* fileSystem : {&readOnlyFolder, &fullDisk, &noBackup, &noFinalRename}) {
        ctx.Files = fileSystem;
        EXPECT_EQ(copy(source, destination), 0);
        EXPECT_EQ(bytes(destination), before);
        EXPECT_EQ(files(), all);
    }
    ctx.Files = nullptr;
    EXPECT_EQ(copy(source, png), 0);
    EXPECT_EQ(copy(png, destination), 0);
    EXPECT_EQ(copy(dir.filePath(QStringLiteral("missing.jpg")), destination), 0);
    EXPECT_NE(err.text().find("Error : No such file\nin file '" + dest + "'\n"), std::string::npos);
    EXPECT_EQ(bytes(destination), before);
    EXPECT_EQ(bytes(png), pngBefore);
    EXPECT_EQ(files(), all);
}
