#include "app/guitest.h"
#include "app/widgets/main/creatorcombobox.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/settings/settingscontrols.h"
#include "app/widgets/settings/settingspanel.h"
#include "app/widgets/settings/watermarkwindow.h"
#include "app/widgets/views/kvstepper.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QScrollBar>

using namespace quillet;
using namespace quillet::guitest;

namespace {

void choose(QComboBox* menu, int index) {
    menu->setCurrentIndex(index);
    Q_EMIT menu->activated(index);
}

void chooseCode(QComboBox* menu, int code) {
    choose(menu, menu->findData(code));
}

class SettingsPanelTest : public GuiTest {
  protected:
    void SetUp() override {
        GuiTest::SetUp();
        window = std::make_unique<MainWindow>(*controller, *models, sheets);
        window->show();
        creators = window->findChild<CreatorComboBox*>(QStringLiteral("creatorMenu"));
        ASSERT_TRUE(creators);
    }
    void TearDown() override {
        window.reset();
        GuiTest::TearDown();
    }
    QString application(const QString& name, const QString& code) {
        const QString path = scratch->filePath(name + QStringLiteral(".desktop"));
        testsupport::writeFile(path, QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\n"
                                                    "X-Quillet-Creator=%2\n")
                                         .arg(name, code)
                                         .toUtf8());
        return path;
    }
    // "Choose an Application ..." answered with the given file, and "Okay"
    // for the refusal when one is expected.
    void chooseApplication(const QString& path, bool refused = false) {
        sheets.setNextAnswer(1, path);
        if (refused)
            sheets.setNextAnswer(1);
        choose(creators, creators->count() - 1);
    }
    std::unique_ptr<MainWindow> window;
    CreatorComboBox* creators = nullptr;
};

TEST_F(SettingsPanelTest, CreatorsChosenFromApplicationsKeepTheFiveNewestAndRefuseUnknownCodes) {
    // The three shipped creators, then three more: the oldest two go.
    ASSERT_EQ(creators->itemText(1), QStringLiteral("Adobe Photoshop"));
    for (const QString& name :
         {QStringLiteral("Darkroom"), QStringLiteral("Lighttable"), QStringLiteral("Sixth")})
        chooseApplication(application(name, name.left(4)));
    EXPECT_TRUE(asked.filter(QStringLiteral("No Creator Code")).isEmpty());
    EXPECT_EQ(models->creators().creators().size(), 5);
    EXPECT_EQ(creators->itemText(1), QStringLiteral("Sixth"));
    EXPECT_EQ(creators->itemText(5), QStringLiteral("Preview"));
    EXPECT_EQ(creators->findText(QStringLiteral("Safari")), -1);
    EXPECT_EQ(creators->currentIndex(), 1);
    EXPECT_EQ(models->creators().currentCode(), CreatorMenu::osTypeFromString(QStringLiteral("Sixt")));

    // "????" is no code: the sheet names the application and the previous
    // creator comes back.
    choose(creators, 3);
    asked.clear();
    chooseApplication(application(QStringLiteral("Unsigned"), QStringLiteral("????")), true);
    EXPECT_EQ(asked,
              (QStringList{QStringLiteral("Choose an Application"), QStringLiteral("No Creator Code")}));
    EXPECT_EQ(creators->currentIndex(), 3);
    EXPECT_EQ(models->creators().selectedIndex(), 3);
    EXPECT_EQ(creators->findText(QStringLiteral("Unsigned")), -1);

    // A cancelled chooser also keeps the previous creator.
    sheets.setNextAnswer(0);
    choose(creators, creators->count() - 1);
    EXPECT_EQ(creators->currentIndex(), 3);

    // "Remove Selected Entry" drops it and selects "None".
    const QString removed = creators->itemText(3);
    choose(creators, creators->count() - 2);
    EXPECT_EQ(creators->currentIndex(), 0);
    EXPECT_EQ(creators->findText(removed), -1);
    EXPECT_EQ(models->creators().currentCode(), 0u);
}

TEST_F(SettingsPanelTest, AutomaticRotationHintsUntilToldNotTo) {
    auto* rotation = window->findChild<QComboBox*>(QStringLiteral("rotation"));
    ASSERT_TRUE(rotation);
    sheets.setNextAnswer(1); // "Okay"
    chooseCode(rotation, Rotation::Automatic);
    sheets.setNextAnswer(0); // "Don't show this again"
    chooseCode(rotation, Rotation::Automatic);
    chooseCode(rotation, Rotation::Automatic);
    chooseCode(rotation, Rotation::Clockwise);
    EXPECT_EQ(asked, (QStringList{QStringLiteral("Auto-Rotate Hint"), QStringLiteral("Auto-Rotate Hint")}));
    EXPECT_FALSE(models->defaults().boolValue(QStringLiteral("ShowAutoRotateHint")));
}

