#include "settings/presetjson.h"

#include "testsupport.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

namespace K = ParamKey;

ProcessingParams fullPreset() {
    ProcessingParams p = ProcessingParams::defaults();
    p.setString(K::Name, QStringLiteral("Web – small"));
    p.setInt(K::ScaleType, 4);
    p.setInt(K::Width, 800);
    p.setInt(K::Height, -3);
    p.setBool(K::HasFizeLimit, true);
    p.setInt(K::SizeLimit, 200);
    p.setString(K::WatermarkPath, QStringLiteral("/home/me/logo.png"));
    p.setColor(K::BackgroundColor, RgbaColor{0.1, 1.0 / 3.0, 0.7000000000000001, 1});
    p.setIntList(K::DynWatermarkFields, {0, 4, 14, 99});
    p.setInt(K::DynWatermarkBackgroundOpacity, 40);
    return p;
}

// A valid file whose "preset" member is replaced by the given JSON text.
QByteArray withPreset(const char* presetJson) {
    return QByteArray(R"({"format": "quillet-preset", "version": 1, "preset": )") + presetJson + "}";
}

TEST(PresetJson, ExportThenImportGivesTheSameRecordWithoutItsId) {
    ProcessingParams preset = fullPreset();
    preset.setInt(K::Id, 12);
    const QByteArray json = PresetJson::toJson(preset);
    const QJsonObject top = QJsonDocument::fromJson(json).object();
    EXPECT_EQ(top.value(QLatin1String("format")).toString(), QStringLiteral("quillet-preset"));
    EXPECT_EQ(top.value(QLatin1String("version")).toInt(), 1);
    const QJsonObject record = top.value(QLatin1String("preset")).toObject();
    EXPECT_FALSE(record.contains(QLatin1String(K::Id)));
    EXPECT_TRUE(record.value(QLatin1String(K::JpegQuality)).isDouble());
    EXPECT_TRUE(record.value(QLatin1String(K::PreserveHeader)).isBool());
    EXPECT_TRUE(record.value(QLatin1String(K::DynWatermarkFields)).isArray());
    EXPECT_TRUE(record.value(QLatin1String(K::HasFizeLimit)).toBool());

    const ProcessingParams back = PresetJson::fromJson(json);
    EXPECT_EQ(back, fullPreset());
}

TEST(PresetJson, AcceptsOlderPartialRecordsTrimsTheNameAndDropsAnId) {
    const ProcessingParams p =
        PresetJson::fromJson(withPreset(R"({"Name": "  Old one ", "Id": 4, "Rotation": 2.0})"));
    EXPECT_EQ(p.stringValue(K::Name), QStringLiteral("Old one"));
    EXPECT_EQ(p.intValue(K::Rotation), 2);
    EXPECT_FALSE(p.contains(K::Id));
    EXPECT_EQ(p.values().size(), 2);
}

TEST(PresetJson, EveryTruncationOfAFileIsRefused) {
    const QByteArray json = PresetJson::toJson(fullPreset()).trimmed();
    for (qsizetype n = 0; n < json.size(); ++n)
        EXPECT_THROW(PresetJson::fromJson(json.left(n)), PresetFileError) << "cut at " << n;
}

struct Refusal {
    const char* label;
    QByteArray bytes;
    const char* messagePart;
};

void PrintTo(const Refusal& r, std::ostream* os) {
    *os << r.label;
}

class PresetJsonRefusals : public testing::TestWithParam<Refusal> {};

