#include "app/fileoptions.h"
#include "settings/userdefaults.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

TEST(FileOptions, ModificationDateFollowsCreationDateAndKeepsItsStoredValue) {
    QTemporaryDir dir;
    QSettings store(dir.filePath(QStringLiteral("s.ini")), QSettings::IniFormat);
    UserDefaults defaults(store);
    FileOptions options(defaults);
    // Registered defaults: copy and hide on, the rest off.
    EXPECT_TRUE(options.isChecked(FileOptions::CopyNonImageFiles));
    EXPECT_TRUE(options.isChecked(FileOptions::HideExtension));
    EXPECT_FALSE(options.isEnabled(FileOptions::SetModificationDate));

    options.toggle(FileOptions::SetCreationDate, true);
    options.toggle(FileOptions::SetModificationDate, true);
    EXPECT_TRUE(options.isChecked(FileOptions::SetModificationDate));
    options.toggle(FileOptions::SetCreationDate, false);
    EXPECT_FALSE(options.isEnabled(FileOptions::SetModificationDate));
    EXPECT_FALSE(options.isChecked(FileOptions::SetModificationDate));
    options.toggle(FileOptions::SetModificationDate, false); // a disabled box takes no clicks
    options.toggle(FileOptions::SetCreationDate, true);
    EXPECT_TRUE(options.isChecked(FileOptions::SetModificationDate));
    EXPECT_TRUE(store.value(QStringLiteral("SetModificationDate")).toBool());
}
