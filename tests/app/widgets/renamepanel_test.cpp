#include "app/widgets/settings/renamepanel.h"
#include "app/widgets/views/kvstepper.h"
#include "naming/renamer.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace quillet;

TEST(RenamePanel, TypingIntoAPageChoosesItsSchemeAndTheExamplesFollow) {
    Renamer renamer;
    RenamePanel panel(renamer);
    EXPECT_EQ(panel.examplesText(), QString());
    auto* prefix = panel.findChild<QLineEdit*>(QStringLiteral("numberPrefix"));
    ASSERT_TRUE(prefix);
    QTest::keyClicks(prefix, QStringLiteral("img"));
    EXPECT_EQ(renamer.renameType(), Renamer::Sequence);
    auto* digits = panel.findChild<KVStepper*>(QStringLiteral("numberDigits"));
    digits->setValue(3);
    panel.findChild<KVStepper*>(QStringLiteral("numberStart"))->setValue(1);
    EXPECT_EQ(panel.examplesText(), QStringLiteral("e.g. img001, img002 ..."));

    // The other pages keep what they hold; choosing one reads its fields.
    QTest::keyClicks(panel.findChild<QLineEdit*>(QStringLiteral("nameSuffix")), QStringLiteral("-s"));
    EXPECT_EQ(renamer.renameType(), Renamer::PrefixSuffix);
    EXPECT_EQ(panel.examplesText(), QStringLiteral("e.g. infile1-s, infile2-s ..."));
    panel.selectType(Renamer::Sequence);
    EXPECT_EQ(renamer.prefix(), QStringLiteral("img"));
    EXPECT_EQ(panel.examplesText(), QStringLiteral("e.g. img001, img002 ..."));
    panel.selectType(Renamer::KeepName);
    EXPECT_EQ(panel.examplesText(), QString());
}

TEST(RenamePanel, CancelReloadsTheStoredSchemeIntoThePanel) {
    QTemporaryDir dir;
    QSettings store(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    store.setValue(QStringLiteral("SelectedRename"), Renamer::Date);
    store.setValue(QStringLiteral("RenamePrefix"), QStringLiteral("trip-"));
    store.setValue(QStringLiteral("RenameConflictFormatTag"), 1);
    Renamer renamer(store);
    RenamePanel panel(renamer);
    EXPECT_EQ(panel.findChild<QLineEdit*>(QStringLiteral("datePrefix"))->text(), QStringLiteral("trip-"));
    EXPECT_EQ(panel.findChild<QComboBox*>(QStringLiteral("conflictFormat"))->currentIndex(), 1);
    EXPECT_TRUE(panel.examplesText().startsWith(QStringLiteral("e.g. trip-")));

    QTest::keyClicks(panel.findChild<QLineEdit*>(QStringLiteral("datePrefix")), QStringLiteral("x"));
    EXPECT_EQ(renamer.prefix(), QStringLiteral("trip-x"));
    renamer.acceptChanges(false, store);
    panel.showScheme();
    EXPECT_EQ(renamer.prefix(), QStringLiteral("trip-"));
    EXPECT_EQ(panel.findChild<QLineEdit*>(QStringLiteral("datePrefix"))->text(), QStringLiteral("trip-"));
}

TEST(RenamePanel, HeightFollowsTheSchemeWithTheTopEdgeKept) {
    Renamer renamer;
    RenamePanel panel(renamer);
    panel.move(100, 200);
    int previous = 0;
    for (int type : {Renamer::KeepName, Renamer::PrefixSuffix, Renamer::Sequence, Renamer::Date}) {
        panel.selectType(type);
        EXPECT_GE(panel.height(), RenamePanel::heightForType(type));
        EXPECT_GE(panel.height(), previous) << type; // the schemes grow in this order
        EXPECT_EQ(panel.y(), 200);
        previous = panel.height();
    }
}

TEST(RenamePanel, PagesNeverSavedStartFromTheSchemeAndTheFallbackIsChosen) {
    QTemporaryDir dir;
    QSettings store(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    store.setValue(QStringLiteral("SelectedRename"), Renamer::PrefixSuffix);
    store.setValue(QStringLiteral("RenamePrefix"), QStringLiteral("trip-"));
    store.setValue(QStringLiteral("DateFallbackTag"), 1);
    Renamer renamer(store);
    RenamePanel panel(renamer);
    // One of the two fallbacks is always chosen, the stored one.
    auto* keepName = panel.findChild<QAbstractButton*>(QStringLiteral("fallbackKeepName"));
    auto* fileDate = panel.findChild<QAbstractButton*>(QStringLiteral("fallbackFileDate"));
    ASSERT_TRUE(keepName && fileDate);
    EXPECT_TRUE(keepName->isChecked());
    EXPECT_FALSE(fileDate->isChecked());

    // The date page was never saved: choosing it keeps the scheme's prefix.
    panel.selectType(Renamer::Date);
    EXPECT_EQ(renamer.prefix(), QStringLiteral("trip-"));
    EXPECT_EQ(renamer.dateFallbackTag(), 1);
    // Two pictures of the sample moment: the second gets the clash suffix.
    EXPECT_EQ(panel.examplesText(),
              QStringLiteral("e.g. trip-2005:02:14 15:32:47, trip-2005:02:14 15:32:47-1 ..."));
    panel.selectType(Renamer::Sequence);
    EXPECT_EQ(renamer.prefix(), QStringLiteral("trip-"));
    EXPECT_EQ(panel.examplesText(), QStringLiteral("e.g. trip-0, trip-1 ..."));

    // A fresh store: the file's date is the fallback on show.
    QSettings fresh(dir.filePath(QStringLiteral("fresh.ini")), QSettings::IniFormat);
    Renamer plain(fresh);
    RenamePanel plainPanel(plain);
    EXPECT_TRUE(plainPanel.findChild<QAbstractButton*>(QStringLiteral("fallbackFileDate"))->isChecked());
}
