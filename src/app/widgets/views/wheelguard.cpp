#include "app/widgets/views/wheelguard.h"

#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QScrollBar>
#include <QWheelEvent>

namespace quillet {

WheelGuard::WheelGuard(QAbstractScrollArea* scrolled, QObject* parent)
    : QObject(parent), m_scrolled(scrolled) {}

void WheelGuard::guard(QWidget* control) {
    // Qt's default WheelFocus would hand the control the focus on the very
    // turn that should pass it by.
    control->setFocusPolicy(Qt::StrongFocus);
    control->installEventFilter(this);
}

void WheelGuard::guardControlsIn(QWidget* area) {
    const auto widgets = area->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        const bool slider = qobject_cast<QAbstractSlider*>(widget) && !qobject_cast<QScrollBar*>(widget);
        if (slider || qobject_cast<QComboBox*>(widget) || qobject_cast<QAbstractSpinBox*>(widget))
            guard(widget);
    }
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Wheel)
        return false;
    auto* control = static_cast<QWidget*>(watched);
    if (control->hasFocus())
        return false;
    // Handed straight to the scroll area, which also serves turns sent by
    // hand, which Qt does not pass on to parents.
    if (m_scrolled)
        QCoreApplication::sendEvent(m_scrolled->viewport(), event);
    else
        event->ignore();
    return true;
}

} // namespace quillet
