#include "exifblocks.h"
#include "exiftool.h"

#include "metadata/exiftransfer.h"
#include "metadata/jpegsections.h"
#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace exifblocks;

namespace {

std::string native(const QString& p) {
    return QFile::encodeName(p).toStdString();
}

class Transfer : public testing::Test {
  protected:
    QTemporaryDir dir;
    JpegContext ctx;
    Capture out, err;

    void SetUp() override {
        ctx.OutStream = out.stream();
        ctx.ErrStream = err.stream();
    }
    // A real, decodable JPEG as the encoder writes it (JFIF first).
    QString encoded(const QString& name, int w = 64, int h = 48) {
        const QString path = dir.filePath(name);
        testsupport::solidImage(w, h, 200, 40, 40)
            .extract_band(0, vips::VImage::option()->set("n", 3))
            .jpegsave(QFile::encodeName(path).constData());
        return path;
    }
    QString written(const QString& name, const Bytes& bytes) {
        const QString path = dir.filePath(name);
        testsupport::writeFile(
            path, QByteArray(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size())));
        return path;
    }
    int copy(const QString& from, const QString& to) {
        return copyExif(ctx, native(from).c_str(), native(to).c_str());
    }
    QStringList files() const { return QDir(dir.path()).entryList(QDir::Files, QDir::Name); }
};

Bytes exifWithModel(const std::string& model) {
    TiffBuilder t(true);
    t.addIfd();
    t.addAscii(0, 0x0110, model);
    return segment(0xE1, exifPayload(t.build()));
}

} // namespace

TEST_F(Transfer, CameraExifIntoAnEncodedJpeg) {
    QUILLET_EXIFTOOL_OR_SKIP();
    QString source;
    QUILLET_SAMPLE_OR_SKIP(source, "Canon_40D.jpg");
    ASSERT_TRUE(exiftool::read(source, {QStringLiteral("-ThumbnailOffset")})
                    .contains(QStringLiteral("ThumbnailOffset")));
    const QString destination = encoded(QStringLiteral("out.jpg"));
    testsupport::writeFile(destination + QStringLiteral(".t"), "stale backup");

    ASSERT_EQ(copy(source, destination), 1);
    EXPECT_EQ(files(), QStringList{QStringLiteral("out.jpg")}); // backup and temporary gone

    const vips::VImage decoded = vips::VImage::new_from_file(QFile::encodeName(destination).constData());
    EXPECT_EQ(decoded.width(), 64);
    EXPECT_EQ(decoded.height(), 48);
    EXPECT_NEAR(decoded.getpoint(10, 10)[0], 200, 3);

    const QJsonObject tags =
        exiftool::read(destination, {QStringLiteral("-Model"), QStringLiteral("-ThumbnailOffset"),
                                     QStringLiteral("-ThumbnailLength"), QStringLiteral("-Warning")});
    EXPECT_EQ(tags.value(QStringLiteral("Model")).toString(), QStringLiteral("Canon EOS 40D"));
    EXPECT_FALSE(tags.contains(QStringLiteral("ThumbnailOffset")));
    EXPECT_FALSE(tags.contains(QStringLiteral("ThumbnailLength")));
    // The re-parse inside the thumbnail removal sees the thumbnail, not a block.
    EXPECT_NE(err.text().find("Nonfatal Error : '" + native(destination) + "' Incorrect Exif header\n"),
              std::string::npos);

    // The EXIF block stands right after SOI: no JFIF in front of it.
    const QByteArray bytes = testsupport::readFile(destination);
    EXPECT_EQ(bytes.left(4), QByteArray::fromHex("ffd8ffe1"));
}

TEST_F(Transfer, SourceWithoutExifStripsTheDestination) {
    const QString source = written(QStringLiteral("plain.jpg"), jpeg({sof(8, 8)}));
    const QString destination = written(
        QStringLiteral("dest.jpg"), jpeg({exifWithModel("Old"), segment(0xFE, {'o', 'l', 'd'}), sof(8, 8)}));
    ASSERT_EQ(copy(source, destination), 1);
    const QByteArray bytes = testsupport::readFile(destination);
    EXPECT_EQ(bytes.left(6), QByteArray::fromHex("ffd8ffe00010")); // a fresh JFIF segment
    EXPECT_FALSE(bytes.contains("Exif"));
    EXPECT_FALSE(bytes.contains("old"));
}

