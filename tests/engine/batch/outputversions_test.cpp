#include "engine/batch/batchtree.h"

#include "engine/batch/imageprocessor.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

ProcessingRequest fit(int side, int format) {
    ProcessingRequest request;
    request.sizing.scaleType = ScaleType::Fit;
    request.sizing.width = side;
    request.sizing.height = side;
    request.output.format = format;
    return request;
}

class OutputVersionsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QDir().mkpath(in);
        options.copyNonImageFiles = true;
        options.renderThreads = 2;
    }
    QStringList run(const std::vector<OutputVersion>& versions, const QString& dest, RecordingShell& shell) {
        ImageProcessor job(shell, renamer);
        job.processFiles({in}, versions, dest, 0, options);
        job.waitForFinished();
        return shell.calls();
    }
    QString p(const QString& relative) const { return in + QLatin1Char('/') + relative; }

    std::unique_ptr<QTemporaryDir> tmp = testsupport::scratchDir(QStringLiteral("versions"));
    QString in = tmp->path() + QStringLiteral("/in");
    Renamer renamer;
    BatchOptions options;
};

TEST_F(OutputVersionsTest, EachVersionIsTheTreeItsOwnBatchWrites) {
    // A big JPEG that the versions shrink on load by 2, 4 and 8, a damaged
    // one, a turned one that only the automatic rotation turns, a picture
    // with transparency and a file to copy.
    for (const char* name : {"mobile-jolla.jpg", "corrupted.jpg", "orientation-landscape_6.jpg"}) {
        const QString sample = testsupport::samplePath(QLatin1String(name));
        if (sample.isEmpty())
            GTEST_SKIP() << "sample pictures not found (../shared/samples/photos is absent)";
        QDir().mkpath(p(QStringLiteral("photos")));
        ASSERT_TRUE(QFile::copy(sample, p(QStringLiteral("photos/") + QLatin1String(name))));
    }
    testsupport::solidImage(300, 200, 10, 200, 30, 120)
        .write_to_file(QFile::encodeName(p("clear.png")).constData());
    batchtree::text(p(QStringLiteral("photos/notes.txt")));

    ProcessingRequest large = fit(1600, FileFormat::Jpeg);
    large.rotation = Rotation::Automatic;
    ProcessingRequest web = fit(600, FileFormat::WebP);
    ProcessingRequest thumb = fit(200, FileFormat::Jpeg);
    thumb.rotation = Rotation::Clockwise;
    thumb.output.jpegQuality = 60;
    ProcessingRequest lossless = fit(250, FileFormat::Png);
    lossless.output.preserveTransparency = true;
    const std::vector<OutputVersion> versions = {{large, {}, {}},
                                                 {web, QStringLiteral("web"), {}},
                                                 {thumb, {}, QStringLiteral("_t")},
                                                 {lossless, QStringLiteral("png"), {}}};

    RecordingShell together;
    const QString shared = tmp->path() + QStringLiteral("/shared");
    const QStringList calls = run(versions, shared, together);
    // Progress counts the files once, whatever the number of versions.
    EXPECT_EQ(calls.back(), QStringLiteral("done 5 of 5"));
    EXPECT_EQ(together.calls(QStringLiteral("status ")).size(), 5);

    // The same versions one batch at a time; the suffix is the renamer's here.
    const QString alone = tmp->path() + QStringLiteral("/alone");
    for (const OutputVersion& version : versions) {
        RecordingShell shell;
        renamer = Renamer();
        if (!version.nameSuffix.isEmpty()) {
            renamer.setType(Renamer::PrefixSuffix);
            renamer.setSuffix(version.nameSuffix);
        }
        run({OutputVersion{version.request, {}, {}}}, alone + QLatin1Char('/') + version.folder, shell);
    }
    const auto sums = batchtree::checksums(shared);
    EXPECT_EQ(sums, batchtree::checksums(alone));
    // 4 versions of 4 pictures and of the copied file, less the damaged one
    // where it does not decode.
    EXPECT_GE(sums.size(), 16);
    EXPECT_TRUE(sums.contains(QStringLiteral("in/photos/mobile-jolla_t.jpg")));
    EXPECT_TRUE(sums.contains(QStringLiteral("web/in/photos/notes.txt")));
}

TEST_F(OutputVersionsTest, AVersionThatFailsToEncodeIsReportedInFullWhileTheOthersAreWritten) {
    batchtree::picture(p(QStringLiteral("a.png")), 80, 60);
    batchtree::picture(p(QStringLiteral("b.png")), 60, 80);
    // No encoder writes this format: its bytes come out empty.
    const std::vector<OutputVersion> versions = {{fit(40, FileFormat::Jpeg), {}, {}},
                                                 {fit(30, 999), QStringLiteral("broken"), {}},
                                                 {fit(20, FileFormat::Png), QStringLiteral("small"), {}}};
    // Given as a relative path, the destination is still named in full in
    // every version's messages.
    RecordingShell shell;
    const QString dest = tmp->path() + QStringLiteral("/out");
    const QString cwd = QDir::currentPath();
    QDir::setCurrent(tmp->path());
    const QStringList calls = run(versions, QStringLiteral("out"), shell);
    QDir::setCurrent(cwd);

    EXPECT_EQ(batchtree::entries(dest), QStringLiteral("broken broken/in in in/a.jpg in/b.jpg small small/in "
                                                       "small/in/a.png small/in/b.png"));
    // The broken version's worker ends at its first file, as its batch alone
    // would; the file is still written by the others and counted once.
    EXPECT_EQ(shell.calls(QStringLiteral("warn ")),
              QStringList{QStringLiteral("warn Unable to write %1/broken/in/a\n").arg(dest)});
    EXPECT_EQ(shell.calls(QStringLiteral("status ")),
              (QStringList{"status Processing 'a.png'", "status Processing 'b.png'"}));
    EXPECT_TRUE(calls.contains(QStringLiteral("write error %1/broken/in").arg(dest)));
    EXPECT_EQ(calls.back(), QStringLiteral("done 2 of 2"));
}

} // namespace
