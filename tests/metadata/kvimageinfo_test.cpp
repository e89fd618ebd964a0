#include "exifblocks.h"

#include "metadata/kvimageinfo.h"
#include "testsupport.h"

#include <gtest/gtest.h>

#include <thread>

using namespace quillet;

using namespace exifblocks;

// Each file's own values come back, bad capture dates included (kept as text, no date).
TEST(ImageInfoRecord, TwoThreadsBuildRecordsAtOnce) {
    QTemporaryDir dir;
    QString paths[2];
    const char* dates[] = {"0000:00:00 00:00:00", "2010-02-03 04:05:06"};
    for (int k = 0; k < 2; k++) {
        TiffBuilder t(k == 1);
        t.addIfd();
        t.addAscii(0, 0x0110, "Model " + std::to_string(k));
        t.addAscii(0, 0x9003, dates[k]);
        t.addShort(0, 0x8827, uint16_t(100 * (k + 1)));
        paths[k] = dir.filePath(QStringLiteral("t%1.jpg").arg(k));
        testsupport::writeFile(paths[k], toQ(jpeg({app1(t.build()), segment(0xFE, {uint8_t('a' + k)}),
                                                   sof(uint16_t(100 + k), 50)})));
    }
    std::atomic<int> wrong{0};
    const auto work = [&](int k) {
        for (int round = 0; round < 300; round++) {
            const auto info = KVImageInfo::fromFile(paths[k], false, false);
            wrong += !info || info->cameraModel() != QStringLiteral("Model %1").arg(k) ||
                     info->isoInt() != 100 * (k + 1) || info->width() != 100 + k ||
                     info->comment() != QString(QChar('a' + k)) ||
                     info->creationDateString() != QLatin1String(dates[k]) || info->creationDate().isValid();
        }
    };
    std::thread first(work, 0), second(work, 1);
    first.join(), second.join();
    EXPECT_EQ(wrong.load(), 0);
}

// A phone's HEIC carries its EXIF through the decoder, not in JPEG sections.
TEST(ImageInfoRecord, HeicHasItsCameraAndCaptureDate) {
    QString heic;
    QUILLET_SAMPLE_OR_SKIP(heic, "IMG_5195.HEIC");
    const KVImageInfo info = KVImageInfo::fromFile(heic, true, false).value();
    EXPECT_EQ(info.cameraMake(), QStringLiteral("Apple"));
    EXPECT_EQ(info.cameraModel(), QStringLiteral("iPhone 11 Pro Max"));
    EXPECT_EQ(info.creationDate(), QDateTime(QDate(2021, 4, 11), QTime(15, 47, 53)));
    EXPECT_GT(info.exposureTimeFloat(), 0);
    EXPECT_GT(info.isoInt(), 0);
    EXPECT_FALSE(KVImageInfo::fromFile(heic, false, false).has_value()) << "no record without the fallback";
}
