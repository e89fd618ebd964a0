#include "app/creatorcombobox.h"

#include "app/appcontroller.h"

#include <QSignalBlocker>
#include <QStandardItemModel>

namespace quillet {

CreatorComboBox::CreatorComboBox(AppController& controller, QWidget* parent)
    : CommandComboBox(parent), m_controller(controller) {
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
    const CreatorMenu& menu = m_controller.creators();
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
    CreatorMenu& menu = m_controller.creators();
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
