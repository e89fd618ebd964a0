#include "testsupport.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

using namespace quillet;

TEST(InfoCommand, JsonLineForAGoodFileAndAnErrorLineForEachOther) {
    QTemporaryDir dir;
    const QString good = dir.filePath(QStringLiteral("good.png"));
    testsupport::solidImage(40, 30, 1, 2, 3).pngsave(QFile::encodeName(good).constData());
    const QString damaged = dir.filePath(QStringLiteral("damaged.jpg"));
    testsupport::writeFile(damaged,
                           QByteArray::fromHex("ffd8ffe1ffff4578696600004d4d002a") + QByteArray(40, '\xff'));
    const QString missing = dir.filePath(QStringLiteral("missing.jpg"));

    QProcess run;
    run.start(testsupport::cliPath(),
              {QStringLiteral("info"), QStringLiteral("--json"), damaged, good, missing});
    ASSERT_TRUE(run.waitForFinished(120000));
    EXPECT_EQ(run.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(run.exitCode(), 1);
    const QString err = QString::fromUtf8(run.readAllStandardError());
    const auto noRecord = [](const QString& path) {
        return QStringLiteral("quillet info: '%1' gives no image record (not a picture, or unreadable)\n")
            .arg(path);
    };
    EXPECT_TRUE(err.contains(noRecord(damaged))) << err.toStdString();
    EXPECT_TRUE(err.contains(noRecord(missing)));
    // A picture that is simply not a JPEG is no news to the user.
    EXPECT_FALSE(err.contains(good)) << err.toStdString();
    const QStringList lines =
        QString::fromUtf8(run.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 1);
    const QJsonObject record = QJsonDocument::fromJson(lines.first().toUtf8()).object();
    EXPECT_EQ(record.value(QStringLiteral("path")).toString(), good);
    EXPECT_EQ(record.value(QStringLiteral("kind")).toString(), QStringLiteral("PNG"));
    EXPECT_EQ(record.value(QStringLiteral("width")).toInt(), 40);
}
