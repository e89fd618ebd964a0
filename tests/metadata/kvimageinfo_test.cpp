#include "exifblocks.h"

#include "metadata/kvimageinfo.h"
#include "metadata/thumbnailmaker.h"
#include "testsupport.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

using namespace exifblocks;

namespace {

KVImageInfo record(const QString& path, auto&& fill) {
    KVImageInfo::Data d;
    d.path = path;
    fill(d);
    return KVImageInfo(std::move(d));
}

KVImageInfo named(const char* name) {
    return record(QString::fromLatin1(name), [](auto&) {});
}

} // namespace

TEST(ImageInfoRecord, NameAndKind) {
    const auto info = named("/photos/IMG_0001.JPG");
    EXPECT_EQ(info.name(), QStringLiteral("IMG_0001"));
    EXPECT_EQ(named("/a/b.c/archive.tar.gz").name(), QStringLiteral("archive.tar"));
    EXPECT_EQ(named("/a/.profile").name(), QStringLiteral(".profile"));

    QTemporaryDir dir;
    const QString jpg = dir.filePath(QStringLiteral("IMG_0001.JPG"));
    testsupport::solidImage(8, 8, 0, 0, 0)
        .extract_band(0, vips::VImage::option()->set("n", 3))
        .jpegsave(QFile::encodeName(jpg).constData());
    const auto fromDisk = KVImageInfo::fromFile(jpg);
    ASSERT_TRUE(fromDisk);
    EXPECT_EQ(fromDisk->kind(), QStringLiteral("JPEG"));
    EXPECT_EQ(fromDisk->name(), QStringLiteral("IMG_0001"));
}

TEST(ImageInfoRecord, DisplayStrings) {
    const auto info = record(QStringLiteral("/x.jpg"), [](KVImageInfo::Data& d) {
        d.exposureTime = 0.004f;
        d.aperture = 2.8f;
        d.focalLength = 10;
        d.ccdWidth = 7.2f;
        d.distance = 3.66f;
        d.iso = 400;
        d.flashUsed = true;
    });
    EXPECT_EQ(info.exposureTime(), QStringLiteral("1/250"));
    EXPECT_EQ(info.aperture(), QStringLiteral("f/2.8"));
    EXPECT_EQ(info.focalLength(), QStringLiteral("10"));
    EXPECT_FLOAT_EQ(info.focalLength35Float(), 50.5f);
    EXPECT_EQ(info.focalLength35(), QStringLiteral("51"));
    EXPECT_EQ(info.distance(), QStringLiteral("3.7"));
    EXPECT_EQ(info.iso(), QStringLiteral("400"));
    EXPECT_EQ(info.flashUsed(), QStringLiteral("Yes"));

    const auto empty = named("/y.jpg");
    for (const QString& s : {empty.exposureTime(), empty.aperture(), empty.focalLength(),
                             empty.focalLength35(), empty.distance(), empty.iso()})
        EXPECT_EQ(s, QStringLiteral("-"));
    EXPECT_EQ(empty.flashUsed(), QStringLiteral("No"));
    EXPECT_EQ(empty.comment(), QStringLiteral(""));
    EXPECT_FALSE(empty.comment().isNull());

    // Four seconds shows as one over zero: the column has always done so.
    EXPECT_EQ(record(QString(), [](auto& d) { d.exposureTime = 4; }).exposureTime(), QStringLiteral("1/0"));
}

TEST(ImageInfoRecord, NumericComparisonsFallBackOnTheName) {
    const auto a = record(QStringLiteral("/a.jpg"), [](auto& d) {
        d.width = 10;
        d.aperture = 2.8f;
        d.iso = 100;
    });
    const auto b = record(QStringLiteral("/b.jpg"), [](auto& d) {
        d.width = 10;
        d.aperture = 4;
        d.iso = 50;
    });
    EXPECT_EQ(a.compareWidth(b), -1); // same width: by name
    EXPECT_EQ(b.compareWidth(a), 1);
    EXPECT_EQ(a.compareAperture(b), -1);
    EXPECT_EQ(a.compareIso(b), 1);
    EXPECT_EQ(a.compareName(a), 0);
    const auto nan = record(QStringLiteral("/n.jpg"), [](auto& d) { d.aperture = NAN; });
    EXPECT_EQ(nan.compareAperture(a), 1);
    EXPECT_EQ(a.compareAperture(nan), 1);
}

TEST(ImageInfoRecord, FlagAndTextComparisons) {
    const auto flash = record(QStringLiteral("/z.jpg"), [](auto& d) {
        d.flashUsed = true;
        d.cameraModel = "B";
    });
    const auto none = record(QStringLiteral("/a.jpg"), [](auto& d) { d.cameraModel = "A"; });
    EXPECT_EQ(flash.compareFlashused(none), -1);
    EXPECT_EQ(none.compareFlashused(flash), 1);
    EXPECT_EQ(flash.compareCameramodel(none), 1);
    // A record without a model sorts first, even against another without one.
    EXPECT_EQ(named("/q.jpg").compareCameramodel(none), -1);
    EXPECT_EQ(named("/q.jpg").compareCameramodel(named("/a.jpg")), -1);
    EXPECT_EQ(named("/q.jpg").compareKind(none), -1);
}

