#include "app/models/creatormenu.h"
#include "settings/userdefaults.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

QString writeDesktopFile(const QTemporaryDir& dir, const QString& name, const QString& body) {
    const QString path = dir.filePath(name);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(body.toUtf8());
    return path;
}

} // namespace

TEST(CreatorMenu, SixthCreatorPushesOutTheOldestAndSelectionFollows) {
    QTemporaryDir dir;
    QSettings store(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    UserDefaults defaults(store);
    CreatorMenu menu(defaults);
    for (int i = 1; i <= 6; ++i)
        menu.add(
            {QStringLiteral("App %1").arg(i), CreatorMenu::osTypeFromString(QStringLiteral("AP0%1").arg(i))});
    const QList<Creator> list = menu.creators();
    ASSERT_EQ(list.size(), 5);
    EXPECT_EQ(list.first().label, QStringLiteral("App 6"));
    EXPECT_EQ(list.last().label, QStringLiteral("App 2"));
    EXPECT_EQ(menu.selectedIndex(), 1);
    EXPECT_EQ(menu.currentCode(), CreatorMenu::osTypeFromString(QStringLiteral("AP06")));

    // The store keeps list and selection across a new menu.
    store.sync();
    QSettings again(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    UserDefaults reread(again);
    CreatorMenu reopened(reread);
    reopened.select(3);
    EXPECT_EQ(reopened.currentCode(), CreatorMenu::osTypeFromString(QStringLiteral("AP04")));
    EXPECT_TRUE(reopened.canRemove());
    reopened.removeSelected();
    EXPECT_EQ(reopened.creators().size(), 4);
    EXPECT_EQ(reopened.selectedIndex(), 0);
    EXPECT_EQ(reopened.currentCode(), 0u);
    EXPECT_FALSE(reopened.canRemove());
    reopened.select(9); // past the list: "None"
    EXPECT_EQ(reopened.selectedIndex(), 0);
}

TEST(CreatorMenu, DesktopApplicationsGiveCreatorsOnlyWithAUsableCode) {
    QTemporaryDir dir;
    const QString good = writeDesktopFile(dir, QStringLiteral("viewer.desktop"),
                                          QStringLiteral("[Desktop Entry]\nType=Application\nName=Viewer\n"
                                                         "Name[de]=Betrachter\nX-Quillet-Creator=prvw\n"
                                                         "[Desktop Action New]\nName=Other\n"));
    const auto creator = CreatorMenu::creatorWithPath(good);
    ASSERT_TRUE(creator);
    EXPECT_EQ(creator->label, QStringLiteral("Viewer"));
    EXPECT_EQ(creator->code, 0x70727677u); // 'prvw'

    for (const QString& body :
         {QStringLiteral("[Desktop Entry]\nType=Application\nName=A\nX-Quillet-Creator=????\n"),
          QStringLiteral("[Desktop Entry]\nType=Application\nName=A\n"),
          QStringLiteral("[Desktop Entry]\nType=Link\nName=A\nX-Quillet-Creator=abcd\n"),
          QStringLiteral("[Desktop Entry]\nType=Application\nX-Quillet-Creator=abc\n"),
          QStringLiteral("[Other]\nType=Application\nX-Quillet-Creator=abcd\n")})
        EXPECT_FALSE(CreatorMenu::creatorWithPath(writeDesktopFile(dir, QStringLiteral("x.desktop"), body)))
            << body.toStdString();
    EXPECT_EQ(CreatorMenu::applicationName(dir.filePath(QStringLiteral("x.desktop"))), QStringLiteral("x"));
    EXPECT_FALSE(CreatorMenu::creatorWithPath(dir.filePath(QStringLiteral("missing.desktop"))));
}
