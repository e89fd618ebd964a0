// Every sample picture read by the record and by exiftool: the fields agree,
// apart from the differences the reader makes on purpose, asserted as such.

#include "exiftool.h"

#include "metadata/kvimageinfo.h"
#include "testsupport.h"

#include <QDir>

#include <gtest/gtest.h>

#include <cmath>

namespace {

const QStringList tags = {
    QStringLiteral("-Make"),
    QStringLiteral("-Model"),
    QStringLiteral("-DateTimeOriginal"),
    QStringLiteral("-ExposureTime"),
    QStringLiteral("-FNumber"),
    QStringLiteral("-ApertureValue"),
    QStringLiteral("-FocalLength"),
    QStringLiteral("-ISO"),
    QStringLiteral("-Flash"),
    QStringLiteral("-SubjectDistance"),
    QStringLiteral("-ExposureCompensation"),
    QStringLiteral("-File:ImageWidth"),
    QStringLiteral("-File:ImageHeight"),
    QStringLiteral("-FileSize"),
    QStringLiteral("-File:Comment"),
    QStringLiteral("-FileType"),
};

// EXIF pads texts with blanks; exiftool drops them.
QString trimmedRight(QString s) {
    while (s.endsWith(QLatin1Char(' ')))
        s.chop(1);
    return s;
}

void expectNear(const QJsonObject& tool, const char* key, float ours, const QString& file) {
    const double theirs = tool.value(QLatin1String(key)).toDouble(0);
    EXPECT_NEAR(ours, theirs, std::max(1e-4, std::fabs(theirs) * 1e-4))
        << key << " in " << file.toStdString();
}

} // namespace

TEST(ExiftoolOracle, EverySampleAgrees) {
    QUILLET_EXIFTOOL_OR_SKIP();
    if (testsupport::samplesDir().isEmpty())
        GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
    const QDir dir(testsupport::samplesDir());
    int jpegs = 0;
    for (const QString& name : dir.entryList(QDir::Files, QDir::Name)) {
        const QString path = dir.filePath(name);
        SCOPED_TRACE(name.toStdString());
        const QJsonObject tool = exiftool::read(path, tags);
        const auto info = KVImageInfo::fromFile(path, false, false);
        if (tool.value(QStringLiteral("FileType")).toString() != QStringLiteral("JPEG")) {
            EXPECT_FALSE(info) << "only JPEGs give a record without fallback";
            continue;
        }
        ASSERT_TRUE(info);
        jpegs++;
        const auto text = [&tool](const char* key) {
            return tool.value(QLatin1String(key)).toVariant().toString();
        };
        EXPECT_EQ(trimmedRight(info->cameraMake()), text("Make"));
        EXPECT_EQ(trimmedRight(info->cameraModel()), text("Model"));
        EXPECT_EQ(info->creationDateString(), text("DateTimeOriginal"));
        EXPECT_EQ(info->width(), tool.value(QStringLiteral("ImageWidth")).toInt());
        EXPECT_EQ(info->height(), tool.value(QStringLiteral("ImageHeight")).toInt());
        EXPECT_EQ(info->size(), tool.value(QStringLiteral("FileSize")).toInteger());
        expectNear(tool, "ExposureTime", info->exposureTimeFloat(), name);
        expectNear(tool, "FocalLength", info->focalLengthFloat(), name);
        expectNear(tool, "SubjectDistance", info->distanceFloat(), name);
        expectNear(tool, "ExposureCompensation", info->exposureBias(), name);

        // The f-number, or else the APEX aperture converted.
        if (tool.contains(QStringLiteral("FNumber")))
            expectNear(tool, "FNumber", info->apertureFloat(), name);
        else
            expectNear(tool, "ApertureValue", info->apertureFloat(), name);

        // ISO below 50 is taken as stored divided by 200, on purpose.
        const int iso = tool.value(QStringLiteral("ISO")).toInt();
        EXPECT_EQ(info->isoInt(), iso > 0 && iso < 50 ? iso * 200 : iso);

        // Flash counts as used when any of its three low bits is set.
        const int flash = tool.value(QStringLiteral("Flash")).toInt(0);
        EXPECT_EQ(info->flashUsedBool(), (flash & 7) != 0);

        // Every directory's orientation tag is read, the thumbnail's last;
        // exiftool reports the main picture's.
        const QJsonObject orientations = exiftool::read(
            path, {QStringLiteral("-a"), QStringLiteral("-G1"), QStringLiteral("-Orientation")});
        const QJsonValue ifd1 = orientations.value(QStringLiteral("IFD1:Orientation"));
        const int expected = !ifd1.isUndefined()
                                 ? ifd1.toInt()
                                 : orientations.value(QStringLiteral("IFD0:Orientation")).toInt(0);
        EXPECT_EQ(info->orientation(), expected);

        // The JPEG comment, when the file has one and no EXIF user comment.
        if (tool.contains(QStringLiteral("Comment"))) {
            EXPECT_EQ(info->comment(), text("Comment"));
        }
    }
    EXPECT_GT(jpegs, 0);
}
