#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace quillet {

class InplaceModel;

// The sheet on the in-place panel while a run goes: the file in hand, one
// step of the bar per file, and Cancel, which stops the run before its next
// file.
class InplaceProgressSheet : public QDialog {
    Q_OBJECT
  public:
    InplaceProgressSheet(InplaceModel& model, QWidget* parent = nullptr);

  protected:
    // Escape and the title bar's close must not hide the sheet of a running run.
    void reject() override {}

  private:
    QLabel* m_status;
    QProgressBar* m_bar;
    QPushButton* m_cancel;
};

} // namespace quillet