TEST_F(Transfer, ExifAndCommentGoInFrontOfTheDestinationsSections) {
    const QString source = written(QStringLiteral("src.jpg"),
                                   jpeg({segment(0xFE, {'h', 'i'}), exifWithModel("New"), sof(8, 8)}));
    const Bytes dqt = segment(0xDB, Bytes(65, 7));
    const Bytes destBytes = jpeg({segment(0xE0, Bytes(14, 0)), dqt, sof(8, 8)});
    const QString destination = written(QStringLiteral("dst.jpg"), destBytes);
    ASSERT_EQ(copy(source, destination), 1);

    const Bytes expectedHead = [&] {
        Bytes b{0xFF, 0xD8};
        for (const Bytes& s : {exifWithModel("New"), segment(0xFE, {'h', 'i'})})
            b.insert(b.end(), s.begin(), s.end());
        return b;
    }();
    const QByteArray bytes = testsupport::readFile(destination);
    const Bytes got(bytes.begin(), bytes.end());
    ASSERT_GE(got.size(), expectedHead.size());
    EXPECT_EQ(Bytes(got.begin(), got.begin() + long(expectedHead.size())), expectedHead);
    // Then the destination's own sections unchanged, APP0 dropped.
    const Bytes rest(destBytes.begin() + 2 + 18, destBytes.end());
    EXPECT_EQ(Bytes(got.begin() + long(expectedHead.size()), got.end()), rest);
}

TEST_F(Transfer, DestinationsThatCannotTakeExifAreLeftAlone) {
    const QString source = written(QStringLiteral("src.jpg"), jpeg({exifWithModel("M"), sof(8, 8)}));
    const QString png = dir.filePath(QStringLiteral("out.png"));
    testsupport::solidImage(8, 8, 1, 2, 3).pngsave(QFile::encodeName(png).constData());
    const QByteArray before = testsupport::readFile(png);
    EXPECT_EQ(copy(source, png), 0);
    EXPECT_EQ(testsupport::readFile(png), before);
    EXPECT_EQ(ctx.SectionsRead, 0);

    // A source that is not a JPEG transfers nothing.
    const QString destination = written(QStringLiteral("d.jpg"), jpeg({sof(8, 8)}));
    const QByteArray destBefore = testsupport::readFile(destination);
    EXPECT_EQ(copy(png, destination), 0);
    EXPECT_EQ(copy(dir.filePath(QStringLiteral("missing.jpg")), destination), 0);
    EXPECT_NE(err.text().find("Error : No such file\nin file '" + native(destination) + "'\n"),
              std::string::npos);
    EXPECT_EQ(testsupport::readFile(destination), destBefore);
}

// Each failing call leaves the destination with its old bytes and no stray file.
class TransferFailure : public Transfer, public testing::WithParamInterface<int> {};

TEST_P(TransferFailure, LeavesTheDestinationWhole) {
    const QString source = written(QStringLiteral("src.jpg"), jpeg({exifWithModel("New"), sof(8, 8)}));
    const QString destination = written(QStringLiteral("dst.jpg"), jpeg({exifWithModel("Old"), sof(8, 8)}));
    const QByteArray before = testsupport::readFile(destination);

    MetadataFileOps ops;
    const std::string dest = native(destination);
    switch (GetParam()) {
    case 0: // full disk while writing
        ops.open = [](const char* p, const char* m) {
            return std::string(m) == "wb" ? std::fopen("/dev/full", "wb") : std::fopen(p, m);
        };
        break;
    case 1: // the destination cannot be moved to its backup
        ops.rename = [dest](const char* from, const char* to) {
            return from == dest ? -1 : std::rename(from, to);
        };
        break;
    case 2: // the new file cannot be moved into place
        ops.rename = [dest](const char* from, const char* to) {
            return to == dest && from != dest + ".t" ? -1 : std::rename(from, to);
        };
        break;
    }
    ctx.FileOps = &ops;
    EXPECT_EQ(copy(source, destination), 0);
    EXPECT_EQ(testsupport::readFile(destination), before);
    EXPECT_EQ(files(), (QStringList{QStringLiteral("dst.jpg"), QStringLiteral("src.jpg")}));
}

std::string seamName(const testing::TestParamInfo<int>& info) {
    static const char* const names[] = {"FullDisk", "BackupRenameFails", "FinalRenameFails"};
    return names[info.param];
}

INSTANTIATE_TEST_SUITE_P(Seams, TransferFailure, testing::Values(0, 1, 2), seamName);

TEST_F(Transfer, ParseFileReadsOnlyTheHead) {
    const QString path = written(QStringLiteral("p.jpg"), jpeg({exifWithModel("Head"), sof(320, 200)}));
    ASSERT_EQ(parseFile(ctx, native(path).c_str()), 1);
    EXPECT_STREQ(ctx.Info.CameraModel, "Head");
    EXPECT_EQ(ctx.Info.Width, 320);
    EXPECT_EQ(ctx.Info.FlashUsed, -1);
    EXPECT_EQ(ctx.Info.MeteringMode, -1);
    EXPECT_EQ(ctx.Info.FileSize, uint32_t(QFileInfo(path).size()));
    EXPECT_EQ(ctx.Sections[size_t(ctx.SectionsRead - 1)].Type, 0xDA);
    EXPECT_EQ(ctx.HaveAll, 0);
    DiscardData(ctx);

    EXPECT_EQ(parseFile(ctx, "/nonexistent.jpg"), 0);
    EXPECT_EQ(ctx.SectionsRead, 0);
}
