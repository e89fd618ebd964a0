// Each metadata policy over the sample photos, end to end through
// `quillet process`, with exiftool as the outside reader of what the outputs
// still carry: the GPS sample, a maker note with a serial, a turned picture
// with a profile, a Display P3 HEIC, an XMP-only picture.

#include "../metadata/exifblocks.h"
#include "engine/pipeline/modernencoder.h"
#include "settings/processingparams.h"
#include "testsupport.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>

using namespace quillet;

namespace {

const QStringList Samples = {QStringLiteral("Kodak_CX7530.jpg"), QStringLiteral("Panasonic_DMC-FZ30.jpg"),
                             QStringLiteral("orientation-portrait_6.jpg"), QStringLiteral("IMG_5195.HEIC"),
                             QStringLiteral("xmp-no_exif.jpg")};

struct Outcome {
    int status = -1;
    QString log;
};

Outcome quillet(const QStringList& args) {
    QProcess process;
    process.setProgram(testsupport::cliPath());
    process.setArguments(args);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start();
    process.waitForFinished(600000);
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromLocal8Bit(process.readAllStandardOutput())};
}

// Every tag exiftool finds, as "Group:Tag" keys.
QJsonObject tags(const QString& path) {
    return exifblocks::exiftool(path, {QStringLiteral("-a"), QStringLiteral("-G1"), QStringLiteral("-All")});
}

QStringList keysLike(const QJsonObject& tool, const QString& pattern) {
    QStringList out;
    for (const QString& key : tool.keys())
        if (key.contains(QRegularExpression(pattern)) &&
            !tool.value(key).toVariant().toString().trimmed().isEmpty())
            out << key;
    return out;
}

QString value(const QJsonObject& tool, const QString& tag) {
    for (const QString& key : tool.keys())
        if (key.endsWith(QLatin1Char(':') + tag))
            return tool.value(key).toVariant().toString();
    return {};
}

class MetadataPolicyTest : public ::testing::Test {
  protected:
    void SetUp() override {
        if (testsupport::samplesDir().isEmpty())
            GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
        if (QStandardPaths::findExecutable(QStringLiteral("exiftool")).isEmpty())
            GTEST_SKIP() << "exiftool is not installed";
        for (const QString& name : Samples)
            ASSERT_TRUE(
                QFile::copy(testsupport::samplePath(name), dir->filePath(QStringLiteral("in/") + name)));
    }

    // The outputs of one policy and format, by input name.
    QString convert(const QString& policy, const QString& format) {
        const QString dest = dir->filePath(policy + QLatin1Char('-') + format);
        const Outcome run =
            quillet({QStringLiteral("process"), QStringLiteral("--metadata"), policy,
                     QStringLiteral("--format"), format, QStringLiteral("--fit"), QStringLiteral("400x400"),
                     QStringLiteral("--dest"), dest, dir->filePath("in")});
        EXPECT_EQ(run.status, 0) << qPrintable(run.log);
        lastLog = run.log;
        return dest + QStringLiteral("/in/");
    }

    static QString output(const QString& folder, const QString& input, const QString& suffix) {
        return folder + QFileInfo(input).completeBaseName() + QLatin1Char('.') + suffix;
    }

    std::unique_ptr<QTemporaryDir> dir = [] {
        auto d = testsupport::scratchDir(QStringLiteral("metadatapolicy"));
        QDir(d->path()).mkpath(QStringLiteral("in"));
        return d;
    }();
    QString lastLog;
};

// Mean colour of a picture as shown: converted to sRGB by its profile when it has one.
std::vector<double> shownMean(const QString& path) {
    vips::VImage image = vips::VImage::new_from_file(QFile::encodeName(path).constData());
    if (image.get_typeof(VIPS_META_ICC_NAME))
        image = image.icc_transform("srgb", vips::VImage::option()->set("embedded", true));
    std::vector<double> mean;
    for (int band = 0; band < 3; ++band)
        mean.push_back(image.extract_band(band).avg());
    return mean;
}

