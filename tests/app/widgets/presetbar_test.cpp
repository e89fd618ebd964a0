#include "app/widgets/main/mainwindow.h"
#include "app/widgets/presets/presetbar.h"
#include "app/widgets/presets/presetmanagerpanel.h"
#include "app/widgets/presets/presetnamesheet.h"
#include "app/widgets/presets/singleedittable.h"
#include "app/windowtest.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class PresetBarTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        bar = window->presetBar();
    }
    QStringList menuTitles() const {
        QStringList titles;
        for (int i = 0; i < bar->menu()->count(); ++i)
            titles.append(bar->menu()->itemText(i));
        return titles;
    }
    PresetBar* bar = nullptr;
};

// The name sheet offers "Add" only for a name the presets may take; the name
// given is added, selected in the menu and may then be saved into.
TEST_F(PresetBarTest, NameSheetOffersOnlyAcceptableNames) {
    ASSERT_TRUE(models->presets().addPreset(QStringLiteral("Web")));
    PresetNameSheet sheet([this](const QString& typed) { return models->presets().nameIsAcceptable(typed); });
    auto* field = sheet.findChild<QLineEdit*>("presetNameField");
    auto* ok = sheet.findChild<QPushButton*>("presetNameOk");
    EXPECT_FALSE(ok->isEnabled());
    for (const QString& bad : {QStringLiteral("   "), QStringLiteral("None"), QStringLiteral(" Web")}) {
        field->setText(bad);
        EXPECT_FALSE(ok->isEnabled()) << bad.toStdString();
    }
    field->setText(QStringLiteral("Trip "));
    EXPECT_TRUE(ok->isEnabled());

    sheets.setNextAnswer(1, QStringLiteral(" Trip "));
    window->findChild<QAction*>("actionAddPreset")->trigger();
    EXPECT_EQ(menuTitles(),
              (QStringList{QStringLiteral("None"), QStringLiteral("Web"), QStringLiteral("Trip")}));
    EXPECT_EQ(bar->menu()->currentIndex(), 2);
    EXPECT_TRUE(window->findChild<QAction*>("actionStorePreset")->isEnabled());
    sheets.setNextAnswer(0);
    window->findChild<QAction*>("actionAddPreset")->trigger();
    EXPECT_EQ(bar->menu()->count(), 3);

    // The menu resets with "None" and applies a preset when one is chosen.
    bar->menu()->setCurrentIndex(0);
    Q_EMIT bar->menu()->activated(0);
    EXPECT_FALSE(window->findChild<QAction*>("actionStorePreset")->isEnabled());
}

// In the manager, Return keeps a typed name and ends editing on the same
// row, without closing the manager; Cancel then brings the old name back.
TEST_F(PresetBarTest, ReturnEndsRenamingInPlaceAndCancelUndoesIt) {
    ASSERT_TRUE(models->presets().addPreset(QStringLiteral("Web")));
    ASSERT_TRUE(models->presets().addPreset(QStringLiteral("Print")));
    models->presets().select(1);
    bar->showManager();
    PresetManagerPanel* panel = bar->manager();
    ASSERT_TRUE(waitFor([panel] { return panel->isVisible(); }, 2000));
    EXPECT_EQ(panel->selectedRow(), 0);
    // Row actions rest without a selection.
    auto* rename = panel->findChild<QAction*>("actionRenamePreset");
    EXPECT_TRUE(rename->isEnabled());

    rename->trigger();
    auto* editor = panel->table()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("Holiday"));
    QTest::keyClick(editor, Qt::Key_Return);
    waitFor([] { return false; }, 100);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_FALSE(panel->table()->isEditing());
    EXPECT_EQ(panel->selectedRow(), 0);
    EXPECT_EQ(panel->table()->model()->index(0, 0).data().toString(), QStringLiteral("Holiday"));
    EXPECT_EQ(menuTitles().at(1), QStringLiteral("Web")); // not before OK

    panel->findChild<QPushButton*>("presetManagerCancel")->click();
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(menuTitles(),
              (QStringList{QStringLiteral("None"), QStringLiteral("Web"), QStringLiteral("Print")}));
    EXPECT_EQ(bar->menu()->currentIndex(), 1);

    // Renamed again and kept with OK, the menu shows the new name.
    bar->showManager();
    ASSERT_TRUE(waitFor([panel] { return panel->isVisible(); }, 2000));
    panel->table()->model()->setData(panel->table()->model()->index(1, 0), QStringLiteral("Paper"));
    panel->table()->clearSelection();
    EXPECT_FALSE(rename->isEnabled());
    panel->findChild<QPushButton*>("presetManagerOk")->click();
    EXPECT_EQ(menuTitles(),
              (QStringList{QStringLiteral("None"), QStringLiteral("Web"), QStringLiteral("Paper")}));
}

} // namespace