TEST_P(PresetJsonRefusals, AreRefusedWithAClearMessage) {
    try {
        PresetJson::fromJson(GetParam().bytes);
        ADD_FAILURE() << "accepted";
    } catch (const PresetFileError& e) {
        EXPECT_NE(std::string(e.what()).find(GetParam().messagePart), std::string::npos) << e.what();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Malformed, PresetJsonRefusals,
    testing::Values(
        Refusal{"empty", "", "not valid JSON"},
        Refusal{"truncated", withPreset(R"({"Name": "A", "Rotation": 1)").chopped(1), "not valid JSON"},
        Refusal{"cut mid-string", R"({"format": "quillet-pre)", "not valid JSON"},
        Refusal{"array at top", "[1, 2]", "JSON object"},
        Refusal{"other format", R"({"format": "other", "version": 1, "preset": {"Name": "A"}})", "format"},
        Refusal{"newer version", R"({"format": "quillet-preset", "version": 2, "preset": {"Name": "A"}})",
                "version"},
        Refusal{"version as text", R"({"format": "quillet-preset", "version": "1", "preset": {"Name": "A"}})",
                "version"},
        Refusal{"no preset", R"({"format": "quillet-preset", "version": 1})", "\"preset\" must be an object"},
        Refusal{"extra member",
                R"({"format": "quillet-preset", "version": 1, "preset": {"Name": "A"}, "x": 0})",
                "unknown key \"x\""},
        Refusal{"misspelt flag", withPreset(R"({"Name": "A", "HasSizeLimit": true})"),
                "unknown key \"HasSizeLimit\""},
        Refusal{"no name", withPreset(R"({"Rotation": 1})"), "no \"Name\""},
        Refusal{"blank name", withPreset(R"({"Name": "   "})"), "no \"Name\""},
        Refusal{"name as number", withPreset(R"({"Name": 5})"), "\"Name\" must be a string"},
        Refusal{"int as text", withPreset(R"({"Name": "A", "Rotation": "1"})"),
                "\"Rotation\" must be a whole"},
        Refusal{"fraction", withPreset(R"({"Name": "A", "Width": 1.5})"), "\"Width\" must be a whole"},
        Refusal{"beyond int", withPreset(R"({"Name": "A", "Width": 3000000000})"),
                "\"Width\" must be a whole"},
        Refusal{"null int", withPreset(R"({"Name": "A", "Width": null})"), "\"Width\" must be a whole"},
        Refusal{"bool as number", withPreset(R"({"Name": "A", "FlipRatio": 1})"), "true or false"},
        Refusal{"colour by name", withPreset(R"({"Name": "A", "BackgroundColor": "white"})"), "colour"},
        Refusal{"colour out of range",
                withPreset(R"j({"Name": "A", "BackgroundColor": "rgba(2, 0, 0, 1)"})j"), "colour"},
        Refusal{"colour as object", withPreset(R"({"Name": "A", "BackgroundColor": {"r": 1}})"), "colour"},
        Refusal{"field list as number", withPreset(R"({"Name": "A", "DynWatermarkFields": 3})"), "array"},
        Refusal{"field list with text", withPreset(R"({"Name": "A", "DynWatermarkFields": [1, "2"]})"),
                "every entry"},
        Refusal{"id as text", withPreset(R"({"Name": "A", "Id": "x"})"), "\"Id\" must be a whole"},
        Refusal{"long name", withPreset(("{\"Name\": \"" + QByteArray(256, 'n') + "\"}").constData()),
                "longer than"},
        Refusal{
            "many fields",
            withPreset(("{\"Name\": \"A\", \"DynWatermarkFields\": [" + QByteArray("1,").repeated(64) + "1]}")
                           .constData()),
            "more than 64"},
        Refusal{"deep nesting", QByteArray(5000, '['), "not valid JSON"},
        Refusal{"over the size cap", withPreset(R"({"Name": "A"})") + QByteArray(1024 * 1024, ' '),
                "larger than"}));

class PresetFiles : public testing::Test {
  protected:
    QString path(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }
    QTemporaryDir dir;
};

TEST_F(PresetFiles, WriteThenReadRoundTrips) {
    PresetJson::writeFile(path("web.json"), fullPreset());
    EXPECT_EQ(PresetJson::readFile(path("web.json")), fullPreset());
}

TEST_F(PresetFiles, UnreadableAndHugeFilesAreRefusedNamingThePath) {
    QFile huge(path("huge.json"));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
    ASSERT_TRUE(huge.resize(512LL * 1024 * 1024)); // sparse: costs no disk
    huge.close();
    for (const char* name : {"missing.json", "huge.json", ""}) {
        const QString p = *name ? path(name) : dir.path();
        try {
            PresetJson::readFile(p);
            ADD_FAILURE() << name << " accepted";
        } catch (const PresetFileError& e) {
            EXPECT_NE(std::string(e.what()).find(p.toStdString()), std::string::npos) << e.what();
        }
    }
}

TEST_F(PresetFiles, AFailedWriteThrowsAndLeavesNothingBehind) {
    EXPECT_THROW(PresetJson::writeFile(path("no/such/folder/p.json"), fullPreset()), PresetFileError);
    EXPECT_THROW(PresetJson::writeFile(dir.path(), fullPreset()), PresetFileError);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());
}

} // namespace
