#include "app/models/destinationlist.h"
#include "settings/userdefaults.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

class DestinationListTest : public ::testing::Test {
  protected:
    QTemporaryDir dir;
    QSettings store{dir.filePath("s.ini"), QSettings::IniFormat};
    UserDefaults defaults{store};
    DestinationList list{defaults};
};

TEST_F(DestinationListTest, RemovingNeverEmptiesTheListAndSelectsTheFirst) {
    defaults.setValue("Destinations", QStringList{"/a", "/b", "/c"});
    list.select(1);
    list.removeSelected();
    EXPECT_EQ(list.entries(), (QStringList{"/a", "/c"}));
    EXPECT_EQ(list.selectedIndex(), 0);
    list.removeSelected();
    list.removeSelected();
    // A one-entry list comes back from the store as a plain string.
    store.sync();
    EXPECT_EQ(list.entries(), QStringList{"/c"});
    EXPECT_EQ(list.selected(), "/c");
}

TEST_F(DestinationListTest, AddingKeepsTheSixMostRecentNewestFirst) {
    defaults.setValue("Destinations", QStringList{"/1"});
    for (const char* folder : {"/2", "/3", "/4", "/5", "/6", "/7"})
        list.add(folder);
    EXPECT_EQ(list.entries(), (QStringList{"/7", "/6", "/5", "/4", "/3", "/2"}));
    list.select(3);
    list.add("/7");
    EXPECT_EQ(list.entries(), (QStringList{"/7", "/7", "/6", "/5", "/4", "/3"}));
    EXPECT_EQ(list.selected(), "/7");
}

TEST_F(DestinationListTest, CancelledChooserAndStaleIndexSelectTheFirst) {
    defaults.setValue("Destinations", QStringList{"/a", "/b"});
    list.select(1);
    list.chooserCancelled();
    EXPECT_EQ(list.selected(), "/a");
    defaults.setInt("SelectedDestination", 9);
    EXPECT_EQ(list.selected(), "/a");
}

} // namespace
