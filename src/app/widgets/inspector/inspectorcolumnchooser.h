#pragma once

#include <QDialog>

class QCheckBox;

namespace quillet {

class InspectorColumnLayout;

// The inspector's column chooser: one box per column, in the columns' own
// order. Each click shows or hides its column at once; Done closes.
class InspectorColumnChooser : public QDialog {
    Q_OBJECT
  public:
    InspectorColumnChooser(InspectorColumnLayout& layout, QWidget* parent = nullptr);

    // Ticks the boxes of the columns shown now.
    void updateBoxes();
    QCheckBox* box(int column) const { return m_boxes.value(column); }

  Q_SIGNALS:
    void columnToggled(int column, bool shown);

  private:
    InspectorColumnLayout& m_layout;
    QList<QCheckBox*> m_boxes;
};

} // namespace quillet
