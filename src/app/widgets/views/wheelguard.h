#pragma once

#include <QObject>
#include <QPointer>

class QAbstractScrollArea;
class QWidget;

namespace quillet {

// Keeps the mouse wheel from changing a control that does not have the focus
// (a combo box, spin box or slider passed over while scrolling): the turn
// scrolls the area around it instead, and no longer gives the control the
// focus. A control clicked or tabbed into takes the wheel as usual.
class WheelGuard : public QObject {
    Q_OBJECT
  public:
    // `scrolled` takes the turns the controls pass on; none: they are dropped.
    explicit WheelGuard(QAbstractScrollArea* scrolled, QObject* parent = nullptr);

    // Guards the control.
    void guard(QWidget* control);
    // Guards every combo box, spin box and slider inside `area`.
    void guardControlsIn(QWidget* area);

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QPointer<QAbstractScrollArea> m_scrolled;
};

} // namespace quillet
