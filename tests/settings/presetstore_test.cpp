#include "settings/presetstore.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

namespace K = ParamKey;

QVariantMap record(const char* name, int id = 0, int rotation = 0) {
    QVariantMap m;
    if (name)
        m.insert(QLatin1String(K::Name), QString::fromUtf8(name));
    if (id)
        m.insert(QLatin1String(K::Id), id);
    m.insert(QLatin1String(K::Rotation), rotation);
    return m;
}

QStringList list(std::initializer_list<const char*> names) {
    QStringList out;
    for (const char* n : names)
        out.append(QString::fromUtf8(n));
    return out;
}

QList<int> ids(const PresetStore& store) {
    QList<int> out;
    for (const ProcessingParams& p : store.presets())
        out.append(p.intValue(K::Id));
    return out;
}

class PresetStoreTest : public testing::Test {
  protected:
    QString iniPath() const { return dir.filePath(QStringLiteral("store.ini")); }
    // A fresh QSettings on the same file, so every check goes through the disk.
    std::unique_ptr<QSettings> reopen() const {
        return std::make_unique<QSettings>(iniPath(), QSettings::IniFormat);
    }
    void seed(const char* key, const QVariant& value) {
        auto s = reopen();
        s->setValue(QLatin1String(key), value);
    }
    PresetStore load() { return PresetStore::load(*reopen()); }

    QTemporaryDir dir;
};

TEST_F(PresetStoreTest, RecordsRoundTripThroughTheSettingsFileWithTheirTypes) {
    PresetStore store = load();
    ProcessingParams params = ProcessingParams::defaults();
    params.setIntList(K::DynWatermarkFields, {3, 0});
    params.setColor(K::BackgroundColor, RgbaColor{0.1, 0.2, 1.0 / 3.0, 0.5});
    params.setBool(K::HasFizeLimit, true);
    params.setInt(K::SizeLimit, 250);
    ASSERT_EQ(store.addPreset(QStringLiteral("  Web  "), params), 0);
    ASSERT_TRUE(store.save(*reopen()));

    const PresetStore back = load();
    ASSERT_EQ(back.count(), 1);
    const ProcessingParams& p = back.presets().first();
    EXPECT_EQ(p.stringValue(K::Name), QStringLiteral("Web"));
    EXPECT_EQ(p.intValue(K::Id), 1);
    EXPECT_EQ(p.values().value(QLatin1String(K::JpegQuality)).typeId(), QMetaType::Int);
    EXPECT_EQ(p.values().value(QLatin1String(K::PreserveHeader)).typeId(), QMetaType::Bool);
    EXPECT_EQ(p.sizeLimitBytes(), 250 * 1024);
    EXPECT_EQ(p.intList(K::DynWatermarkFields), QList<int>({3, 0}));
    EXPECT_EQ(p.colorValue(K::BackgroundColor), (RgbaColor{0.1, 0.2, 1.0 / 3.0, 0.5}));
    EXPECT_EQ(back.nextId(), 2);
}

TEST_F(PresetStoreTest, OldStorageMigratesOnceWithNamesAndIds) {
    QVariantMap old;
    old.insert(QStringLiteral("Beach"), record(nullptr, 0, 1));
    old.insert(QStringLiteral("Archive"), record(nullptr, 0, 3));
    seed(PresetStore::OldPresetsKey, old);

    const PresetStore store = load();
    EXPECT_EQ(store.names(), list({"Archive", "Beach"}));
    EXPECT_EQ(ids(store), QList<int>({1, 2}));
    EXPECT_EQ(store.presets().at(1).intValue(K::Rotation), 1);
    EXPECT_TRUE(reopen()->contains(QLatin1String(PresetStore::PresetsKey)));

    // Once "Presets" exists the old storage is never read again.
    QVariantMap later;
    later.insert(QStringLiteral("Ghost"), record(nullptr));
    seed(PresetStore::OldPresetsKey, later);
    PresetStore reloaded = load();
    EXPECT_EQ(reloaded.names(), list({"Archive", "Beach"}));

    // Nor once every preset has been deleted: an empty list is still a list.
    reloaded.removePreset(1);
    reloaded.removePreset(0);
    ASSERT_TRUE(reloaded.save(*reopen()));
    EXPECT_EQ(load().count(), 0);
}

TEST_F(PresetStoreTest, LoadingMakesNamesUniqueAndFillsMissingIds) {
    seed(PresetStore::PresetsKey, QVariantList{record("A", 0), record("A", 7), record("A", -2),
                                               record(nullptr), record(nullptr, 3), QStringLiteral("junk")});
    const PresetStore store = load();
    EXPECT_EQ(store.names(), list({"A", "A copy", "A copy copy", "", ""}));
    EXPECT_EQ(ids(store), QList<int>({8, 7, 9, 10, 3}));
    EXPECT_EQ(store.nextId(), 11);
    EXPECT_EQ(store.menuTitles(), list({"None", "A", "A copy", "A copy copy", "Untitled 0", "Untitled 1"}));
    // The fixed-up list was written back.
    EXPECT_EQ(ids(load()), QList<int>({8, 7, 9, 10, 3}));
}

