#pragma once

#include <QSpinBox>

namespace quillet {

// A number field with stepper arrows whose steps land on multiples of the
// increment: with increment 5, up from 7 gives 10 and down gives 5. The wheel
// moves by one whatever the increment, for fine adjustment. A value typed
// into the field moves the stepper and is applied at once (valueChanged per
// keystroke), as the window's number fields have always done.
class KVStepper : public QSpinBox {
    Q_OBJECT

  public:
    explicit KVStepper(QWidget* parent = nullptr);

    void stepBy(int steps) override;

  protected:
    void wheelEvent(QWheelEvent* event) override;
};

} // namespace quillet
