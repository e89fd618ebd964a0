#include "app/models/fileoptions.h"
#include "app/widgets/main/fileoptionsbox.h"
#include "settings/userdefaults.h"

#include <QCheckBox>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

TEST(FileOptionsTest, ModificationDateFollowsCreationDateButKeepsItsStoredValue) {
    QTemporaryDir dir;
    QSettings store(dir.filePath("s.ini"), QSettings::IniFormat);
    UserDefaults defaults(store);
    FileOptionsBox box(defaults);
    auto* creation = box.findChild<QCheckBox*>("fileOption1");
    auto* modification = box.findChild<QCheckBox*>("fileOption2");
    EXPECT_FALSE(modification->isEnabled());

    creation->setChecked(true);
    ASSERT_TRUE(modification->isEnabled());
    modification->setChecked(true);
    creation->setChecked(false);
    EXPECT_FALSE(modification->isEnabled());
    EXPECT_FALSE(modification->isChecked());
    EXPECT_TRUE(defaults.boolValue("SetModificationDate"));
    // A disabled box cannot change the stored value.
    FileOptions(defaults).set(FileOptions::SetModificationDate, false);
    EXPECT_TRUE(defaults.boolValue("SetModificationDate"));

    creation->setChecked(true);
    EXPECT_TRUE(modification->isChecked());
    EXPECT_EQ(FileOptions::key(FileOptions::CustomIcon), "CustomIcon");
    box.findChild<QCheckBox*>("fileOption4")->setChecked(true);
    EXPECT_TRUE(defaults.boolValue("CustomIcon"));
}

} // namespace
