#include "app/guitest.h"
#include "app/models/presetmanagermodel.h"
#include "settings/presetjson.h"
#include "settings/presetstore.h"

#include <QAbstractItemModelTester>
#include <QMimeData>
#include <QSignalSpy>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class PresetManagerTest : public GuiTest {
  protected:
    void SetUp() override {
        GuiTest::SetUp();
        manager = std::make_unique<PresetManagerModel>(models->presets());
        tester = std::make_unique<QAbstractItemModelTester>(
            manager.get(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    }
    void TearDown() override {
        tester.reset();
        manager.reset();
        GuiTest::TearDown();
    }
    // Presets named so, each with its own JPEG quality (50, 51, ...).
    void addPresets(const QStringList& names) {
        for (const QString& name : names) {
            const int quality = 50 + int(menu().presets().count());
            edit(models->settings().output(), [quality](OutputSettings& o) { o.jpegQuality = quality; });
            ASSERT_TRUE(menu().addPreset(name));
        }
    }
    QStringList rows() const {
        QStringList names;
        for (int row = 0; row < manager->rowCount(); ++row)
            names.append(manager->data(manager->index(row)).toString());
        return names;
    }
    QStringList stored() {
        QSettings other(models->store().fileName(), QSettings::IniFormat);
        return PresetStore::load(other).names();
    }
    bool drop(int from, int row, const QModelIndex& onto = {}) {
        std::unique_ptr<QMimeData> data(manager->mimeData({manager->index(from)}));
        return data && manager->dropMimeData(data.get(), Qt::MoveAction, row, 0, onto);
    }
    PresetMenuModel& menu() { return models->presets(); }

    std::unique_ptr<PresetManagerModel> manager;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

// Renaming trims and refuses empty names, "None", any taken name and the
// preset's own name; copies are numbered, "Trip" and "Trip copy" differently.
TEST_F(PresetManagerTest, RenamesAreCheckedAndCopiesNumbered) {
    addPresets({QStringLiteral("Trip"), QStringLiteral("Home")});
    EXPECT_EQ(manager->begin(), 1);
    const QModelIndex first = manager->index(0);
    for (const QString& bad : {QStringLiteral(" "), QStringLiteral("None"), QStringLiteral("Home"),
                               QStringLiteral("Trip"), QStringLiteral(" Home ")})
        EXPECT_FALSE(manager->setData(first, bad)) << bad.toStdString();
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("Trip"), QStringLiteral("Home")}));
    EXPECT_TRUE(manager->setData(first, QStringLiteral(" Travel ")));
    EXPECT_EQ(manager->data(first, Qt::EditRole).toString(), QStringLiteral("Travel"));

    EXPECT_EQ(manager->duplicate(0), 1);
    EXPECT_EQ(manager->duplicate(0), 1);
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("Travel"), QStringLiteral("Travel copy 2"),
                                   QStringLiteral("Travel copy"), QStringLiteral("Home")}));
    EXPECT_EQ(manager->duplicate(2), 3);
    EXPECT_EQ(manager->data(manager->index(3)).toString(), QStringLiteral("Travel copy 1"));
    // A copy is a preset of its own: the same settings under a new id.
    const PresetStore& presets = menu().presets();
    const auto id = [&presets](int row) {
        return presets.presets().at(row).intValue(QLatin1String(ParamKey::Id));
    };
    EXPECT_NE(id(3), id(2));
    EXPECT_EQ(presets.presets().at(3).intValue(QLatin1String(ParamKey::JpegQuality)), 50);
}

