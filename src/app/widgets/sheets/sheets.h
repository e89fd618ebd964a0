#pragma once

#include "app/models/questions.h"
#include "app/models/queuedcalls.h"
#include "app/widgets/sheets/sheetrequest.h"

#include <QDialog>
#include <QObject>
#include <QPointer>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

class QAction;

namespace quillet {

class UserDefaults;

// Every modal question of the application: window-modal dialogs on the main
// window that block their caller until answered, from the main thread (which
// keeps the event loop running meanwhile) or from a worker thread (which
// waits). Questions are shown one at a time in the order asked; one asked
// while another is up waits its turn instead of stacking on top of it.
class Sheets : public QObject, public Questions {
    Q_OBJECT
  public:
    explicit Sheets(QObject* parent = nullptr);
    ~Sheets() override;

    // The window the dialogs attach to (none: they stand alone).
    void setWindow(QWidget* window) { m_window = window; }
    QWidget* window() const { return m_window; }
    // The window's Quit, which also works from every dialog shown here: a
    // question keeps the window's own shortcuts from it.
    void setQuitAction(QAction* quit) { m_quit = quit; }

    void runMessageSheet(const QString& title, const QString& message) override;
    // No button; goes away by itself after `seconds`.
    void runMessageSheet(const QString& title, const QString& message, double seconds);
    // One "Okay" button, on top of another window than the main one.
    void runMessageSheet(QWidget* window, const QString& title, const QString& message);
    // Up to three buttons (an empty title leaves one out): returns 1, 0 or -1.
    // Return presses the default button, Escape the alternate one.
    int runPromptSheet(const QString& title, const QString& message, const QString& defaultButton,
                       const QString& alternateButton, const QString& otherButton) override;
    // A hint with "Okay" and "Don't show this again"; the latter (or Escape)
    // turns the boolean setting `key` off, closing the hint from its title bar
    // does not. Shows nothing while the key is off.
    void runHintSheet(const QString& title, const QString& message, UserDefaults& defaults,
                      const QString& key) override;
    int confirmReplace(const QString& path) override;
    std::optional<QString> askFolderName(const QString& destination) override;
    std::optional<QString> chooseApplication(const QString& startFolder) override;
    // Any question; blocks until answered.
    SheetAnswer run(SheetRequest request);

    // A sheet that blocks nothing, such as the progress sheet: shown at the
    // top of the window, beside the questions, not queued with them. It is not
    // modal, so the window manager's close and Quit still reach the window;
    // questions asked meanwhile come up below it, leaving it in sight.
    void beginSheet(QDialog* sheet);
    void endSheet();

    // Answers the question on show and every waiting one with `code`, and
    // every later one at once: for quitting.
    void dismissAll(int code) override;

    bool isSheetUp() const;
    int waitingCount() const;
    QDialog* currentDialog() const { return m_dialog; }

    // Test hooks. The next questions to come up are answered with these, in
    // order, instead of being shown; then the hook, when set, may answer.
    void setNextAnswer(int code, const QString& text = {});
    void setAnswerHook(std::function<std::optional<SheetAnswer>(const SheetRequest&)> hook);

  Q_SIGNALS:
    // A question comes up (main thread), answered by a hook or shown.
    void sheetShown(const QString& title, const QString& message);
    void answered();

  private:
    struct Pending;
    void showNext();
    // Where a dialog goes: below the sheet on show, else where Qt puts it.
    void place(QDialog* dialog) const;
    void finish(const std::shared_ptr<Pending>& pending, const SheetAnswer& answer);
    std::optional<SheetAnswer> testAnswer(const SheetRequest& request);

    QPointer<QWidget> m_window;
    QPointer<QDialog> m_dialog;
    QPointer<QDialog> m_sheet;
    QPointer<QAction> m_quit;
    mutable std::mutex m_mutex;
    std::condition_variable m_answeredCondition;
    std::deque<std::shared_ptr<Pending>> m_waiting;
    std::shared_ptr<Pending> m_current;
    std::optional<int> m_dismissCode;
    std::deque<SheetAnswer> m_nextAnswers;
    std::function<std::optional<SheetAnswer>(const SheetRequest&)> m_hook;
    QueuedCalls m_calls{this};
};

} // namespace quillet
