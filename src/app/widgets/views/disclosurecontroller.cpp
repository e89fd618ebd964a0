#include "app/widgets/views/disclosurecontroller.h"

#include <QToolButton>
#include <QWidget>

namespace quillet {

DisclosureController::DisclosureController(QToolButton* button, QWidget* bottom, QObject* parent)
    : QObject(parent), m_button(button), m_bottom(bottom) {
    // Not a checkable button: a checked one is drawn pressed in, and the
    // arrow alone says the state.
    m_button->setAutoRaise(true);
    showHide(true);
    connect(m_button, &QToolButton::clicked, this, [this] {
        showHide(!m_expanded);
        Q_EMIT toggled(m_expanded);
    });
}

void DisclosureController::setExpanded(bool expanded) {
    showHide(expanded);
}

void DisclosureController::showHide(bool expanded) {
    m_expanded = expanded;
    m_button->setArrowType(expanded ? Qt::DownArrow : Qt::RightArrow);
    m_button->setToolTip(expanded ? tr("Hide details") : tr("Show details"));
    m_button->setAccessibleName(m_button->toolTip());
    // The box, and the column around it, take the new height at once.
    m_bottom->setVisible(expanded);
    if (QWidget* box = m_bottom->parentWidget())
        box->updateGeometry();
}

} // namespace quillet
