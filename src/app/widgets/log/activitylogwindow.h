#pragma once

#include <QTimer>
#include <QWidget>

class QPlainTextEdit;

namespace quillet {

class ActivityLogModel;
class UserDefaults;

// The activity log window: the model's lines in the fixed-pitch font,
// warnings in red. Lines are added in batches once per frame, so a batch that
// writes thousands of lines a second costs one layout per frame. Its frame
// and whether it is open are kept in the settings store.
class ActivityLogWindow : public QWidget {
    Q_OBJECT
  public:
    ActivityLogWindow(ActivityLogModel& model, UserDefaults& defaults, QWidget* parent = nullptr);

    QPlainTextEdit* view() const { return m_view; }
    // Shows or hides the window and remembers which.
    void setOpen(bool open);
    void toggle() { setOpen(!isVisible()); }
    // Adds the lines not shown yet, at most one frame's share; true when more wait.
    bool flush();
    qsizetype shownCount() const { return m_shown; }

    // Lines added per frame at most, so one frame never stalls on a backlog.
    static constexpr int MaxLinesPerFrame = 4000;

  Q_SIGNALS:
    void openChanged(bool open);

  protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    void linesAdded();
    void modelCleared();
    void saveFrame();
    void placeBesideParent();

    ActivityLogModel& m_model;
    UserDefaults& m_defaults;
    QPlainTextEdit* m_view;
    QTimer m_frameTimer;
    qsizetype m_shown = 0;
    bool m_restoring = false;
    bool m_placed = false;
};

} // namespace quillet
