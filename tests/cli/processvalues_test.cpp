#include "cli/processoptions.h"
#include "cli/processvalues.h"
#include "settings/presetjson.h"
#include "settings/presetstore.h"
#include "settings/settingsschema.h"
#include "settings/userdefaults.h"
#include "testsupport.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

using testsupport::StoreTest;

// One refused record value, tried at every entrance of the settings.
struct Refusal {
    const char* key;
    const char* typed; // after --set KEY=
    QVariant value;    // as a store holds it
    const char* json;  // as a preset file holds it
    const char* expected;
};

void PrintTo(const Refusal& r, std::ostream* os) {
    *os << r.key << '=' << r.typed;
}

class RefusalTest : public StoreTest, public testing::WithParamInterface<Refusal> {
  protected:
    QString message(const QString& shown) const {
        return QStringLiteral("\"%1\" must be %2, not %3")
            .arg(QLatin1String(GetParam().key), QString::fromUtf8(GetParam().expected), shown);
    }
};

TEST_P(RefusalTest, IsRefusedAlikeByTheCommandLinePresetFilesAndTheStore) {
    const Refusal& r = GetParam();
    const QString key = QLatin1String(r.key);
    const QString shown = SettingKey::shownValue(r.value);

    ProcessingParams params;
    const QString error = ProcessValues::applySetting(params, key + u'=' + QLatin1String(r.typed));
    EXPECT_TRUE(error.startsWith("--set: " + message(QLatin1String(r.typed)))) << qPrintable(error);
    EXPECT_FALSE(params.contains(key));

    try {
        PresetJson::fromJson(R"({"format": "quillet-preset", "version": 1, "preset": {"Name": "A", ")" +
                             QByteArray(r.key) + "\": " + r.json + "}}");
        ADD_FAILURE() << "the preset file was accepted";
    } catch (const PresetFileError& e) {
        EXPECT_EQ(QString::fromStdString(e.what()), message(shown));
    }

    // The store holds the value for the current settings and in a preset;
    // both read back as the key's default.
    const QVariant def = SettingsSchema::find(key)->defaultValue();
    seed(key, r.value);
    seed(QStringLiteral("Presets"),
         QVariantList{QVariantMap{{QStringLiteral("Name"), QStringLiteral("Web")}, {key, r.value}}});
    const auto store = ini();
    const UserDefaults defaults(*store);
    EXPECT_EQ(defaults.processingParams().values().value(key), def);
    EXPECT_EQ(defaults.problems(), QStringList{message(shown)});
    const PresetStore presets = PresetStore::load(*store);
    EXPECT_EQ(presets.presets().first().values().value(key), def);
    EXPECT_EQ(presets.problems(), QStringList{"preset \"Web\": " + message(shown)});
}

INSTANTIATE_TEST_SUITE_P(
    RecordKeys, RefusalTest,
    testing::Values(
        Refusal{"JpegQuality", "500", 500, "500", "a whole number from 0 to 100"},
        Refusal{"JpegQuality", "-1", -1, "-1", "a whole number from 0 to 100"},
        Refusal{"FileFormat", "107", 107, "107",
                "one of 101 (JPEG), 102 (PNG), 103 (TIFF), 104 (WebP), 105 (AVIF), 106 (JPEG XL)"},
        Refusal{"Rotation", "5", 5, "5",
                "one of 0 (None), 1 (90° clockwise), 2 (90° counter-clockwise), 3 (180°), "
                "4 (Automatic)"},
        Refusal{"Width", "1000001", 1000001, "1000001", "a whole number from 0 to 1000000"},
        Refusal{"DynWatermarkFields", "3,15", QVariantList{3, 15}, "[3, 15]",
                "a list of at most 64 whole numbers from 0 to 14"},
        Refusal{"BackgroundColor", "rgba(1, 1, 2, 1)", QStringLiteral("rgba(1, 1, 2, 1)"),
                R"j("rgba(1, 1, 2, 1)")j", R"j(a colour "rgba(r, g, b, a)" with components from 0 to 1)j"}));

// The friendly options name the key they set and its range, or their words.
TEST_F(StoreTest, FriendlyOptionsRefuseWithTheKeysRange) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"--quality 500", R"(--quality: "JpegQuality" must be a whole number from 0 to 100, not 500)"},
        {"--width 0", R"(--width: "Width" must be a whole number from 1 to 1000000, not 0)"},
        {"--fit 640x0", R"(--fit: "Height" must be a whole number from 1 to 1000000, not 0)"},
        {"--crop 10x10@101", R"(--crop: "CropAreaPercentage" must be a whole number from 1 to 100, not 101)"},
        {"--max-size 0", R"(--max-size: "SizeLimit" must be a whole number from 1 to 4000000, not 0)"},
        {"--text-size 5", R"(--text-size: "DynWatermarkSize" must be one of 0 (Smallest), 1 (Small), )"
                          R"(2 (Medium), 3 (Large), 4 (Largest), not 5)"},
        {"--watermark-location x",
         R"(--watermark-location: "WatermarkLocation" must be one of 0 (Nowhere), )"},
        {"--format gif",
         R"(--format: "FileFormat" must be one of jpeg, jpg, png, tiff, tif, webp, avif, jxl, not gif)"},
        {"--rename random",
         R"(--rename: "SelectedRename" must be one of keep, sequence, prefix-suffix, date, )"},
        {"--digits 21", R"(--digits: "RenameDigits" must be a whole number from 0 to 20, not 21)"},
        {"--text filename,size",
         R"(--text: "DynWatermarkFields" must be a list of at most 64 whole numbers)"},
        {"--background pink", R"(--background: "BackgroundColor" must be a colour)"},
    };
    const auto store = ini();
    for (const auto& [line, message] : cases) {
        const QStringList args = QStringList{"in", "--dest", "out"} + QString::fromUtf8(line).split(u' ');
        const ProcessParse parsed = parseProcessArguments(args, *store);
        EXPECT_FALSE(parsed.request) << line;
        EXPECT_TRUE(parsed.error.startsWith(QString::fromUtf8(message)))
            << line << "\n -> " << qPrintable(parsed.error);
    }
}

TEST(ProcessUsage, ListsTheChoicesTheParserTakes) {
    const QString usage = processUsage();
    for (const char* line : {"--rotate none|cw|ccw|180|auto\n",
                             "--format jpeg|jpg|png|tiff|tif|webp|avif|jxl ", "--quality N (0-100)",
                             "--watermark-location N (0-7)", "comment\n", "--date-fallback file-date|name\n"})
        EXPECT_TRUE(usage.contains(QLatin1String(line))) << line;
    // The field names are wrapped to the terminal's width.
    for (const QString& row : usage.split(u'\n'))
        if (row.contains(QLatin1String("focal")) || row.contains(QLatin1String("caption"))) {
            EXPECT_LE(row.size(), 80) << qPrintable(row);
        }
}

} // namespace
