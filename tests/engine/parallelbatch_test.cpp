#include "batchtree.h"
#include "recordingshell.h"

#include "engine/imageprocessor.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// One batch setting under which a serial and a parallel run must agree.
struct Setting {
    const char* name;
    std::function<void(ProcessingParams&, Renamer&)> apply;
};

void buildTree(const QString& in) {
    batchtree::picture(in + QStringLiteral("/big.jpg"), 1600, 1200, 40);
    batchtree::picture(in + QStringLiteral("/tall.png"), 90, 240, 200);
    batchtree::picture(in + QStringLiteral("/small.gif"), 12, 9, 90);
    batchtree::text(in + QStringLiteral("/notes.txt"));
    batchtree::text(in + QStringLiteral("/.hidden"), "x");
    batchtree::text(in + QStringLiteral("/cut.jpg"), "\xff\xd8\xff\xe0 broken");
    for (int i = 0; i < 7; ++i)
        batchtree::picture(in + QStringLiteral("/a/p%1.jpg").arg(i), 300 + 40 * i, 200 + 10 * i, 20 * i);
    batchtree::picture(in + QStringLiteral("/a/b/deep.tif"), 400, 300, 77);
    batchtree::picture(in + QStringLiteral("/a/b/deep2.png"), 64, 64, 7);
    QDir().mkpath(in + QStringLiteral("/empty"));
    // Real camera pictures, when the shared samples are there.
    const QString samples = testsupport::samplesDir();
    if (!samples.isEmpty()) {
        QDir().mkpath(in + QStringLiteral("/camera"));
        for (const char* name : {"Canon_40D.jpg", "orientation-portrait_6.jpg", "orientation-landscape_8.jpg",
                                 "corrupted.jpg", "Nikon_D70.jpg"})
            QFile::copy(samples + QLatin1Char('/') + QLatin1String(name),
                        in + QStringLiteral("/camera/") + QLatin1String(name));
    }
}

// Outputs already there, so that the replace question comes up.
void seedConflicts(const QString& out) {
    for (const char* name : {"p1", "p2", "p0001", "p0002"})
        for (const char* extension : {".jpg", ".png", ".tiff"})
            batchtree::text(out + QStringLiteral("/in/a/") + QLatin1String(name) + QLatin1String(extension), "old");
}

class ParallelBatchTest : public ::testing::TestWithParam<Setting> {
protected:
    struct Run {
        QStringList calls;
        QMap<QString, QByteArray> outputs;
    };

    Run run(const QString& in, const QString& out, bool parallel) {
        seedConflicts(out);
        RecordingShell shell;
        // Deterministic answers: replace p1, skip everything else that clashes.
        shell.answer = [](const QString& path) {
            return path.contains(QLatin1String("p1")) || path.contains(QLatin1String("0001")) ? int(BatchShell::Replace)
                                                                                                : int(BatchShell::Skip);
        };
        Renamer renamer;
        ProcessingParams params = ProcessingParams::defaults();
        params.setBool(ParamKey::PreserveHeader, false);
        GetParam().apply(params, renamer);
        BatchOptions options;
        options.parallel = parallel;
        options.renderThreads = 3;
        options.copyNonImageFiles = true;
        ImageProcessor job(shell, renamer);
        job.processFiles({in}, params, out, 0, options);
        job.waitForFinished();
        Run result;
        for (QString call : shell.calls())
            result.calls.append(call.replace(out, QStringLiteral("<out>")));
        result.outputs = batchtree::checksums(out);
        return result;
    }

    QTemporaryDir tmp{QDir::currentPath() + QStringLiteral("/parallel-XXXXXX")};
};

TEST_P(ParallelBatchTest, ParallelRunWritesAndLogsExactlyWhatASerialRunDoes) {
    const QString in = tmp.path() + QStringLiteral("/in");
    buildTree(in);
    const auto inputs = batchtree::checksums(in);
    const Run serial = run(in, tmp.path() + QStringLiteral("/serial"), false);
    const Run parallel = run(in, tmp.path() + QStringLiteral("/parallel"), true);

    ASSERT_EQ(serial.calls.size(), parallel.calls.size());
    for (int i = 0; i < serial.calls.size(); ++i)
        EXPECT_EQ(serial.calls[i], parallel.calls[i]) << "line " << i;
    EXPECT_EQ(serial.outputs.keys(), parallel.outputs.keys());
    for (auto it = serial.outputs.cbegin(); it != serial.outputs.cend(); ++it)
        EXPECT_EQ(it.value(), parallel.outputs.value(it.key())) << qPrintable(it.key());
    EXPECT_EQ(batchtree::checksums(in), inputs) << "an input file changed";
    // The run did real work: pictures were written and a question was asked.
    EXPECT_GE(serial.calls.filter(QStringLiteral("log \tFilename: ")).size(), 10);
    EXPECT_FALSE(serial.calls.filter(QStringLiteral("confirm ")).isEmpty());
    EXPECT_TRUE(serial.calls.last().startsWith(QLatin1String("done ")));
}

INSTANTIATE_TEST_SUITE_P(
    Settings, ParallelBatchTest,
    ::testing::Values(
        Setting{"FitWithAutoRotation",
                [](ProcessingParams& p, Renamer&) {
                    p.setInt(ParamKey::ScaleType, ScaleType::Fit);
                    p.setInt(ParamKey::Width, 120);
                    p.setInt(ParamKey::Height, 90);
                    p.setInt(ParamKey::Rotation, Rotation::Automatic);
                }},
        Setting{"CropToPngWithSequenceNames",
                [](ProcessingParams& p, Renamer& r) {
                    p.setInt(ParamKey::ScaleType, ScaleType::Crop);
                    p.setInt(ParamKey::Width, 50);
                    p.setInt(ParamKey::Height, 40);
                    p.setInt(ParamKey::CropAreaPercentage, 80);
                    p.setInt(ParamKey::FileFormat, FileFormat::Png);
                    r.setType(Renamer::Sequence);
                    r.setPrefix(QStringLiteral("p"));
                    r.setDigits(4);
                    r.setStartFrom(1);
                }},
        Setting{"PercentToTiffTurned",
                [](ProcessingParams& p, Renamer&) {
                    p.setInt(ParamKey::ScaleType, ScaleType::Percent);
                    p.setInt(ParamKey::ScalePercent, 15);
                    p.setInt(ParamKey::Rotation, Rotation::Clockwise);
                    p.setInt(ParamKey::FileFormat, FileFormat::Tiff);
                }},
        Setting{"FillUnderASizeLimit",
                [](ProcessingParams& p, Renamer&) {
                    p.setInt(ParamKey::ScaleType, ScaleType::Fill);
                    p.setInt(ParamKey::Width, 200);
                    p.setInt(ParamKey::Height, 200);
                    p.setInt(ParamKey::JpegQuality, 95);
                    p.setBool(ParamKey::HasFizeLimit, true);
                    p.setInt(ParamKey::SizeLimit, 2);
                }}),
    [](const ::testing::TestParamInfo<Setting>& info) { return std::string(info.param.name); });

} // namespace
