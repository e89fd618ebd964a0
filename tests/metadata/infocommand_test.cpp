#include "exiftool.h"

#include "testsupport.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct CliRun {
    int status = -1;
    QString out;
    QString err;
};

CliRun info(const QStringList& args) {
    QProcess p;
    p.start(testsupport::cliPath(), QStringList{QStringLiteral("info")} + args);
    p.waitForFinished(120000);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
}

} // namespace

TEST(InfoCommand, JsonLinesForGoodFilesAndAnErrorForTheOthers) {
    QTemporaryDir dir;
    const QString good = dir.filePath(QStringLiteral("good.jpg"));
    testsupport::solidImage(40, 30, 1, 2, 3)
        .extract_band(0, vips::VImage::option()->set("n", 3))
        .jpegsave(QFile::encodeName(good).constData());
    const QString damaged = dir.filePath(QStringLiteral("damaged.jpg"));
    testsupport::writeFile(damaged,
                           QByteArray::fromHex("ffd8ffe1ffff4578696600004d4d002a") + QByteArray(40, '\xff'));
    const QString missing = dir.filePath(QStringLiteral("missing.jpg"));

    const CliRun run = info({QStringLiteral("--json"), damaged, good, missing});
    EXPECT_EQ(run.status, 1);
    const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 1) << run.out.toStdString();
    QJsonParseError error{};
    const QJsonObject record = QJsonDocument::fromJson(lines.first().toUtf8(), &error).object();
    ASSERT_EQ(error.error, QJsonParseError::NoError);
    EXPECT_EQ(record.value(QStringLiteral("path")).toString(), good);
    EXPECT_EQ(record.value(QStringLiteral("name")).toString(), QStringLiteral("good"));
    EXPECT_EQ(record.value(QStringLiteral("kind")).toString(), QStringLiteral("JPEG"));
    EXPECT_EQ(record.value(QStringLiteral("width")).toInt(), 40);
    EXPECT_EQ(record.value(QStringLiteral("height")).toInt(), 30);
    EXPECT_TRUE(record.value(QStringLiteral("flash")).isBool());
    for (const char* key :
         {"size", "orientation", "cameraMake", "cameraModel", "creationDate", "exposureTime", "aperture",
          "focalLength", "focalLength35", "iso", "distance", "exposureBias", "comment"})
        EXPECT_TRUE(record.contains(QLatin1String(key))) << key;
    EXPECT_TRUE(run.err.contains(damaged));
    EXPECT_TRUE(run.err.contains(missing));
}

TEST(InfoCommand, CameraSampleAsExiftoolReadsIt) {
    QUILLET_EXIFTOOL_OR_SKIP();
    QString sample;
    QUILLET_SAMPLE_OR_SKIP(sample, "Pentax_K10D.jpg");
    const CliRun run = info({QStringLiteral("--json"), sample});
    ASSERT_EQ(run.status, 0) << run.err.toStdString();
    const QJsonObject ours = QJsonDocument::fromJson(run.out.toUtf8()).object();
    const QJsonObject tool = exiftool::read(sample);
    EXPECT_EQ(ours.value(QStringLiteral("cameraMake")).toString(),
              tool.value(QStringLiteral("Make")).toString());
    EXPECT_EQ(ours.value(QStringLiteral("cameraModel")).toString(),
              tool.value(QStringLiteral("Model")).toString());
    EXPECT_EQ(ours.value(QStringLiteral("creationDate")).toString(),
              tool.value(QStringLiteral("DateTimeOriginal")).toString());
    EXPECT_NEAR(ours.value(QStringLiteral("exposureTime")).toDouble(),
                tool.value(QStringLiteral("ExposureTime")).toDouble(), 1e-6);
    EXPECT_NEAR(ours.value(QStringLiteral("aperture")).toDouble(),
                tool.value(QStringLiteral("FNumber")).toDouble(), 1e-5);
    EXPECT_EQ(ours.value(QStringLiteral("iso")).toInt(), tool.value(QStringLiteral("ISO")).toInt());
}

TEST(InfoCommand, TextBlocksAndUsage) {
    QTemporaryDir dir;
    const QString png = dir.filePath(QStringLiteral("p.png"));
    testsupport::solidImage(12, 10, 1, 2, 3).pngsave(QFile::encodeName(png).constData());
    const CliRun run = info({png, png});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out.count(png + QLatin1Char('\n')), 2);
    EXPECT_TRUE(run.out.contains(QStringLiteral("  kind:           PNG\n")));
    EXPECT_TRUE(run.out.contains(QStringLiteral("  aperture:       -\n")));

    EXPECT_EQ(info({}).status, 2);
    EXPECT_EQ(info({QStringLiteral("--bogus"), png}).status, 2);
    const CliRun help = info({QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(help.out.contains(QStringLiteral("focalLength35")));
}
