#include "engine/batch/batchtree.h"

#include "engine/batch/imageprocessor.h"
#include "engine/pipeline/previewrender.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

struct Setting {
    const char* name;
    std::vector<std::pair<const char*, QVariant>> params;
    const char* source = "orientation-portrait_6.jpg";
};

void PrintTo(const Setting& setting, std::ostream* os) {
    *os << setting.name;
}

// The preview must show the very file the batch writes, to the byte: the
// encoder's output and the EXIF and XMP copied into a JPEG after it.
class PreviewParityTest : public ::testing::TestWithParam<Setting> {
  protected:
    void SetUp() override {
        QDir().mkpath(in);
        const QString source = QString::fromLatin1(GetParam().source);
        QFile::copy(testsupport::projectSamplesDir() + QLatin1Char('/') + source,
                    in + QLatin1Char('/') + source);
        path = in + QLatin1Char('/') + source;
        batchtree::picture(tmp->path() + QStringLiteral("/mark.png"), 60, 30, 40);
        params.setBool(ParamKey::PreserveHeader, true);
        params.setInt(ParamKey::Rotation, Rotation::Automatic);
        params.setString(ParamKey::WatermarkPath, tmp->path() + QStringLiteral("/mark.png"));
        for (const auto& [key, value] : GetParam().params)
            params.values().insert(QLatin1String(key), value);
        renamer.setType(Renamer::PrefixSuffix);
        renamer.setPrefix(QStringLiteral("web-"));
    }

    std::unique_ptr<QTemporaryDir> tmp = testsupport::scratchDir(QStringLiteral("preview"));
    QString in = tmp->path() + QStringLiteral("/in");
    QString out = tmp->path() + QStringLiteral("/out");
    QString path;
    ProcessingParams params = ProcessingParams::defaults();
    Renamer renamer;
};

TEST_P(PreviewParityTest, PreviewBytesAreTheBatchFile) {
    const ProcessingRequest request = ProcessingRequest::fromRecord(params);
    const PreviewResult preview =
        PreviewRender::render(path, PreviewRender::settingsFor(request, renamer), renamer, 0);
    ASSERT_TRUE(preview.rendered) << qPrintable(preview.message);

    RecordingShell shell;
    BatchOptions options;
    options.parallel = false;
    ImageProcessor job(shell, renamer);
    job.processFiles({path}, request, out, 0, options);
    job.waitForFinished();

    const QStringList written = QDir(out).entryList(QDir::Files);
    ASSERT_EQ(written, QStringList{preview.outputName}) << qPrintable(shell.calls().join(QString()));
    const QByteArray file = testsupport::readFile(out + QLatin1Char('/') + preview.outputName);
    EXPECT_EQ(file.size(), preview.bytes.size());
    EXPECT_TRUE(file == preview.bytes) << "the preview's bytes differ from the written file";

    const vips::VImage decoded = vips::VImage::new_from_file(
        QFile::encodeName(out + QLatin1Char('/') + preview.outputName).constData());
    EXPECT_EQ(std::pair(decoded.width(), decoded.height()), std::pair(preview.width, preview.height));
    if (request.output.format == FileFormat::Jpeg) {
        EXPECT_GE(preview.quality, 1);
        EXPECT_LE(preview.quality, request.output.jpegQuality);
        // The limits below are within reach, so the search ends on a fit.
        if (request.output.sizeLimitBytes() > 0) {
            EXPECT_LE(preview.bytes.size(), request.output.sizeLimitBytes());
            EXPECT_LT(preview.quality, request.output.jpegQuality) << "the search never ran";
        }
    } else {
        EXPECT_EQ(preview.quality, -1);
    }
}

