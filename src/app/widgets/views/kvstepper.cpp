#include "app/widgets/views/kvstepper.h"

#include "app/models/stepperlogic.h"

#include <QWheelEvent>

namespace quillet {

KVStepper::KVStepper(QWidget* parent) : QSpinBox(parent) {
    setKeyboardTracking(true);
    setAccelerated(false);
}

void KVStepper::stepBy(int steps) {
    const int before = value();
    QSpinBox::stepBy(steps);
    setValue(StepperLogic::snapClick(before, value(), singleStep()));
}

void KVStepper::wheelEvent(QWheelEvent* event) {
    if (!isEnabled()) {
        QSpinBox::wheelEvent(event);
        return;
    }
    const int delta = event->angleDelta().y();
    if (delta != 0)
        setValue(StepperLogic::wheel(value(), delta));
    event->accept();
}

} // namespace quillet
