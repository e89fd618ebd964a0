#pragma once

#include <QObject>

class QToolButton;
class QWidget;

namespace quillet {

// Folds the lower part of a box in and out with a disclosure arrow: folded,
// only the upper part shows and the box takes its height alone; unfolded,
// the lower part is back under it. The change is immediate, not animated.
class DisclosureController : public QObject {
    Q_OBJECT
  public:
    // `button` becomes the arrow; a click on it folds or unfolds `bottom`.
    DisclosureController(QToolButton* button, QWidget* bottom, QObject* parent = nullptr);

    bool isExpanded() const { return m_expanded; }
    // As a click on the arrow does, without the signal.
    void setExpanded(bool expanded);

  Q_SIGNALS:
    // The user folded or unfolded the box.
    void toggled(bool expanded);

  private:
    void showHide(bool expanded);

    QToolButton* m_button;
    QWidget* m_bottom;
    bool m_expanded = true;
};

} // namespace quillet
