#include "settings/settingsschema.h"
#include "settings/userdefaults.h"
#include "testsupport.h"

#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

namespace K = ParamKey;

using testsupport::StoreTest;

TEST_F(StoreTest, AnEmptyStoreGivesTheRegisteredDefaultsAndTheResetRecord) {
    const auto store = ini();
    const UserDefaults defaults(*store);
    ProcessingParams expected = ProcessingParams::defaults();
    EXPECT_EQ(defaults.processingParams(), expected);
    EXPECT_FALSE(expected.contains(K::WatermarkPath));
    EXPECT_TRUE(defaults.boolValue(QStringLiteral("CopyNonImageFiles")));
    EXPECT_TRUE(defaults.boolValue(QStringLiteral("HideExtension")));
    EXPECT_FALSE(defaults.boolValue(QStringLiteral("CustomIcon")));
    EXPECT_EQ(defaults.stringList(QStringLiteral("Destinations")),
              (QStringList{QStandardPaths::writableLocation(QStandardPaths::DesktopLocation),
                           QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)}));
    const QVariantList creators = defaults.value(QStringLiteral("Creators")).toList();
    ASSERT_EQ(creators.size(), 3);
    EXPECT_EQ(creators.first().toMap().value(QStringLiteral("code")).toUInt(), 0x3842494Du); // '8BIM'
    // Keys without a registered default read as nothing.
    for (const char* key : {"SelectedCreator", "InspectorVisible", "SUMS", "RenamePrefix", "KeepBackup",
                            "NextCheckVersion", "Presets"})
        EXPECT_FALSE(defaults.value(QLatin1String(key)).isValid()) << key;
    EXPECT_TRUE(defaults.problems().isEmpty());
}

TEST_F(StoreTest, StoredValuesComeBackFromTheIniFileInTheirOwnTypes) {
    // Every default and a few awkward values: one-entry and empty lists, text
    // with commas, a creator list.
    std::vector<std::pair<QString, QVariant>> values;
    for (const SettingKey& key : SettingsSchema::keys())
        if (key.hasDefault() && key.type != SettingType::Map)
            values.emplace_back(key.key, key.defaultValue());
    values.emplace_back(QLatin1String(K::DynWatermarkFields), QVariantList{7});
    values.emplace_back(QStringLiteral("ResolutionSet"), QStringList{QStringLiteral("96")});
    values.emplace_back(QStringLiteral("Destinations"), QStringList());
    values.emplace_back(QStringLiteral("RenamePrefix"), QStringLiteral("a, b"));
    values.emplace_back(QLatin1String(K::JpegQuality), 0);
    for (const auto& [key, value] : values) {
        seed(key, value);
        const auto store = ini();
        const UserDefaults defaults(*store);
        EXPECT_EQ(defaults.value(key), SettingsSchema::find(key)->checked(value)) << qPrintable(key);
        EXPECT_TRUE(defaults.problems().isEmpty()) << qPrintable(defaults.problems().join(u'\n'));
    }
}

TEST_F(StoreTest, AnEmptyListReadsBackAsAnEmptyList) {
    // Written by the program (the record's fields, the menus' lists), and as
    // older stores hold it: @Invalid(), which QSettings reads as no value.
    const QStringList keys{QLatin1String(K::DynWatermarkFields), QStringLiteral("Destinations"),
                           QStringLiteral("Creators"), QStringLiteral("ResolutionSet")};
    {
        const auto store = ini();
        UserDefaults defaults(*store);
        ProcessingParams record = ProcessingParams::defaults();
        record.setIntList(K::DynWatermarkFields, {});
        defaults.setProcessingParams(record);
        defaults.setValue(QStringLiteral("Destinations"), QStringList());
        defaults.setValue(QStringLiteral("Creators"), QVariantList());
    }
    {
        QFile file(dir.filePath(QStringLiteral("s.ini")));
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write("ResolutionSet=@Invalid()\n");
    }
    const auto store = ini();
    const UserDefaults defaults(*store);
    for (const QString& key : keys) {
        ASSERT_TRUE(store->contains(key)) << qPrintable(key);
        const QVariant value = defaults.value(key);
        EXPECT_TRUE(value.isValid()) << qPrintable(key);
        EXPECT_TRUE(value.toList().isEmpty()) << qPrintable(key);
    }
    EXPECT_TRUE(defaults.stringList(QStringLiteral("ResolutionSet")).isEmpty());
    EXPECT_TRUE(defaults.processingParams().intList(K::DynWatermarkFields).isEmpty());
    EXPECT_TRUE(defaults.problems().isEmpty()) << qPrintable(defaults.problems().join(u'\n'));
}

TEST_F(StoreTest, AWronglyTypedOrOutOfRangeStoredValueReadsAsItsDefaultWithAMessage) {
    seed(QStringLiteral("HideExtension"), QStringLiteral("maybe"));
    seed(QStringLiteral("SelectedDestination"), 9);
    seed(QStringLiteral("SelectedCreator"), -1);
    seed(QStringLiteral("Creators"),
         QVariantList{QVariantMap{{QStringLiteral("label"), QStringLiteral("X")}}});
    const auto store = ini();
    const UserDefaults defaults(*store);
    EXPECT_TRUE(defaults.boolValue(QStringLiteral("HideExtension")));
    EXPECT_EQ(defaults.intValue(QStringLiteral("SelectedDestination")), 0);
    EXPECT_FALSE(defaults.value(QStringLiteral("SelectedCreator")).isValid());
    EXPECT_EQ(defaults.value(QStringLiteral("Creators")).toList().size(), 3);
    // Read twice, told once; and the store keeps what it held.
    defaults.boolValue(QStringLiteral("HideExtension"));
    EXPECT_EQ(defaults.problems(),
              (QStringList{R"("HideExtension" must be true or false, not maybe)",
                           R"("SelectedDestination" must be a whole number from 0 to 5, not 9)",
                           R"("SelectedCreator" must be a whole number from 0 to 5, not -1)",
                           R"("Creators" must be a list of creators, each {"label": text, "code": a )"
                           R"(four-character code}, not [a map of 1 entries])"}));
    EXPECT_EQ(store->value(QStringLiteral("SelectedDestination")).toInt(), 9);
}

} // namespace
