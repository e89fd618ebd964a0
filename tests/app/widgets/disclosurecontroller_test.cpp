#include "app/guitest.h"
#include "app/widgets/settings/settingscontrols.h"
#include "app/widgets/settings/settingspanel.h"
#include "app/widgets/views/disclosurecontroller.h"

#include <QToolButton>

using namespace quillet;
using namespace quillet::guitest;

namespace {

using DisclosureTest = GuiTest;

TEST_F(DisclosureTest, FoldingTheSizingOptionsShortensTheColumnAndIsRememberedAtTheNextStart) {
    auto panel = std::make_unique<SettingsPanel>(*controller, *models, sheets);
    panel->resize(420, 900);
    panel->show();
    auto* arrow = panel->findChild<QToolButton*>("scalingDisclosure");
    auto* options = panel->findChild<QWidget*>("scalingOptions");
    ASSERT_TRUE(arrow && options);
    EXPECT_TRUE(options->isVisible());
    const int unfolded = panel->controls()->sizeHint().height();

    arrow->click();
    EXPECT_FALSE(options->isVisible());
    // Shorter by the options' height at least (and the spacing above them).
    EXPECT_LE(panel->controls()->sizeHint().height(), unfolded - options->sizeHint().height());
    EXPECT_FALSE(models->defaults().boolValue("ScaleOptionsExpanded"));

    panel.reset();
    restart();
    SettingsPanel again(*controller, *models, sheets);
    again.show();
    EXPECT_FALSE(again.findChild<QWidget*>("scalingOptions")->isVisible());
    EXPECT_FALSE(again.controls()->scalingDisclosure()->isExpanded());
    // Unfolding brings the fields back with the mode's page.
    again.findChild<QToolButton*>("scalingDisclosure")->click();
    EXPECT_TRUE(again.findChild<QWidget*>("scalingOptions")->isVisible());
    EXPECT_TRUE(models->defaults().boolValue("ScaleOptionsExpanded"));
}

} // namespace
