#include "engine/watermark/watermarkfields.h"
#include "metadata/kvimageinfo.h"
#include "settings/processingparams.h"
#include "testsupport.h"

#include <functional>

using namespace quillet;

namespace {

const auto s = [](const char* text) { return QString::fromUtf8(text); };

// Each field's text from a record; sizes switch unit at exactly 1 MB.
TEST(WatermarkFields, FormatsTheRecord) {
    const struct {
        std::function<void(KVImageInfo::Data&)> fill;
        int field;
        std::optional<QString> expected;
    } cases[] = {
        {[](auto& d) { d.path = s("/pics/Holiday 1.final.jpg"); }, TextField::FileName, s("Holiday 1.final")},
        {[](auto& d) { d.size = 1024; }, 2, s("1KB")},
        {[](auto& d) { d.size = 1048575; }, 2, s("1023KB")},
        {[](auto& d) { d.size = 1048576; }, 2, s("1.0MB")},
        {[](auto& d) { d.size = 1572864 + 52429; }, 2, s("1.6MB")},
        {[](auto& d) { d.size = qint64(5) << 30; }, 2, s("5120.0MB")}, // beyond 32 bits
        {[](auto& d) { d.cameraModel = s("Model Mark 20D"); }, 3, s("20D")},
        {[](auto& d) { d.cameraModel = s("NIKON D70 "); }, 3, s("D70")},
        {[](auto&) {}, 3, std::nullopt},
        {[](auto& d) { d.iso = 0; }, 5, s("iso-")},
        {[](auto& d) { d.focalLength = 5.8f; }, 7, s("6mm")},
        {[](auto& d) { d.focalLength = 10, d.ccdWidth = 7.176f; }, 8, s("51mm")},
        {[](auto& d) { d.exposureBias = -0.3f; }, 12, s("-0")},
        {[](auto& d) { d.caption = s("x"); }, 15, std::nullopt}, // unknown code
    };
    for (const auto& c : cases) {
        KVImageInfo::Data data;
        c.fill(data);
        const std::optional<QString> text = imageInfoField(KVImageInfo(data), c.field);
        EXPECT_EQ(text, c.expected) << c.field << ": " << text.value_or(s("(none)")).toStdString();
    }
}

TEST(WatermarkFields, TextsKeepTheFieldOrderAndDropTheHoles) {
    KVImageInfo::Data data;
    data.width = 640, data.height = 480, data.iso = 100;
    EXPECT_EQ(watermarkTexts(KVImageInfo(data), {5, 13, 1, 99, 6, 3}),
              (QStringList{s("iso100"), s("640x480"), s("No Flash")}));
    EXPECT_TRUE(watermarkTexts(KVImageInfo(data), {13, 14, 20}).isEmpty());
}

} // namespace