TEST_F(SettingsPanelTest, HidingToolTipsReachesTheWatermarkWindowToo) {
    auto* width = window->findChild<KVStepper*>(QStringLiteral("width"));
    ASSERT_TRUE(width);
    QWidget* opacity =
        window->settingsPanel()->watermarkWindow()->findChild<QWidget*>(QStringLiteral("watermarkOpacity"));
    ASSERT_TRUE(opacity);
    EXPECT_FALSE(opacity->toolTip().isEmpty());
    models->defaults().setBool(QStringLiteral("HideToolTips"), true);
    window->applyPreferences();
    EXPECT_TRUE(width->toolTip().isEmpty());
    EXPECT_TRUE(opacity->toolTip().isEmpty());
    EXPECT_TRUE(window->findChild<QWidget*>(QStringLiteral("dropArea"))->toolTip().isEmpty());
    models->defaults().setBool(QStringLiteral("HideToolTips"), false);
    window->applyPreferences();
    EXPECT_EQ(width->toolTip(), QStringLiteral("Width in pixels."));
}

TEST_F(SettingsPanelTest, RenamePanelStoresOnOkAndForgetsOtherwise) {
    auto* summary = window->findChild<QLabel*>(QStringLiteral("renameSummary"));
    ASSERT_TRUE(summary);
    EXPECT_EQ(summary->text(), QStringLiteral("Same as input filename"));

    // Edited in memory, then cancelled: the stored scheme comes back.
    models->renaming().renamer().setType(Renamer::PrefixSuffix);
    models->renaming().renamer().setPrefix(QStringLiteral("trip-"));
    sheets.setNextAnswer(0);
    window->settingsPanel()->showRename();
    EXPECT_EQ(models->renaming().renamer().renameType(), Renamer::KeepName);
    EXPECT_EQ(summary->text(), QStringLiteral("Same as input filename"));

    models->renaming().renamer().setType(Renamer::PrefixSuffix);
    models->renaming().renamer().setPrefix(QStringLiteral("trip-"));
    sheets.setNextAnswer(1);
    window->settingsPanel()->showRename();
    EXPECT_TRUE(summary->text().startsWith(QStringLiteral("e.g. trip-")));
    EXPECT_TRUE(summary->text().endsWith(QStringLiteral(" ...")));
    EXPECT_EQ(models->defaults().intValue(QStringLiteral("SelectedRename")), Renamer::PrefixSuffix);
}

TEST_F(SettingsPanelTest, ShortWindowScrollsTheSettingsInsteadOfSqueezingThem) {
    SettingsPanel* panel = window->settingsPanel();
    window->resize(window->width(), 450);
    waitFor([] { return true; }, 50);
    EXPECT_GE(panel->widget()->height(), SettingsPanel::MinimumContentHeight);
    EXPECT_GE(panel->widget()->height(), panel->widget()->minimumSizeHint().height());
    EXPECT_GT(panel->verticalScrollBar()->maximum(), 0);
}

TEST_F(SettingsPanelTest, TabGoesThroughTheControlsInReadingOrder) {
    QStringList order;
    QWidget* start = window->findChild<QWidget*>(QStringLiteral("destinationMenu"));
    for (QWidget* w = start->nextInFocusChain(); w != start; w = w->nextInFocusChain())
        if (w->focusPolicy() & Qt::TabFocus)
            order.append(w->objectName());
    const QStringList reading{
        QStringLiteral("rotation"),     QStringLiteral("scaleType"),     QStringLiteral("fileFormat"),
        QStringLiteral("resolution"),   QStringLiteral("convertToSrgb"), QStringLiteral("watermarksButton"),
        QStringLiteral("renameButton"), QStringLiteral("creatorMenu"),   QStringLiteral("fileOption0")};
    qsizetype last = -1;
    for (const QString& name : reading) {
        const qsizetype at = order.indexOf(name);
        EXPECT_GT(at, last) << name.toStdString() << " in " << order.join(QLatin1Char(' ')).toStdString();
        last = at;
    }
}

} // namespace