namespace P = ParamKey;
INSTANTIATE_TEST_SUITE_P(
    Settings, PreviewParityTest,
    ::testing::Values(
        Setting{"NoScaling", {{P::ScaleType, ScaleType::None}}},
        Setting{"WithoutExif", {{P::ScaleType, ScaleType::None}, {P::PreserveHeader, false}}},
        Setting{"FitTurnedUpright", {{P::ScaleType, ScaleType::Fit}, {P::Width, 200}, {P::Height, 120}}},
        Setting{"ToWidthEnlarged", {{P::ScaleType, ScaleType::ToWidth}, {P::Width, 220}}, "Canon_40D.jpg"},
        Setting{"ToHeight", {{P::ScaleType, ScaleType::ToHeight}, {P::Height, 150}}},
        Setting{"CropToPng",
                {{P::ScaleType, ScaleType::Crop},
                 {P::Width, 120},
                 {P::Height, 120},
                 {P::CropAreaPercentage, 80},
                 {P::FileFormat, FileFormat::Png}}},
        Setting{"StretchToTiff",
                {{P::ScaleType, ScaleType::Stretch},
                 {P::Width, 90},
                 {P::Height, 90},
                 {P::FileFormat, FileFormat::Tiff}}},
        Setting{"PercentWithBothWatermarks",
                {{P::ScaleType, ScaleType::Percent},
                 {P::ScalePercent, 50},
                 {P::WatermarkEnabled, true},
                 {P::ImageWatermarkEnabled, true},
                 {P::DynWatermarkEnabled, true},
                 {P::DynWatermarkFields, QVariantList{0, 5}}}},
        Setting{"FillOnABackgroundUnderASizeLimit",
                {{P::ScaleType, ScaleType::Fill},
                 {P::Width, 300},
                 {P::Height, 300},
                 {P::JpegQuality, 95},
                 {P::HasFizeLimit, true},
                 {P::SizeLimit, 12}}}),
    [](const ::testing::TestParamInfo<Setting>& info) { return std::string(info.param.name); });

// The draft is the picture the batch writes, drawn from a decode at reduced
// scale: the same shape at that scale, and the same picture within what the
// lower resolution loses.
TEST_P(PreviewParityTest, DraftIsTheOutputAtTheSourcesScale) {
    const ProcessingRequest request = ProcessingRequest::fromRecord(params);
    const RenderSettings settings = PreviewRender::settingsFor(request, renamer);
    const PreviewResult full = PreviewRender::render(path, settings, renamer, 0);
    ASSERT_TRUE(full.rendered);
    const PreviewSource source = PreviewRender::loadSource(path, 300);
    ASSERT_TRUE(source.loaded());
    const double scale = double(source.pixels.width()) / source.fullWidth;
    const vips::VImage draft = PreviewRender::draft(source, settings);
    EXPECT_NEAR(draft.width(), full.width * scale, 1.5);
    EXPECT_NEAR(draft.height(), full.height * scale, 1.5);

    vips::VImage written =
        vips::VImage::new_from_buffer(full.bytes.constData(), size_t(full.bytes.size()), "").copy_memory();
    written =
        written.resize(double(draft.width()) / written.width(),
                       vips::VImage::option()->set("vscale", double(draft.height()) / written.height()));
    const int bands = std::min(3, std::min(draft.bands(), written.bands()));
    const double difference =
        (draft.extract_band(0, vips::VImage::option()->set("n", bands)).cast(VIPS_FORMAT_FLOAT) -
         written.extract_band(0, vips::VImage::option()->set("n", bands)).cast(VIPS_FORMAT_FLOAT))
            .abs()
            .avg();
    // A wrong turn, crop or background is off by tens of levels on average.
    EXPECT_LT(difference, 12.0);
}

TEST(PreviewRenderTest, FilesThatAreNotPicturesSayWhy) {
    const auto tmp = testsupport::scratchDir(QStringLiteral("preview"));
    batchtree::text(tmp->path() + QStringLiteral("/notes.txt"));
    Renamer renamer;
    const RenderSettings settings = PreviewRender::settingsFor(ProcessingRequest{}, renamer);
    for (const QString& name : {QStringLiteral("notes.txt"), QStringLiteral("missing.jpg")}) {
        const PreviewResult result =
            PreviewRender::render(tmp->path() + QLatin1Char('/') + name, settings, renamer, 0);
        EXPECT_FALSE(result.rendered) << qPrintable(name);
        EXPECT_TRUE(result.message.contains(name)) << qPrintable(result.message);
        EXPECT_TRUE(result.bytes.isEmpty());
    }
    EXPECT_FALSE(PreviewRender::loadSource(tmp->path() + QStringLiteral("/notes.txt"), 64).loaded());
}

TEST(PreviewRenderTest, SampleSpreadsOverTheQueueAndTheEstimateScalesToIt) {
    QStringList paths;
    for (int i = 0; i < 10; ++i)
        paths.append(QString::number(i));
    EXPECT_EQ(PreviewRender::sample(paths, 4), (QStringList{"0", "3", "6", "9"}));
    EXPECT_EQ(PreviewRender::sample(paths, 1), QStringList{"0"});
    EXPECT_EQ(PreviewRender::sample(paths.mid(0, 3), 5), paths.mid(0, 3));
    EXPECT_EQ(PreviewRender::estimate(3000, 3, 10), 10000);
    EXPECT_EQ(PreviewRender::estimate(1000, 3, 1), 333);
    EXPECT_EQ(PreviewRender::estimate(0, 0, 10), -1);
}

} // namespace
