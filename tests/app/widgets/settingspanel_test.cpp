#include "app/widgets/main/creatorcombobox.h"
#include "app/widgets/main/mainwindow.h"
#include "app/widgets/settings/settingscontrols.h"
#include "app/widgets/settings/settingspanel.h"
#include "app/widgets/settings/watermarkwindow.h"
#include "app/widgets/views/kvstepper.h"
#include "app/windowtest.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QScrollBar>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

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

class SettingsPanelTest : public WindowTest {
  protected:
    void SetUp() override {
        WindowTest::SetUp();
        creators = window->findChild<CreatorComboBox*>(QStringLiteral("creatorMenu"));
        ASSERT_TRUE(creators);
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

// One notch of the wheel over the widget's middle: down (toward the user) by default.
void turnWheel(QWidget* widget, int notches = -1) {
    const QPointF at(widget->width() / 2.0, widget->height() / 2.0);
    QWheelEvent turn(at, widget->mapToGlobal(at), QPoint(), QPoint(0, 120 * notches), Qt::NoButton,
                     Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &turn);
}

TEST_F(SettingsPanelTest, WheelScrollsTheColumnUntilAControlHasTheFocus) {
    window->resize(window->width(), 450);
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QScrollBar* bar = window->settingsPanel()->verticalScrollBar();
    ASSERT_GT(bar->maximum(), 0);
    auto* rotation = window->findChild<QComboBox*>(QStringLiteral("rotation"));
    auto* quality = window->findChild<KVStepper*>(QStringLiteral("jpegQuality"));
    ASSERT_TRUE(rotation && quality);
    const int rotationIndex = rotation->currentIndex();
    const int qualityValue = quality->value();
    for (QWidget* control :
         {static_cast<QWidget*>(rotation), static_cast<QWidget*>(quality), static_cast<QWidget*>(creators)}) {
        SCOPED_TRACE(control->objectName().toStdString());
        bar->setValue(0);
        turnWheel(control);
        EXPECT_GT(bar->value(), 0);
        EXPECT_FALSE(control->hasFocus());
    }
    EXPECT_EQ(rotation->currentIndex(), rotationIndex);
    EXPECT_EQ(quality->value(), qualityValue);
    EXPECT_EQ(creators->currentIndex(), 0);

    // Clicked or tabbed into, a control takes the wheel itself.
    quality->setFocus();
    bar->setValue(0);
    turnWheel(quality, 1);
    EXPECT_EQ(quality->value(), qualityValue + 1);
    EXPECT_EQ(bar->value(), 0);
    rotation->setFocus();
    turnWheel(rotation);
    EXPECT_EQ(rotation->currentIndex(), rotationIndex + 1);
}

TEST_F(SettingsPanelTest, WheelAndKeysNeverRunACommandOfTheCreatorAndDestinationMenus) {
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    auto* destinations = window->findChild<QComboBox*>(QStringLiteral("destinationMenu"));
    ASSERT_TRUE(destinations);
    const QStringList entries = models->destinations().entries();
    const qsizetype creatorCount = models->creators().creators().size();
    const struct {
        QComboBox* menu;
        int lastEntry;
    } menus[] = {{creators, int(creatorCount)}, {destinations, int(entries.size()) - 1}};
    for (const auto& [menu, lastEntry] : menus) {
        SCOPED_TRACE(menu->objectName().toStdString());
        menu->setFocus();
        ASSERT_TRUE(menu->hasFocus());
        for (int i = 0; i < 10; ++i)
            turnWheel(menu);
        EXPECT_EQ(menu->currentIndex(), lastEntry);
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Right, Qt::Key_PageDown, Qt::Key_End})
            QTest::keyClick(menu, key);
        EXPECT_EQ(menu->currentIndex(), lastEntry);
        // Typing picks entries only: "R" and "C" start the commands' titles.
        QTest::keyClicks(menu, QStringLiteral("rcRC"));
        EXPECT_LE(menu->currentIndex(), lastEntry);
        QTest::keyClick(menu, Qt::Key_Home);
        EXPECT_EQ(menu->currentIndex(), 0);
        turnWheel(menu, 1);
        EXPECT_EQ(menu->currentIndex(), 0);
    }
    EXPECT_EQ(models->destinations().entries(), entries);
    EXPECT_EQ(models->creators().creators().size(), creatorCount);
    EXPECT_TRUE(asked.isEmpty()) << asked.join(u',').toStdString();
    // The arrows did choose the entries they passed.
    QTest::keyClick(destinations, Qt::Key_Down);
    EXPECT_EQ(models->destinations().selectedIndex(), 1);
}

TEST_F(SettingsPanelTest, WatermarkPositionMenuShowsEveryStoredCode) {
    const QString picture = makePictures(in(), 1).first();
    auto* location = window->settingsPanel()->watermarkWindow()->findChild<QComboBox*>(
        QStringLiteral("watermarkLocation"));
    ASSERT_TRUE(location);
    for (int code = 0; code <= 7; ++code) {
        ProcessingParams record = models->settings().record();
        record.setString(ParamKey::WatermarkPath, picture);
        record.setInt(ParamKey::WatermarkLocation, code);
        models->settings().load(record);
        EXPECT_EQ(location->currentData().toInt(), code);
        EXPECT_FALSE(location->currentText().isEmpty()) << code;
    }
    // "Nowhere" (not drawn) is chosen like any position.
    const int nowhere = location->findData(0);
    EXPECT_EQ(nowhere, location->count() - 1);
    location->setCurrentIndex(1);
    Q_EMIT location->activated(nowhere);
    EXPECT_EQ(models->settings().watermarks().value().image.location, 0);
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

TEST_F(SettingsPanelTest, RenamePanelIsMadeOnceAndShownAgain) {
    // The user cancels whatever panel comes up, and it is always the same one.
    QList<QDialog*> shown;
    QTimer user;
    QObject::connect(&user, &QTimer::timeout, [&] {
        if (QDialog* dialog = sheets.currentDialog(); dialog && dialog->isVisible()) {
            shown.append(dialog);
            dialog->reject();
        }
    });
    user.start(20);
    window->settingsPanel()->showRename();
    window->settingsPanel()->showRename();
    ASSERT_EQ(shown.size(), 2);
    EXPECT_EQ(shown.at(0), shown.at(1));
    EXPECT_EQ(shown.at(0)->objectName(), QStringLiteral("renamePanel"));
    EXPECT_EQ(window->findChildren<QDialog*>(QStringLiteral("renamePanel")).size(), 1);
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
