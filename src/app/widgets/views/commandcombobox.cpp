#include "app/widgets/views/commandcombobox.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace quillet {

namespace {

constexpr int CommandRole = Qt::UserRole + 100;

} // namespace

CommandComboBox::CommandComboBox(QWidget* parent) : QComboBox(parent) {}

void CommandComboBox::addCommand(const QString& title) {
    addItem(title);
    setItemData(count() - 1, true, CommandRole);
}

bool CommandComboBox::isCommand(int index) const {
    return itemData(index, CommandRole).toBool();
}

bool CommandComboBox::isEntry(int index) const {
    // The separator before the commands is a disabled item.
    return index >= 0 && index < count() && !isCommand(index) &&
           (model()->flags(model()->index(index, modelColumn(), rootModelIndex())) & Qt::ItemIsEnabled);
}

void CommandComboBox::stepEntries(int steps) {
    const int direction = steps < 0 ? -1 : 1;
    int target = currentIndex();
    for (int i = currentIndex() + direction; steps != 0 && i >= 0 && i < count(); i += direction) {
        if (!isEntry(i))
            continue;
        target = i;
        steps -= direction;
    }
    activateEntry(target);
}

void CommandComboBox::activateEntry(int index) {
    if (index == currentIndex() || !isEntry(index))
        return;
    setCurrentIndex(index);
    Q_EMIT activated(index);
}

void CommandComboBox::wheelEvent(QWheelEvent* event) {
    const int delta = event->angleDelta().y();
    if (delta == 0) {
        event->ignore();
        return;
    }
    stepEntries(delta > 0 ? -1 : 1);
    event->accept();
}

void CommandComboBox::keyPressEvent(QKeyEvent* event) {
    const bool plain = !(event->modifiers() & (Qt::AltModifier | Qt::ControlModifier | Qt::MetaModifier));
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Left:
        if (plain) {
            stepEntries(-1);
            return;
        }
        break;
    case Qt::Key_Down:
    case Qt::Key_Right:
        if (plain) {
            stepEntries(1);
            return;
        }
        break;
    case Qt::Key_PageUp:
    case Qt::Key_Home:
        stepEntries(-count());
        return;
    case Qt::Key_PageDown:
    case Qt::Key_End:
        stepEntries(count());
        return;
    default:
        break;
    }
    // Typing picks the next entry that starts with the text, never a command.
    const QString typed = event->text();
    if (plain && !typed.isEmpty() && typed.at(0).isPrint() && !typed.at(0).isSpace()) {
        for (int step = 1; step < count(); ++step) {
            const int i = (currentIndex() + step) % count();
            if (isEntry(i) && itemText(i).startsWith(typed, Qt::CaseInsensitive)) {
                activateEntry(i);
                break;
            }
        }
        event->accept();
        return;
    }
    QComboBox::keyPressEvent(event);
}

} // namespace quillet