TEST(ImageInfoRecord, DateComparisons) {
    const QDateTime early(QDate(2001, 1, 1), QTime(10, 0));
    const QDateTime late(QDate(2002, 1, 1), QTime(10, 0));
    const auto e = record(QStringLiteral("/e.jpg"), [&](auto& d) {
        d.creationDate = early;
        d.fileDate = late;
    });
    const auto l = record(QStringLiteral("/l.jpg"), [&](auto& d) {
        d.creationDate = late;
        d.fileDate = early;
    });
    const auto none = named("/n.jpg");
    EXPECT_EQ(e.compareCreationdate(l), -1);
    EXPECT_EQ(l.compareCreationdate(e), 1);
    EXPECT_EQ(none.compareCreationdate(e), -1);
    EXPECT_EQ(e.compareCreationdate(none), 1);
    EXPECT_EQ(none.compareCreationdate(named("/m.jpg")), 1); // both missing: by name
    // The file date is set against the other's capture date.
    EXPECT_EQ(e.compareFiledate(l), 0 + e.compareName(l)); // late vs late: tie, by name
    EXPECT_EQ(l.compareFiledate(e), 0 + l.compareName(e));
    EXPECT_EQ(l.compareFiledate(record(QStringLiteral("/x"), [&](auto& d) { d.creationDate = late; })), -1);
    EXPECT_EQ(none.compareFiledate(e), -1);

    EXPECT_EQ(KVImageInfo::withCreationDate(early).creationDate(), early);
    EXPECT_TRUE(KVImageInfo::withCreationDate(early).path().isEmpty());
}

TEST(ImageInfoRecord, FitSizes) {
    using thumbnailmaker::fitSize;
    EXPECT_EQ(fitSize(640, 480, 32, 32), std::make_pair(32, 24));
    EXPECT_EQ(fitSize(480, 640, 32, 32), std::make_pair(24, 32));
    EXPECT_EQ(fitSize(1000, 333, 32, 32), std::make_pair(32, 11));
    EXPECT_EQ(fitSize(5000, 10, 32, 32), std::make_pair(32, 1));
    EXPECT_EQ(fitSize(8, 8, 32, 32), std::make_pair(32, 32)); // small pictures grow
    EXPECT_FALSE(fitSize(0, 10, 32, 32));
}

TEST(ImageInfoRecord, PngWithAndWithoutFallback) {
    QTemporaryDir dir;
    const QString png = dir.filePath(QStringLiteral("shot.png"));
    testsupport::solidImage(640, 480, 10, 200, 30).pngsave(QFile::encodeName(png).constData());
    EXPECT_FALSE(KVImageInfo::fromFile(png, false));

    const auto info = KVImageInfo::fromFile(png);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->kind(), QStringLiteral("PNG"));
    EXPECT_EQ(info->width(), 640);
    EXPECT_EQ(info->height(), 480);
    EXPECT_EQ(info->size(), QFileInfo(png).size());
    EXPECT_TRUE(info->fileDate().isValid());
    EXPECT_TRUE(info->cameraModel().isEmpty());
    EXPECT_EQ(info->iso(), QStringLiteral("-"));
    EXPECT_EQ(info->aperture(), QStringLiteral("-"));
    ASSERT_TRUE(info->thumbnail());
    const vips::VImage& thumb = *info->thumbnail();
    EXPECT_EQ(thumb.width(), 32);
    EXPECT_EQ(thumb.height(), 24);
    EXPECT_EQ(thumb.bands(), 4);
    const auto pixel = testsupport::pixelAt(thumb, 16, 12);
    EXPECT_NEAR(pixel[0], 10, 2);
    EXPECT_NEAR(pixel[1], 200, 2);
    EXPECT_NEAR(pixel[3], 255, 0);

    EXPECT_FALSE(KVImageInfo::fromFile(png, true, false)->thumbnail());
    EXPECT_FALSE(KVImageInfo::fromFile(dir.filePath(QStringLiteral("missing.png"))));
    testsupport::writeFile(dir.filePath(QStringLiteral("junk.png")), "not a picture");
    EXPECT_FALSE(KVImageInfo::fromFile(dir.filePath(QStringLiteral("junk.png"))));
}

