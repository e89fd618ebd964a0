#include "batchtree.h"
#include "recordingshell.h"

#include "engine/imageprocessor.h"
#include "metadata/kvimageinfo.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Batches over real camera files, where EXIF, orientation and capture dates
// meet the naming and the file attributes.
class BatchMetadataTest : public ::testing::Test {
protected:
    QString copySample(const char* name, const QString& as) {
        const QString source = testsupport::samplePath(QLatin1String(name));
        if (source.isEmpty())
            return {};
        const QString target = in + QLatin1Char('/') + as;
        QDir().mkpath(in);
        QFile::copy(source, target);
        return target;
    }
    QStringList run(const QStringList& paths) {
        ImageProcessor job(shell, renamer);
        job.processFiles(paths, params, out, 0, options);
        job.waitForFinished();
        return shell.calls();
    }

    QTemporaryDir tmp{QDir::currentPath() + QStringLiteral("/meta-XXXXXX")};
    QString in = tmp.path() + QStringLiteral("/in");
    QString out = tmp.path() + QStringLiteral("/out");
    RecordingShell shell;
    Renamer renamer;
    ProcessingParams params = ProcessingParams::defaults();
    BatchOptions options;
};

TEST_F(BatchMetadataTest, AutoRotatedPictureKeepsItsExifWithOrientationReset) {
    const QString source = copySample("orientation-landscape_6.jpg", QStringLiteral("turned.jpg"));
    if (source.isEmpty())
        GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
    const vips::VImage original = vips::VImage::new_from_file(QFile::encodeName(source).constData());
    const QByteArray before = testsupport::readFile(source);
    params.setInt(ParamKey::Rotation, Rotation::Automatic);
    params.setBool(ParamKey::PreserveHeader, true);
    const QStringList calls = run({source});
    const QString output = out + QStringLiteral("/turned.jpg");
    const vips::VImage written = vips::VImage::new_from_file(QFile::encodeName(output).constData());
    // A quarter turn: the sides swap.
    EXPECT_EQ(written.width(), original.height());
    EXPECT_EQ(written.height(), original.width());
    EXPECT_TRUE(calls.contains(QStringLiteral("log \tDimension: %1 x %2\n").arg(original.height()).arg(original.width())));
    // The copy succeeded, which the log reports the other way round.
    EXPECT_TRUE(calls.contains(QStringLiteral("warn \tUnable to read and copy EXIF\n")));
    EXPECT_EQ(KVImageInfo::orientationForPath(output), 1);
    EXPECT_EQ(testsupport::readFile(source), before) << "the source must stay untouched";
}

TEST_F(BatchMetadataTest, DateNamesTakeSuffixesAndTheFileDateIsTheCaptureDate) {
    const QString a = copySample("Canon_40D.jpg", QStringLiteral("a.jpg"));
    if (a.isEmpty())
        GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
    const QString b = copySample("Canon_40D.jpg", QStringLiteral("b.jpg"));
    const QString c = copySample("Canon_40D.jpg", QStringLiteral("c.jpg"));
    params.setInt(ParamKey::ScaleType, ScaleType::Fit);
    params.setInt(ParamKey::Width, 64);
    params.setInt(ParamKey::Height, 64);
    params.setBool(ParamKey::PreserveHeader, false);
    renamer.setType(Renamer::Date);
    renamer.setDateFormatTag(4); // "%Y%m%d"
    renamer.setConflictFormatTag(1);
    options.setModificationDate = true;
    options.setCreationDate = true;
    run({a, b, c});
    EXPECT_EQ(batchtree::entries(out), (QStringList{QStringLiteral("20080530.jpg"), QStringLiteral("20080530_1.jpg"),
                                                    QStringLiteral("20080530_2.jpg")}));
    const QDateTime taken(QDate(2008, 5, 30), QTime(15, 56, 1));
    for (const QString& name : batchtree::entries(out))
        EXPECT_EQ(QFileInfo(out + QLatin1Char('/') + name).lastModified(), taken) << qPrintable(name);
    EXPECT_TRUE(shell.callsStartingWith(QStringLiteral("confirm")).isEmpty());
}

} // namespace
