#include "settings/processingparams.h"
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
    EXPECT_EQ(back.backgroundColor(), RgbaColor::white());
}

TEST(ProcessingParams, MissingKeysReadAsZeroFalseAndEmpty) {
    const ProcessingParams empty;
    EXPECT_EQ(empty.intValue(K::Rotation), 0);
    EXPECT_FALSE(empty.boolValue(K::PreserveHeader));
    EXPECT_TRUE(empty.stringValue(K::WatermarkPath).isEmpty());
    EXPECT_TRUE(empty.intList(K::DynWatermarkFields).isEmpty());
    EXPECT_FALSE(empty.colorValue(K::BackgroundColor).has_value());
}

TEST(ProcessingParams, SizeLimitNeedsTheFlagSpelledWithAnF) {
    ProcessingParams p;
    p.setInt(K::SizeLimit, 250);
    EXPECT_EQ(p.sizeLimitBytes(), 0);
    p.setBool(QStringLiteral("HasSizeLimit"), true); // the corrected spelling is not ours
    EXPECT_EQ(p.sizeLimitBytes(), 0);
    p.setBool(K::HasFizeLimit, true);
    EXPECT_EQ(p.sizeLimitBytes(), 250 * 1024);
    p.setInt(K::SizeLimit, 0); // a stored 0 reads back as 100
    EXPECT_EQ(p.sizeLimitField(), 100);
    EXPECT_EQ(p.sizeLimitBytes(), 100 * 1024);
}

TEST(ProcessingParams, ResolutionBelowOneIs72) {
    ProcessingParams p;
    EXPECT_EQ(p.resolution(), 72);
    p.setInt(K::Resolution, -5);
    EXPECT_EQ(p.resolution(), 72);
    p.setInt(K::Resolution, 300);
    EXPECT_EQ(p.resolution(), 300);
}

TEST(ProcessingParams, TextBackgroundFallsBackToTheOldOpacityKey) {
    ProcessingParams p;
    EXPECT_EQ(p.textBackgroundColor(), RgbaColor::white(0.0));
    p.setInt(K::DynWatermarkBackgroundOpacity, 40);
    EXPECT_EQ(p.textBackgroundColor(), RgbaColor::white(0.4));
    p.setColor(K::DynWatermarkBackgroundColor, RgbaColor::black(0.5));
    EXPECT_EQ(p.textBackgroundColor(), RgbaColor::black(0.5));
}

TEST(ProcessingParams, JpegAlwaysFlattensOntoTheBackground) {
    ProcessingParams p = ProcessingParams::defaults();
    p.setBool(K::PreserveTransparency, true);
    p.setColor(K::BackgroundColor, RgbaColor{0, 0.5, 1, 1});
    EXPECT_EQ(p.canvasBackground(), (RgbaColor{0, 0.5, 1, 1}));
    p.setInt(K::FileFormat, FileFormat::Png);
    EXPECT_FALSE(p.canvasBackground().has_value());
    p.setBool(K::PreserveTransparency, false);
    EXPECT_TRUE(p.canvasBackground().has_value());
}

} // namespace
