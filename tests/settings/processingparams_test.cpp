#include "settings/presetjson.h"
#include "settings/processingparams.h"
#include "settings/processingrequest.h"
#include "support/settingsstore.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

namespace K = ParamKey;

// A record goes through a real settings file and comes back as the engine reads it.
ProcessingParams throughSettingsFile(const ProcessingParams& params) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("store.ini"));
    {
        QSettings store(path, QSettings::IniFormat);
        store.setValue(QStringLiteral("Record"), params.values());
    }
    QSettings store(path, QSettings::IniFormat);
    return ProcessingParams(store.value(QStringLiteral("Record")).toMap());
}

TEST(RgbaColor, RoundTripsExactlyThroughASettingsFile) {
    const RgbaColor awkward{0.1, 1.0 / 3.0, 0.7000000000000001, 0.4};
    ProcessingParams p;
    p.setColor(K::BackgroundColor, awkward);
    p.setColor(K::DynWatermarkBackgroundColor, RgbaColor::white(0.0));
    const ProcessingParams back = throughSettingsFile(p);
    EXPECT_EQ(back.colorValue(K::BackgroundColor), awkward);
    EXPECT_EQ(back.colorValue(K::DynWatermarkBackgroundColor), RgbaColor::white(0.0));
}

TEST(RgbaColor, RefusesTextThatIsNotAColour) {
    for (const char* text : {"", "white", "rgba(1, 2, 3)", "rgba(1, x, 3, 4)", "rgba(nan, 0, 0, 1)"})
        EXPECT_FALSE(RgbaColor::fromVariant(QString::fromLatin1(text)).has_value()) << text;
}

TEST(ProcessingParams, DefaultsSurviveTheSettingsStoreWithTheirTypes) {
    ProcessingParams p = ProcessingParams::defaults();
    p.setIntList(K::DynWatermarkFields, {3, 0, 14});
    const ProcessingParams back = throughSettingsFile(p);
    for (const char* key : {K::Rotation, K::ScaleType, K::ScaleQuality, K::Resolution, K::FileFormat,
                            K::JpegQuality, K::DynWatermarkSize, K::DynWatermarkStyle})
        EXPECT_EQ(back.intValue(key), p.intValue(key)) << key;
    for (const char* key : {K::PreserveHeader, K::HasFizeLimit, K::FlipRatio, K::WatermarkEnabled})
        EXPECT_EQ(back.boolValue(key), p.boolValue(key)) << key;
    EXPECT_EQ(back.intList(K::DynWatermarkFields), QList<int>({3, 0, 14}));
    EXPECT_EQ(back.colorValue(K::BackgroundColor), RgbaColor::white());
}

TEST(ProcessingParams, MissingKeysReadAsZeroFalseAndEmpty) {
    const ProcessingParams empty;
    EXPECT_EQ(empty.intValue(K::Rotation), 0);
    EXPECT_FALSE(empty.boolValue(K::PreserveHeader));
    EXPECT_TRUE(empty.stringValue(K::WatermarkPath).isEmpty());
    EXPECT_TRUE(empty.intList(K::DynWatermarkFields).isEmpty());
    EXPECT_FALSE(empty.colorValue(K::BackgroundColor).has_value());
}

ProcessingRequest request(const ProcessingParams& record) {
    return ProcessingRequest::fromRecord(record);
}

// The typed value and its stored form carry the same settings both ways: the
// window's record reads back to the same value and writes back to the same
// record, and a watermark without a picture writes no path.
TEST(ProcessingRequest, RecordAndValueRoundTrip) {
    ProcessingParams record = ProcessingParams::defaults();
    record.setInt(K::ScaleType, ScaleType::Crop);
    record.setInt(K::Width, 640);
    record.setInt(K::CropAreaPercentage, 80);
    record.setBool(K::FlipRatio, true);
    record.setInt(K::FileFormat, FileFormat::Tiff);
    record.setBool(K::PreserveTransparency, true);
    record.setBool(K::ConvertToSRGB, true);
    record.setString(K::WatermarkPath, QStringLiteral("/marks/logo.png"));
    record.setBool(K::WatermarkEnabled, true);
    record.setIntList(K::DynWatermarkFields, {0, 4, 9});
    record.setColor(K::DynWatermarkBackgroundColor, RgbaColor::black(0.5));
    const ProcessingRequest value = request(record);
    EXPECT_EQ(value.sizing.cropAreaPercentage, 80);
    EXPECT_EQ(value.watermarks.image.path, QStringLiteral("/marks/logo.png"));
    EXPECT_TRUE(value.toRecord() == record);
    EXPECT_EQ(request(value.toRecord()), value);

    ProcessingRequest bare = value;
    bare.watermarks.image.path.clear();
    EXPECT_FALSE(bare.toRecord().contains(QLatin1String(K::WatermarkPath)));
    // The master switch governs both watermarks; text needs a field.
    bare.watermarks.enabled = false;
    bare.watermarks.image.enabled = bare.watermarks.text.enabled = true;
    EXPECT_FALSE(bare.watermarks.drawsImage());
    EXPECT_FALSE(bare.watermarks.drawsText());
    bare.watermarks.enabled = true;
    EXPECT_TRUE(bare.watermarks.drawsText());
    bare.watermarks.text.fields.clear();
    EXPECT_FALSE(bare.watermarks.drawsText());
    // Metadata is kept for JPEG, WebP, AVIF and JPEG XL outputs.
    EXPECT_FALSE(value.output.keepsHeader());
    bare.output.format = FileFormat::Jpeg;
    EXPECT_TRUE(bare.output.keepsHeader());
    bare.output.format = FileFormat::Avif;
    EXPECT_TRUE(bare.output.keepsHeader());
}