TEST_F(PresetStoreTest, AddAndRenameRefuseUnacceptableNames) {
    PresetStore store = load();
    const ProcessingParams params = ProcessingParams::defaults();
    ASSERT_EQ(store.addPreset(QStringLiteral("Trip"), params), 0);
    ASSERT_EQ(store.addPreset(QStringLiteral("Web"), params), 1);
    for (const QString& bad : {QStringLiteral("   "), QStringLiteral("None"), QStringLiteral(" Trip ")}) {
        EXPECT_EQ(store.addPreset(bad, params), -1) << bad.toStdString();
        EXPECT_FALSE(store.renamePreset(1, bad)) << bad.toStdString();
    }
    EXPECT_FALSE(store.renamePreset(1, QStringLiteral("Web"))); // its own name too
    EXPECT_EQ(store.names(), list({"Trip", "Web"}));
    EXPECT_TRUE(store.renamePreset(1, QStringLiteral(" Print ")));
    EXPECT_EQ(store.names(), list({"Trip", "Print"}));
    EXPECT_FALSE(store.renamePreset(5, QStringLiteral("X")));
}

TEST_F(PresetStoreTest, DuplicatingGivesCopyNamesAndNewIdsBelowTheOriginal) {
    PresetStore store = load();
    store.addPreset(QStringLiteral("Trip"), ProcessingParams::defaults());
    store.addPreset(QStringLiteral("Web"), ProcessingParams::defaults());
    EXPECT_EQ(store.duplicatePreset(0), 1);
    EXPECT_EQ(store.duplicatePreset(0), 1);
    EXPECT_EQ(store.names(), list({"Trip", "Trip copy 2", "Trip copy", "Web"}));
    EXPECT_EQ(store.duplicatePreset(2), 3);
    EXPECT_EQ(store.names(), list({"Trip", "Trip copy 2", "Trip copy", "Trip copy 1", "Web"}));
    EXPECT_EQ(ids(store), QList<int>({1, 4, 3, 5, 2}));
    EXPECT_EQ(store.duplicatePreset(-1), -1);
}

TEST_F(PresetStoreTest, SetPresetDropsTheIdUntilTheNextLoad) {
    PresetStore store = load();
    store.addPreset(QStringLiteral("Trip"), ProcessingParams::defaults());
    store.addPreset(QStringLiteral("Web"), ProcessingParams::defaults());
    ProcessingParams current = ProcessingParams::defaults();
    current.setInt(K::Rotation, 3);
    current.setInt(K::Id, 99);
    ASSERT_TRUE(store.setPreset(0, current, QStringLiteral("Trip")));
    EXPECT_FALSE(store.presets().at(0).contains(K::Id));
    EXPECT_EQ(store.presets().at(0).intValue(K::Rotation), 3);
    store.save(*reopen());
    EXPECT_EQ(ids(load()), QList<int>({3, 2}));
    EXPECT_FALSE(store.setPreset(2, current, QStringLiteral("X")));
}

TEST_F(PresetStoreTest, MovingFollowsRowBoundaries) {
    const auto make = [this] {
        PresetStore store = load();
        for (const char* n : {"A", "B", "C"})
            store.addPreset(QString::fromLatin1(n), ProcessingParams::defaults());
        return store;
    };
    PresetStore store = make();
    EXPECT_EQ(store.moveTarget(0, 3), 2);
    EXPECT_EQ(store.names(), list({"B", "C", "A"}));
    EXPECT_EQ(store.moveTarget(2, 0), 0);
    EXPECT_EQ(store.names(), list({"A", "B", "C"}));
    EXPECT_EQ(store.moveTarget(0, 2), 1);
    EXPECT_EQ(store.names(), list({"B", "A", "C"}));
    EXPECT_EQ(store.moveTarget(1, 1), std::nullopt);
    EXPECT_EQ(store.moveTarget(1, 2), 1); // just below itself: same order
    EXPECT_EQ(store.names(), list({"B", "A", "C"}));
    for (auto [from, to] : {std::pair{-1, 0}, {3, 0}, {0, 4}, {0, -1}})
        EXPECT_EQ(store.moveTarget(from, to), std::nullopt) << from << "->" << to;
    EXPECT_EQ(store.names(), list({"B", "A", "C"}));
}

TEST_F(PresetStoreTest, ImportTakesACopyNameAndAFreshId) {
    PresetStore store = load();
    store.addPreset(QStringLiteral("Trip"), ProcessingParams::defaults());
    ProcessingParams incoming(record(" Trip ", 1, 2));
    EXPECT_EQ(store.importPreset(incoming), 1);
    incoming.setString(K::Name, QStringLiteral("None"));
    EXPECT_EQ(store.importPreset(incoming), 2);
    incoming.setString(K::Name, QStringLiteral("Fresh"));
    EXPECT_EQ(store.importPreset(incoming), 3);
    EXPECT_EQ(store.names(), list({"Trip", "Trip copy", "None copy", "Fresh"}));
    EXPECT_EQ(ids(store), QList<int>({1, 2, 3, 4}));
}

TEST_F(PresetStoreTest, LookupFindsAPresetInTheUsersStore) {
    qputenv("QUILLET_SETTINGS", iniPath().toLocal8Bit());
    PresetStore store = load();
    ProcessingParams params = ProcessingParams::defaults();
    params.setInt(K::ScaleType, 4);
    store.addPreset(QStringLiteral("Fit"), params);
    ASSERT_TRUE(store.save());
    const std::optional<ProcessingParams> found = PresetStore::lookup(QStringLiteral("Fit"));
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->intValue(K::ScaleType), 4);
    EXPECT_FALSE(PresetStore::lookup(QStringLiteral("fit")).has_value());
    EXPECT_FALSE(PresetStore::lookup(QString()).has_value());
}

} // namespace
