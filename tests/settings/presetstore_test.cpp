#include "settings/presetstore.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

namespace K = ParamKey;

QVariantMap record(const char* name, int id = 0, int rotation = 0) {
    QVariantMap m{{QLatin1String(K::Rotation), rotation}};
    if (name)
        m.insert(QLatin1String(K::Name), QString::fromUtf8(name));
    if (id)
        m.insert(QLatin1String(K::Id), id);
    return m;
}

// The store in menu order as "name#id|name#id...".
std::string rows(const PresetStore& store) {
    QStringList out;
    for (const ProcessingParams& p : store.presets())
        out.append(p.stringValue(K::Name) + QLatin1Char('#') + QString::number(p.intValue(K::Id)));
    return out.join(QLatin1Char('|')).toStdString();
}

// Every load and save goes through a fresh QSettings on a real INI file.
class PresetStoreTest : public testing::Test {
  protected:
    std::unique_ptr<QSettings> ini() const {
        return std::make_unique<QSettings>(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    }
    void seed(const char* key, const QVariant& value) const { ini()->setValue(QLatin1String(key), value); }
    PresetStore load() const { return PresetStore::load(*ini()); }

    QTemporaryDir dir;
};

TEST_F(PresetStoreTest, RecordsRoundTripThroughTheIniFileWithTheirTypes) {
    PresetStore store = load();
    ProcessingParams params = ProcessingParams::defaults();
    params.setIntList(K::DynWatermarkFields, {3, 0});
    params.setColor(K::BackgroundColor, RgbaColor{0.1, 0.2, 1.0 / 3.0, 0.5});
    params.setInt(K::FileFormat, FileFormat::WebP);
    params.setBool(K::ShrinkToFit, true);
    ASSERT_EQ(store.addPreset(QStringLiteral("  Web  "), params), 0);
    ASSERT_TRUE(store.save(*ini()));
    const PresetStore back = load();
    ASSERT_EQ(rows(back), "Web#1");
    const ProcessingParams& p = back.presets().first();
    EXPECT_EQ(p.values().value(QLatin1String(K::JpegQuality)).typeId(), QMetaType::Int);
    EXPECT_EQ(p.values().value(QLatin1String(K::PreserveHeader)).typeId(), QMetaType::Bool);
    EXPECT_EQ(p.intList(K::DynWatermarkFields), QList<int>({3, 0}));
    EXPECT_EQ(p.colorValue(K::BackgroundColor), (RgbaColor{0.1, 0.2, 1.0 / 3.0, 0.5}));
    EXPECT_EQ(p.values().value(QLatin1String(K::ShrinkToFit)), QVariant(true));
    EXPECT_EQ(p.intValue(K::FileFormat), FileFormat::WebP);
}

TEST_F(PresetStoreTest, OldStorageMigratesOnlyOnce) {
    seed(PresetStore::OldPresetsKey,
         QVariantMap{{"Beach", record(nullptr, 0, 1)}, {"Archive", record(nullptr, 0, 3)}});
    PresetStore store = load();
    EXPECT_EQ(rows(store), "Archive#1|Beach#2");
    EXPECT_EQ(store.presets().at(1).intValue(K::Rotation), 1);
    // Once "Presets" exists the old storage is never read again, even after
    // every preset has been deleted: an empty list is still a list.
    seed(PresetStore::OldPresetsKey, QVariantMap{{"Ghost", record(nullptr)}});
    EXPECT_EQ(rows(load()), "Archive#1|Beach#2");
    ASSERT_TRUE(store.removePreset(1) && store.removePreset(0));
    ASSERT_TRUE(store.save(*ini()));
    EXPECT_EQ(load().count(), 0);
}

TEST_F(PresetStoreTest, LoadingMakesNamesUniqueFillsMissingIdsAndWritesThatBack) {
    seed(PresetStore::PresetsKey, QVariantList{record("A", 0), record("A", 7), record("A", -2),
                                               record(nullptr), record(nullptr, 3), QStringLiteral("junk")});
    const PresetStore store = load();
    EXPECT_EQ(rows(store), "A#8|A copy#7|A copy copy#9|#10|#3");
    EXPECT_EQ(store.menuTitles().join('|'), "None|A|A copy|A copy copy|Untitled 0|Untitled 1");
    EXPECT_EQ(store.nextId(), 11);
    EXPECT_EQ(rows(load()), rows(store));
}

TEST_F(PresetStoreTest, AddRenameDuplicateAndImportKeepNamesUnique) {
    seed(PresetStore::PresetsKey, QVariantList{record("A", 1), record("B", 2), record("C", 3)});
    PresetStore store = load();
    for (const char* bad : {"   ", "None", " A "}) {
        EXPECT_EQ(store.addPreset(QString::fromLatin1(bad), ProcessingParams::defaults()), -1) << bad;
        EXPECT_FALSE(store.renamePreset(1, QString::fromLatin1(bad))) << bad;
    }
    EXPECT_FALSE(store.renamePreset(1, "B") || store.renamePreset(3, "X")); // its own name; no such row
    EXPECT_TRUE(store.renamePreset(1, QStringLiteral(" a ")));              // names are case-sensitive
    // A copy goes right below its original, with a fresh id. The counter has
    // moved on by the time "A copy" is found taken, so a plain name skips
    // "copy 1"; a name already ending in " copy" starts at 1.
    for (int original : {0, 0, 0, 3, -1})
        EXPECT_EQ(store.duplicatePreset(original), original < 0 ? -1 : original + 1);
    // An import is appended under a copy name and never keeps its own id.
    EXPECT_EQ(store.importPreset(ProcessingParams(record(" C ", 1))), 7);
    EXPECT_EQ(store.importPreset(ProcessingParams(record("None", 2))), 8);
    EXPECT_EQ(rows(store), "A#1|A copy 3#6|A copy 2#5|A copy#4|A copy 1#7|a#2|C#3|C copy#8|None copy#9");
}

TEST_F(PresetStoreTest, MovingFollowsRowBoundaries) {
    seed(PresetStore::PresetsKey, QVariantList{record("A", 1), record("B", 2), record("C", 3)});
    PresetStore store = load();
    // clang-format off
    const std::tuple<int, int, int, std::string> moves[] = {
        {0, 3, 2, "B#2|C#3|A#1"}, {2, 0, 0, "A#1|B#2|C#3"}, {0, 2, 1, "B#2|A#1|C#3"},
        {1, 2, 1, "B#2|A#1|C#3"}}; // the last is just below itself: same order
    // clang-format on
    for (const auto& [from, to, target, after] : moves) {
        EXPECT_EQ(store.moveTarget(from, to), target) << from << "->" << to;
        EXPECT_EQ(rows(store), after);
    }
    for (auto [from, to] : {std::pair{1, 1}, {-1, 0}, {3, 0}, {0, 4}, {0, -1}})
        EXPECT_EQ(store.moveTarget(from, to), std::nullopt) << from << "->" << to;
    EXPECT_EQ(rows(store), "B#2|A#1|C#3");
}

} // namespace
