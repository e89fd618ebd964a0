// Every sample picture read by the record and by exiftool: the fields agree,
// apart from the differences the reader makes on purpose, asserted as such.

#include "exifblocks.h"

#include "metadata/kvimageinfo.h"
#include "testsupport.h"

#include <QDir>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <cmath>

using namespace quillet;

TEST(ExiftoolOracle, EverySampleAgrees) {
    QUILLET_EXIFTOOL_OR_SKIP();
    if (testsupport::samplesDir().isEmpty())
        GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
    const QDir dir(testsupport::samplesDir());
    const QStringList tags =
        QStringLiteral("-Make -Model -DateTimeOriginal -ExposureTime -FNumber -ApertureValue "
                       "-FocalLength -ISO -Flash -SubjectDistance -ExposureCompensation "
                       "-File:ImageWidth -File:ImageHeight -FileSize -File:Comment -FileType")
            .split(QLatin1Char(' '));
    int jpegs = 0;
    for (const QString& name : dir.entryList(QDir::Files, QDir::Name)) {
        const QString path = dir.filePath(name);
        SCOPED_TRACE(name.toStdString());
        const QJsonObject tool = exifblocks::exiftool(path, tags);
        const auto info = KVImageInfo::fromFile(path, false, false);
        if (tool.value(QStringLiteral("FileType")).toString() != QStringLiteral("JPEG")) {
            EXPECT_FALSE(info) << "only JPEGs give a record without fallback";
            continue;
        }
        ASSERT_TRUE(info);
        jpegs++;
        const auto text = [&](const char* key) { return tool[QLatin1String(key)].toVariant().toString(); };
        const auto number = [&](const char* key) { return tool[QLatin1String(key)].toDouble(0); };
        // EXIF pads texts with blanks; exiftool drops them.
        const auto rtrim = [](QString s) { return s.remove(QRegularExpression(QStringLiteral(" +$"))); };
        EXPECT_EQ(rtrim(info->cameraMake()), text("Make"));
        EXPECT_EQ(rtrim(info->cameraModel()), text("Model"));
        EXPECT_EQ(info->creationDateString(), text("DateTimeOriginal"));
        EXPECT_EQ(info->size(), tool[QStringLiteral("FileSize")].toInteger());
        for (const auto& [key, ours] :
             {std::pair{"ImageWidth", float(info->width())},
              {"ImageHeight", float(info->height())},
              {"ExposureTime", info->exposureTimeFloat()},
              {"FocalLength", info->focalLengthFloat()},
              {"SubjectDistance", info->distanceFloat()},
              {"ExposureCompensation", info->exposureBias()},
              // The f-number, or else the APEX aperture converted.
              {tool.contains(QStringLiteral("FNumber")) ? "FNumber" : "ApertureValue",
               info->apertureFloat()}})
            EXPECT_NEAR(ours, number(key), std::max(1e-4, std::fabs(number(key)) * 1e-4)) << key;

        // ISO below 50 is taken as stored divided by 200, on purpose.
        const int iso = int(number("ISO"));
        EXPECT_EQ(info->isoInt(), iso > 0 && iso < 50 ? iso * 200 : iso);
        // Flash counts as used when any of its three low bits is set.
        EXPECT_EQ(info->flashUsedBool(), (int(number("Flash")) & 7) != 0);

        // Every directory's orientation tag is read, the thumbnail's last;
        // exiftool reports the main picture's.
        const QJsonObject o = exifblocks::exiftool(
            path, {QStringLiteral("-a"), QStringLiteral("-G1"), QStringLiteral("-Orientation")});
        const QJsonValue ifd1 = o.value(QStringLiteral("IFD1:Orientation"));
        EXPECT_EQ(info->orientation(),
                  ifd1.isUndefined() ? o.value(QStringLiteral("IFD0:Orientation")).toInt(0) : ifd1.toInt());
        // The JPEG comment, when the file has one and no EXIF user comment.
        if (tool.contains(QStringLiteral("Comment"))) {
            EXPECT_EQ(info->comment(), text("Comment"));
        }
    }
    EXPECT_GT(jpegs, 0);
}