// A row dragged from the top to the end lands last and is selected there; a
// drop onto a row lands above it; only one row at a time, of this table.
TEST_F(PresetManagerTest, DraggedRowsLandWhereDropped) {
    addPresets({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
    manager->begin();
    QSignalSpy dropped(manager.get(), &PresetManagerModel::rowDropped);

    EXPECT_TRUE(drop(0, -1));
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("A")}));
    EXPECT_TRUE(drop(0, 3));
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("C"), QStringLiteral("A"), QStringLiteral("B")}));
    ASSERT_EQ(dropped.size(), 2);
    EXPECT_EQ(dropped.at(1).at(0).toInt(), 2);

    EXPECT_TRUE(drop(2, -1, manager->index(0)));
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("A")}));
    EXPECT_EQ(dropped.last().at(0).toInt(), 0);
    // Onto the boundary below itself: nothing moves.
    EXPECT_TRUE(drop(1, 2));
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("A")}));

    EXPECT_EQ(manager->mimeData({manager->index(0), manager->index(1)}), nullptr);
    QMimeData foreign;
    foreign.setText(QStringLiteral("0"));
    EXPECT_FALSE(manager->dropMimeData(&foreign, Qt::MoveAction, 3, 0, {}));
    EXPECT_EQ(stored(), (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
}

// Cancelling throws every edit away, whatever it was, and the menu applies
// its preset again; OK writes the list and the selection follows its preset.
TEST_F(PresetManagerTest, CancelRestoresTheListAndOkKeepsIt) {
    addPresets({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")});
    menu().select(2);
    const QString file = scratch->filePath(QStringLiteral("b.json"));

    EXPECT_EQ(manager->begin(), 1);
    manager->exportFile(1, file);
    manager->remove(1);
    manager->setData(manager->index(0), QStringLiteral("X"));
    manager->duplicate(0);
    manager->move(0, 3);
    EXPECT_EQ(manager->importFile(file), 3);
    EXPECT_EQ(manager->data(manager->index(3)).toString(), QStringLiteral("B"));
    edit(models->settings().output(), [](OutputSettings& o) { o.jpegQuality = 99; });
    manager->finish(false);
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
    EXPECT_EQ(menu().titles().mid(1), rows());
    EXPECT_EQ(menu().selectedIndex(), 2);
    EXPECT_EQ(models->settings().value().output.jpegQuality, 51);

    manager->begin();
    manager->remove(0);
    manager->revert();
    EXPECT_EQ(rows(), (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));

    EXPECT_EQ(manager->move(1, 0), 0);
    manager->remove(2);
    EXPECT_EQ(stored(), (QStringList{QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
    manager->finish(true);
    EXPECT_EQ(stored(), (QStringList{QStringLiteral("B"), QStringLiteral("A")}));
    EXPECT_EQ(menu().titles(),
              (QStringList{QStringLiteral("None"), QStringLiteral("B"), QStringLiteral("A")}));
    EXPECT_EQ(menu().selectedIndex(), 1);

    // The selected preset removed: the menu falls back to "None".
    manager->begin();
    manager->remove(0);
    manager->finish(true);
    EXPECT_EQ(menu().selectedIndex(), 0);
}

// Importing a file the manager exported gives a copy name for a taken one;
// a file that is no preset is refused whole, with nothing added.
TEST_F(PresetManagerTest, ImportTakesExportedFilesAndRefusesOthers) {
    addPresets({QStringLiteral("Trip/Summer")});
    manager->begin();
    EXPECT_EQ(manager->exportFileName(0), QStringLiteral("Trip-Summer.json"));
    const QString file = scratch->filePath(manager->exportFileName(0));
    manager->exportFile(0, file);
    EXPECT_EQ(manager->importFile(file), 1);
    EXPECT_EQ(manager->data(manager->index(1)).toString(), QStringLiteral("Trip/Summer copy"));
    EXPECT_EQ(menu().presets().presets().at(1).intValue(QLatin1String(ParamKey::JpegQuality)), 50);

    const QString bad = scratch->filePath(QStringLiteral("bad.json"));
    QFile(bad).open(QIODevice::WriteOnly);
    EXPECT_THROW(manager->importFile(bad), PresetFileError);
    EXPECT_THROW(manager->importFile(scratch->filePath(QStringLiteral("missing.json"))), PresetFileError);
    EXPECT_EQ(manager->rowCount(), 2);
    manager->finish(true);
    EXPECT_EQ(stored(), (QStringList{QStringLiteral("Trip/Summer"), QStringLiteral("Trip/Summer copy")}));
}

} // namespace