// The output choices added later: stored and read back through the record and
// a preset file; a record saved before them reads as it always did.
TEST(ProcessingRequest, LaterOutputChoicesRoundTripAndDefaultOff) {
    ProcessingParams older = ProcessingParams::defaults();
    for (const char* key : {K::LosslessOutput, K::ShrinkToFit, K::KeepSmallerOriginal, K::FastEncoding})
        older.remove(QLatin1String(key));
    const ProcessingRequest before = request(older);
    EXPECT_EQ(before, request(ProcessingParams::defaults()));
    EXPECT_FALSE(before.output.lossless || before.output.shrinkToFit || before.output.keepSmallerOriginal ||
                 before.output.fastEncoding);

    ProcessingRequest chosen = before;
    chosen.name = QStringLiteral("Web");
    chosen.output.format = FileFormat::JpegXl;
    chosen.output.lossless = chosen.output.shrinkToFit = chosen.output.keepSmallerOriginal = true;
    chosen.output.fastEncoding = true;
    EXPECT_EQ(request(PresetJson::fromJson(PresetJson::toJson(chosen.toRecord()))), chosen);
    EXPECT_TRUE(chosen.output.writesLossless());
    chosen.output.format = FileFormat::Avif; // no lossless AVIF here
    EXPECT_FALSE(chosen.output.writesLossless());
}

TEST(ProcessingRequest, SizeLimitNeedsTheFlagSpelledWithAnF) {
    ProcessingParams p;
    p.setInt(K::SizeLimit, 250);
    EXPECT_EQ(request(p).output.sizeLimitBytes(), 0);
    p.setBool(QStringLiteral("HasSizeLimit"), true); // the corrected spelling is not ours
    EXPECT_EQ(request(p).output.sizeLimitBytes(), 0);
    p.setBool(K::HasFizeLimit, true);
    EXPECT_EQ(request(p).output.sizeLimitBytes(), 250 * 1024);
    p.setInt(K::SizeLimit, 0); // a stored 0 reads back as 100
    EXPECT_EQ(request(p).output.sizeLimitField(), 100);
    EXPECT_EQ(request(p).output.sizeLimitBytes(), 100 * 1024);
}

TEST(ProcessingRequest, ResolutionBelowOneIs72) {
    ProcessingParams p;
    EXPECT_EQ(request(p).output.dpi(), 72);
    p.setInt(K::Resolution, -5);
    EXPECT_EQ(request(p).output.dpi(), 72);
    p.setInt(K::Resolution, 300);
    EXPECT_EQ(request(p).output.dpi(), 300);
}

TEST(ProcessingRequest, TextBackgroundFallsBackToTheOldOpacityKey) {
    ProcessingParams p;
    EXPECT_EQ(request(p).watermarks.text.background, RgbaColor::white(0.0));
    p.setInt(K::DynWatermarkBackgroundOpacity, 40);
    EXPECT_EQ(request(p).watermarks.text.background, RgbaColor::white(0.4));
    p.setColor(K::DynWatermarkBackgroundColor, RgbaColor::black(0.5));
    EXPECT_EQ(request(p).watermarks.text.background, RgbaColor::black(0.5));
}

TEST(ProcessingRequest, JpegAlwaysFlattensOntoTheBackground) {
    ProcessingParams p = ProcessingParams::defaults();
    p.setBool(K::PreserveTransparency, true);
    p.setColor(K::BackgroundColor, RgbaColor{0, 0.5, 1, 1});
    EXPECT_EQ(request(p).output.canvasBackground(), (RgbaColor{0, 0.5, 1, 1}));
    p.setInt(K::FileFormat, FileFormat::Png);
    EXPECT_FALSE(request(p).output.canvasBackground().has_value());
    p.setBool(K::PreserveTransparency, false);
    EXPECT_TRUE(request(p).output.canvasBackground().has_value());
}

} // namespace