TEST_F(MetadataPolicyTest, NoLocationLeavesNoPlaceOrSerialButKeepsOrientationDateAndProfile) {
    const QString keep = convert(QStringLiteral("keep"), QStringLiteral("jpeg"));
    EXPECT_FALSE(keysLike(tags(output(keep, Samples[0], "jpg")), QStringLiteral("GPS")).isEmpty())
        << "the GPS sample keeps its location by default";
    QStringList formats = {QStringLiteral("jpeg"), QStringLiteral("webp"), QStringLiteral("avif")};
    // JPEG XL where this system writes it: its EXIF and XMP sit in boxes of their own.
    if (ModernEncoder::unavailableReason(FileFormat::JpegXl).isEmpty())
        formats.append(QStringLiteral("jxl"));
    for (const QString& format : formats) {
        SCOPED_TRACE(format.toStdString());
        const QString suffix = format == QLatin1String("jpeg") ? QStringLiteral("jpg") : format;
        const QString folder = convert(QStringLiteral("no-location"), format);
        EXPECT_TRUE(lastLog.contains(QLatin1String("Metadata removed: 5 location")));
        for (const QString& name : Samples) {
            SCOPED_TRACE(name.toStdString());
            const QJsonObject before = tags(testsupport::samplePath(name));
            const QJsonObject after = tags(output(folder, name, suffix));
            EXPECT_EQ(keysLike(after, QStringLiteral("GPS|SerialNumber|OwnerName")), QStringList());
            EXPECT_EQ(value(after, QStringLiteral("DateTimeOriginal")),
                      value(before, QStringLiteral("DateTimeOriginal")));
            // exiftool does not read the profile inside a JPEG XL codestream, and
            // libvips reads back one made for the decoded pixels: what counts is
            // that the colours show as they did.
            if (format == QLatin1String("jxl")) {
                const std::vector<double> shown = shownMean(output(keep, name, "jpg"));
                const std::vector<double> now = shownMean(output(folder, name, suffix));
                for (int band = 0; band < 3; ++band)
                    EXPECT_NEAR(now[size_t(band)], shown[size_t(band)], 2.0) << "band " << band;
            } else {
                EXPECT_EQ(value(after, QStringLiteral("ProfileDescription")),
                          value(before, QStringLiteral("ProfileDescription")));
            }
            if (!name.endsWith(QLatin1String(".HEIC"))) { // decoded upright, so it says 1
                EXPECT_EQ(after.value(QStringLiteral("IFD0:Orientation")),
                          before.value(QStringLiteral("IFD0:Orientation")));
            }
        }
    }
}

TEST_F(MetadataPolicyTest, MinimalKeepsOnlyTheFewThingsItNames) {
    const QString folder = convert(QStringLiteral("minimal"), QStringLiteral("jpeg"));
    const QRegularExpression allowed(QStringLiteral(
        "^SourceFile$|^(ExifTool|System|File|JFIF|Composite|ICC.*):|Orientation$|Resolution|ResolutionUnit$|"
        "DateTimeOriginal$|SubSecTimeOriginal$|OffsetTimeOriginal$|ExifVersion$|ColorSpace$|Interop|"
        "Copyright$|Artist$|XMP-x:XMPToolkit$|XMP-(dc|photoshop):(Rights|Creator|DateCreated)$|XMP-"
        "xmpRights:"));
    for (const QString& name : Samples) {
        SCOPED_TRACE(name.toStdString());
        const QJsonObject after = tags(output(folder, name, "jpg"));
        for (const QString& key : after.keys())
            EXPECT_TRUE(allowed.match(key).hasMatch()) << qPrintable(key);
        EXPECT_EQ(value(after, QStringLiteral("DateTimeOriginal")),
                  value(tags(testsupport::samplePath(name)), QStringLiteral("DateTimeOriginal")));
    }
    // The record `quillet info` shows has nothing of the camera left.
    const Outcome info = quillet({QStringLiteral("info"), output(folder, Samples[0], "jpg")});
    EXPECT_FALSE(info.log.contains(QLatin1String("EASTMAN"), Qt::CaseInsensitive)) << qPrintable(info.log);
}

TEST_F(MetadataPolicyTest, NoneLeavesNothingAndThePictureLooksTheSame) {
    const QString keep = convert(QStringLiteral("keep"), QStringLiteral("jpeg"));
    for (const QString& format : {QStringLiteral("jpeg"), QStringLiteral("png"), QStringLiteral("webp")}) {
        SCOPED_TRACE(format.toStdString());
        const QString suffix = format == QLatin1String("jpeg") ? QStringLiteral("jpg") : format;
        const QString folder = convert(QStringLiteral("none"), format);
        for (const QString& name : Samples) {
            SCOPED_TRACE(name.toStdString());
            const QString path = output(folder, name, suffix);
            const QJsonObject after = tags(path);
            EXPECT_EQ(keysLike(after, QStringLiteral("^(IFD|ExifIFD|GPS|XMP|ICC|MakerNotes|Canon|Panasonic|"
                                                     "Kodak)")),
                      QStringList());
            // Upright without an orientation: a turned input comes out turned.
            const QJsonObject kept = tags(output(keep, name, "jpg"));
            const bool turned = kept.value(QStringLiteral("IFD0:Orientation")).toInt(1) >= 5;
            EXPECT_EQ(
                value(after, QStringLiteral("ImageWidth")).toInt(),
                value(kept, turned ? QStringLiteral("ImageHeight") : QStringLiteral("ImageWidth")).toInt());
            // Colours as the profile showed them, within what lossy encoding moves.
            const std::vector<double> shown = shownMean(output(keep, name, "jpg")), now = shownMean(path);
            for (int band = 0; band < 3; ++band)
                EXPECT_NEAR(now[size_t(band)], shown[size_t(band)], 2.0) << "band " << band;
        }
    }
}

} // namespace