TEST(ImageInfoRecord, ThumbnailComesFromTheExifThumbnailWhenThereIsOne) {
    // The main picture is red, the EXIF thumbnail blue: the record's
    // thumbnail shows which one it was made from.
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("cam.jpg"));
    const auto rgb = [](int r, int g, int b, int w, int h) {
        return testsupport::solidImage(w, h, r, g, b).extract_band(0, vips::VImage::option()->set("n", 3));
    };
    VipsBlob* blob = rgb(0, 0, 255, 160, 120).jpegsave_buffer();
    const auto* area = VIPS_AREA(blob);
    const Bytes thumbBytes(static_cast<const uint8_t*>(area->data),
                           static_cast<const uint8_t*>(area->data) + area->length);
    vips_area_unref(VIPS_AREA(blob));
    rgb(255, 0, 0, 400, 300).jpegsave(QFile::encodeName(path).constData());

    TiffBuilder t(false);
    const int ifd0 = t.addIfd();
    const int ifd1 = t.addIfd();
    t.link(ifd0, ifd1);
    t.addAscii(ifd0, 0x0110, "Thumbnailer");
    t.addAscii(ifd0, 0x9003, "2010:02:03 04:05:06");
    t.addLong(ifd1, 0x0201, 0);
    t.addLong(ifd1, 0x0202, uint32_t(thumbBytes.size()));
    t.setTrailer(thumbBytes);
    Bytes tiff = t.build();
    TiffBuilder::put(tiff, t.ifdOffsets[1] + 2 + 8, t.u32(t.trailerOffset));
    const Bytes app1 = segment(0xE1, exifPayload(tiff));
    QByteArray file = testsupport::readFile(path);
    file.insert(2, reinterpret_cast<const char*>(app1.data()), qsizetype(app1.size()));
    ASSERT_TRUE(testsupport::writeFile(path, file));

    const auto info = KVImageInfo::fromFile(path);
    ASSERT_TRUE(info);
    EXPECT_EQ(info->cameraModel(), QStringLiteral("Thumbnailer"));
    EXPECT_EQ(info->creationDate(), QDateTime(QDate(2010, 2, 3), QTime(4, 5, 6)));
    EXPECT_EQ(info->width(), 400);
    ASSERT_TRUE(info->thumbnail());
    EXPECT_EQ(info->thumbnail()->width(), 32);
    EXPECT_EQ(info->thumbnail()->height(), 24);
    EXPECT_GT(testsupport::pixelAt(*info->thumbnail(), 16, 12)[2], 200);

    // Without an EXIF thumbnail it comes from the whole (red) picture.
    const QString plain = dir.filePath(QStringLiteral("plain.jpg"));
    rgb(255, 0, 0, 400, 300).jpegsave(QFile::encodeName(plain).constData());
    const auto whole = KVImageInfo::fromFile(plain);
    ASSERT_TRUE(whole && whole->thumbnail());
    EXPECT_GT(testsupport::pixelAt(*whole->thumbnail(), 16, 12)[0], 200);
}

TEST(ImageInfoRecord, BadDatesLeaveNoDate) {
    QTemporaryDir dir;
    for (const char* text : {"0000:00:00 00:00:00", "2010-02-03 04:05:06", "    :  :     :  :  "}) {
        TiffBuilder t(true);
        t.addIfd();
        t.addAscii(0, 0x9003, text);
        const QString path = dir.filePath(QStringLiteral("d.jpg"));
        const Bytes file = jpeg({segment(0xE1, exifPayload(t.build())), sof(4, 4)});
        testsupport::writeFile(
            path, QByteArray(reinterpret_cast<const char*>(file.data()), qsizetype(file.size())));
        const auto info = KVImageInfo::fromFile(path, true, false);
        ASSERT_TRUE(info);
        EXPECT_EQ(info->creationDateString(), QString::fromLatin1(text));
        EXPECT_FALSE(info->creationDate().isValid()) << text;
    }
}

TEST(ImageInfoRecord, TwoThreadsBuildRecordsAtOnce) {
    QTemporaryDir dir;
    std::vector<QString> paths;
    for (int k = 0; k < 2; k++) {
        TiffBuilder t(k == 1);
        t.addIfd();
        t.addAscii(0, 0x0110, "Model " + std::to_string(k));
        t.addShort(0, 0x8827, uint16_t(100 * (k + 1)));
        const Bytes file = jpeg({segment(0xE1, exifPayload(t.build())), segment(0xFE, {uint8_t('a' + k)}),
                                 sof(uint16_t(100 + k), 50)});
        paths.push_back(dir.filePath(QStringLiteral("t%1.jpg").arg(k)));
        testsupport::writeFile(
            paths.back(), QByteArray(reinterpret_cast<const char*>(file.data()), qsizetype(file.size())));
    }
    std::atomic<int> wrong{0};
    const auto work = [&](int k) {
        for (int round = 0; round < 300; round++) {
            const auto info = KVImageInfo::fromFile(paths[size_t(k)], false, false);
            if (!info || info->cameraModel() != QStringLiteral("Model %1").arg(k) ||
                info->isoInt() != 100 * (k + 1) || info->width() != 100 + k ||
                info->comment() != QString(QChar('a' + k)))
                wrong++;
        }
    };
    std::thread first(work, 0);
    std::thread second(work, 1);
    first.join();
    second.join();
    EXPECT_EQ(wrong.load(), 0);
}

