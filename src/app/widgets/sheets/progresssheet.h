#pragma once

#include <QDialog>

class QLabel;
class QProgressBar;
class QPushButton;

namespace quillet {

class AppController;

// The sheet shown while a batch runs: the file in hand, the bar, and Pause /
// Resume and Cancel, which go to the controller.
class ProgressSheet : public QDialog {
    Q_OBJECT
  public:
    ProgressSheet(AppController& controller, QWidget* parent = nullptr);

  protected:
    // Escape must not hide the sheet of a running batch.
    void reject() override {}

  private:
    QLabel* m_file;
    QProgressBar* m_bar;
    QPushButton* m_pause;
    QPushButton* m_cancel;
};

} // namespace quillet
