#include "engine/watermarkfields.h"
#include "metadata/kvimageinfo.h"
#include "settings/processingparams.h"

#include "testsupport.h"

#include <gtest/gtest.h>

#include <clocale>
#include <functional>

// Readable failures.
void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}

namespace {

struct FieldCase {
    const char* label;
    std::function<void(KVImageInfo::Data&)> fill;
    int field;
    std::optional<QString> expected;
};

void PrintTo(const FieldCase& c, std::ostream* os) {
    *os << c.label;
}

class WatermarkField : public ::testing::TestWithParam<FieldCase> {};

TEST_P(WatermarkField, FormatsTheRecord) {
    KVImageInfo::Data data;
    GetParam().fill(data);
    EXPECT_EQ(imageInfoField(KVImageInfo(data), GetParam().field), GetParam().expected);
}

QString s(const char* text) {
    return QString::fromUtf8(text);
}

INSTANTIATE_TEST_SUITE_P(
    Table, WatermarkField,
    ::testing::Values(
        FieldCase{"name", [](auto& d) { d.path = s("/pics/Holiday 1.final.jpg"); }, TextField::FileName,
                  s("Holiday 1.final")},
        FieldCase{"dimensions", [](auto& d) { d.width = 3888, d.height = 2592; }, 1, s("3888x2592")},
        FieldCase{"one kilobyte", [](auto& d) { d.size = 1024; }, 2, s("1KB")},
        FieldCase{"last kilobyte", [](auto& d) { d.size = 1048575; }, 2, s("1023KB")},
        FieldCase{"one megabyte", [](auto& d) { d.size = 1048576; }, 2, s("1.0MB")},
        FieldCase{"megabytes round", [](auto& d) { d.size = 1572864 + 52429; }, 2, s("1.6MB")},
        FieldCase{"beyond 32 bits", [](auto& d) { d.size = qint64(5) << 30; }, 2, s("5120.0MB")},
        FieldCase{"model of three words", [](auto& d) { d.cameraModel = s("Model Mark 20D"); }, 3, s("20D")},
        FieldCase{"model padded", [](auto& d) { d.cameraModel = s("NIKON D70 "); }, 3, s("D70")},
        FieldCase{"no model", [](auto&) {}, 3, std::nullopt},
        FieldCase{"no iso", [](auto& d) { d.iso = 0; }, 5, s("iso-")},
        FieldCase{"focal length rounds", [](auto& d) { d.focalLength = 5.8f; }, 7, s("6mm")},
        FieldCase{"35 mm focal length", [](auto& d) { d.focalLength = 10, d.ccdWidth = 7.176f; }, 8,
                  s("51mm")},
        FieldCase{"small negative bias", [](auto& d) { d.exposureBias = -0.3f; }, 12, s("-0")},
        FieldCase{"caption", [](auto& d) { d.caption = s("Bridge <at> dusk & fog"); }, 13,
                  s("Bridge <at> dusk & fog")},
        FieldCase{"unknown code", [](auto& d) { d.caption = s("x"); }, 15, std::nullopt}));

TEST(WatermarkFields, TextsKeepTheFieldOrderAndDropTheHoles) {
    KVImageInfo::Data data;
    data.width = 640;
    data.height = 480;
    data.iso = 100;
    const QStringList texts = watermarkTexts(KVImageInfo(data), {5, 13, 1, 99, 6, 3});
    EXPECT_EQ(texts, (QStringList{s("iso100"), s("640x480"), s("No Flash")}));
    EXPECT_TRUE(watermarkTexts(KVImageInfo(data), {13, 14, 20}).isEmpty());
}

// The texts of a real camera file, read through its EXIF.
TEST(WatermarkFields, CameraFile) {
    QString path;
    QUILLET_SAMPLE_OR_SKIP(path, "Canon_40D.jpg");
    const std::optional<KVImageInfo> info = KVImageInfo::fromFile(path, true, false);
    ASSERT_TRUE(info);
    EXPECT_EQ(watermarkTexts(*info, {0, 1, 2, 3, 5, 6}),
              (QStringList{s("Canon_40D"), s("100x68"), s("7KB"), s("40D"), s("iso100"), s("Flash")}));
}

// Desktops with a comma as decimal separator still get a point, as before.
TEST(WatermarkFields, NumbersIgnoreTheLocale) {
    const std::string previous = std::setlocale(LC_NUMERIC, nullptr);
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "fr_FR.UTF-8"))
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    KVImageInfo::Data data;
    data.size = 3 * 1048576 / 2;
    const std::optional<QString> text = imageInfoField(KVImageInfo(data), 2);
    std::setlocale(LC_NUMERIC, previous.c_str());
    EXPECT_EQ(text, s("1.5MB"));
}

} // namespace
