#include "app/models/inspectorcolumnlayout.h"
#include "app/models/inspectorcolumns.h"
#include "settings/userdefaults.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillet;

namespace {

int column(const char* identifier) {
    return InspectorColumns::indexOf(QLatin1String(identifier));
}

class InspectorColumnLayoutTest : public ::testing::Test {
  protected:
    QTemporaryDir dir;
    QSettings store{dir.filePath("s.ini"), QSettings::IniFormat};
    UserDefaults defaults{store};
};

TEST_F(InspectorColumnLayoutTest, AColumnShownComesInAtTheRightEndAndTheLayoutComesBack) {
    InspectorColumnLayout layout(defaults);
    ASSERT_TRUE(layout.isShown(column("thumbnailedName")));
    ASSERT_FALSE(layout.isShown(column("iso")) && layout.isShown(column("distance")));
    layout.setShown(column("distance"), true);
    EXPECT_EQ(layout.shown().last().column, column("distance"));
    layout.setWidth(column("distance"), 123);
    layout.setShown(column("kind"), false);
    layout.setOrder({column("distance"), column("thumbnailedName")});
    const QList<InspectorColumnLayout::Shown> before = layout.shown();
    EXPECT_EQ(before[0], (InspectorColumnLayout::Shown{column("distance"), 123}));
    EXPECT_EQ(before[1].column, column("thumbnailedName"));

    InspectorColumnLayout again(defaults);
    EXPECT_EQ(again.shown(), before);
    EXPECT_FALSE(again.isShown(column("kind")));
    // Hidden and shown again: the width it had, at the right end.
    again.setShown(column("distance"), false);
    again.setShown(column("distance"), true);
    EXPECT_EQ(again.shown().last(), (InspectorColumnLayout::Shown{column("distance"), 123}));
}

TEST_F(InspectorColumnLayoutTest, AStoredLayoutNamingNoKnownColumnGivesTheFirstLayout) {
    const QList<InspectorColumnLayout::Shown> first = InspectorColumnLayout(defaults).shown();
    defaults.setValue(InspectorColumnLayout::Key, QStringList{"gone:100", "nonsense"});
    EXPECT_EQ(InspectorColumnLayout(defaults).shown(), first);
    // Duplicates and bad widths are dropped, the rest kept.
    defaults.setValue(InspectorColumnLayout::Key, QStringList{"iso:x", "iso:300", "gone:5", "name:2"});
    const QList<InspectorColumnLayout::Shown> read = InspectorColumnLayout(defaults).shown();
    ASSERT_EQ(read.size(), 2);
    EXPECT_EQ(read[0].column, column("iso"));
    EXPECT_EQ(read[0].width, InspectorColumns::all()[size_t(column("iso"))].width);
    EXPECT_EQ(read[1].column, column("name"));
}

TEST(InspectorColumns, EveryColumnButTheOutputNameHasTheRecordsComparison) {
    for (const InspectorColumns::Column& c : InspectorColumns::all())
        EXPECT_EQ(InspectorColumns::comparison(c.identifier) == nullptr,
                  c.identifier == QLatin1String(InspectorColumns::OutputFilename))
            << c.identifier.toStdString();
    EXPECT_EQ(InspectorColumns::comparison("focalLength35"), &KVImageInfo::compareFocallength35);
    EXPECT_EQ(InspectorColumns::comparison("thumbnailedName"), &KVImageInfo::compareThumbnailedname);
}

} // namespace
