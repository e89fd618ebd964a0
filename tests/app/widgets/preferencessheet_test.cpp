#include "app/widgets/main/droparea.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/prefs/preferencessheet.h"
#include "app/windowtest.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QFile>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

using namespace quillet;
using namespace quillet::guitest;

namespace {

class PreferencesTest : public WindowTest {
  protected:
    // Opens the sheet from the menu, lets `act` work on it, and waits for it
    // to be answered.
    void withSheet(const std::function<void(PreferencesSheet*)>& act) {
        QTimer::singleShot(0, [this, act] {
            ASSERT_TRUE(waitFor([this] { return sheets.currentDialog() != nullptr; }, 5000));
            auto* sheet = qobject_cast<PreferencesSheet*>(sheets.currentDialog());
            ASSERT_TRUE(sheet);
            act(sheet);
        });
        window->findChild<QAction*>("actionPreferences")->trigger();
    }
    // Flips every control of the sheet away from what it shows.
    static void changeEverything(PreferencesSheet* sheet) {
        const Preferences shown = sheet->value();
        sheet->findChild<QRadioButton*>(QStringLiteral("singleFile%1").arg((shown.singleFile + 2) % 4))
            ->click();
        for (QCheckBox* box : sheet->findChildren<QCheckBox*>())
            box->click();
    }
    QByteArray storeBytes() {
        models->store().sync();
        QFile file(models->store().fileName());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

TEST_F(PreferencesTest, CancellingAfterChangingEverythingWritesNothingAndReopeningShowsTheStore) {
    models->defaults().setInt("SingleFile", 3);
    models->defaults().setBool("HideToolTips", true);
    window->applyPreferences();
    const Preferences stored = Preferences::read(models->defaults());
    const QByteArray before = storeBytes();

    // Cancel, Escape and the title bar's close all leave the store alone.
    withSheet([](PreferencesSheet* sheet) {
        changeEverything(sheet);
        sheet->findChild<QAbstractButton*>("cancelButton")->click();
    });
    withSheet([](PreferencesSheet* sheet) {
        changeEverything(sheet);
        QTest::keyClick(sheet, Qt::Key_Escape);
    });
    withSheet([](PreferencesSheet* sheet) {
        changeEverything(sheet);
        sheet->close();
    });
    EXPECT_EQ(storeBytes(), before);
    EXPECT_EQ(Preferences::read(models->defaults()), stored);

    Preferences shown;
    withSheet([&shown](PreferencesSheet* sheet) {
        shown = sheet->value();
        sheet->findChild<QAbstractButton*>("cancelButton")->click();
    });
    EXPECT_EQ(shown, stored);
    // Nothing was applied either.
    EXPECT_TRUE(window->findChild<DropArea*>("dropArea")->toolTip().isEmpty());
}

TEST_F(PreferencesTest, OkStoresEveryControlAndAppliesTheToolTipsAtOnceButNotTheWindowLook) {
    const Preferences before = Preferences::read(models->defaults());
    const QPalette palette = window->palette();
    EXPECT_FALSE(window->findChild<DropArea*>("dropArea")->toolTip().isEmpty());
    withSheet([](PreferencesSheet* sheet) {
        changeEverything(sheet);
        sheet->findChild<QAbstractButton*>("okButton")->click();
    });
    const Preferences after = Preferences::read(models->defaults());
    EXPECT_EQ(after.singleFile, (before.singleFile + 2) % 4);
    EXPECT_NE(after.revealFolder, before.revealFolder);
    EXPECT_NE(after.hideOnDeactivate, before.hideOnDeactivate);
    EXPECT_NE(after.hideToolTips, before.hideToolTips);
    EXPECT_NE(after.brushMetal, before.brushMetal);
    EXPECT_NE(after.onTheFlyFolder, before.onTheFlyFolder);
    EXPECT_TRUE(window->findChild<DropArea*>("dropArea")->toolTip().isEmpty());
    // The brushed look is read when a window is made, so this one keeps its own.
    EXPECT_TRUE(after.brushMetal);
    EXPECT_EQ(window->palette(), palette);
    MainWindow next(*controller, *models, sheets);
    EXPECT_EQ(next.palette().window().style(), Qt::TexturePattern);
}

} // namespace
