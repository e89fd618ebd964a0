#include "app/widgets/main/creatorcombobox.h"

#include "app/models/appcontroller.h"
#include "app/models/creatormenu.h"

#include <QSignalBlocker>
#include <QStandardItemModel>

namespace quillet {

CreatorComboBox::CreatorComboBox(CreatorMenu& menu, AppController& controller, QWidget* parent)
    : CommandComboBox(parent), m_menu(menu), m_controller(controller) {
    setObjectName(QStringLiteral("creatorMenu"));
    setAccessibleName(tr("Creator"));
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    rebuild();
    connect(this, &QComboBox::activated, this, &CreatorComboBox::chosen);
    connect(&controller, &AppController::creatorsChanged, this, &CreatorComboBox::rebuild);
}

void CreatorComboBox::rebuild() {
    const QSignalBlocker block(this);
    const CreatorMenu& menu = m_menu;
    clear();
    addItem(tr("None"));
    for (const Creator& creator : menu.creators())
        addItem(creator.label);
    insertSeparator(count());
    addCommand(tr("Remove Selected Entry"));
    addCommand(tr("Choose an Application ..."));
    if (auto* items = qobject_cast<QStandardItemModel*>(model()))
        items->item(count() - 2)->setEnabled(menu.canRemove());
    setCurrentIndex(menu.selectedIndex());
}

void CreatorComboBox::chosen(int index) {
    CreatorMenu& menu = m_menu;
    const int count = int(menu.creators().size());
    if (index <= count) {
        menu.select(index);
    } else if (index == count + 2) {
        menu.removeSelected();
    } else if (index == count + 3) {
        // Rebuilds the menu itself once answered.
        m_controller.chooseCreator();
        return;
    }
    rebuild();
}

} // namespace quillet
