#pragma once

#include "app/queuedcalls.h"
#include "app/sheetrequest.h"

#include <QDialog>
#include <QObject>
#include <QPointer>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

namespace quillet {

class UserDefaults;

// Every modal question of the application: window-modal dialogs on the main
// window that block their caller until answered, from the main thread (which
// keeps the event loop running meanwhile) or from a worker thread (which
// waits). Questions are shown one at a time in the order asked; one asked
// while another is up waits its turn instead of stacking on top of it.
class Sheets : public QObject {
    Q_OBJECT
  public:
    explicit Sheets(QObject* parent = nullptr);
    ~Sheets() override;

    // The window the dialogs attach to (none: they stand alone).
    void setWindow(QWidget* window) { m_window = window; }
    QWidget* window() const { return m_window; }

    // One "Okay" button.
    void runMessageSheet(const QString& title, const QString& message);
    // No button; goes away by itself after `seconds`.
    void runMessageSheet(const QString& title, const QString& message, double seconds);
    // Up to three buttons (an empty title leaves one out): returns 1, 0 or -1.
    // Return presses the default button, Escape the alternate one.
    int runPromptSheet(const QString& title, const QString& message, const QString& defaultButton,
                       const QString& alternateButton, const QString& otherButton);
    // A hint with "Okay" and "Don't show this again"; the latter turns the
    // boolean setting `key` off. Shows nothing while the key is off.
    void runHintSheet(const QString& title, const QString& message, UserDefaults& defaults,
                      const QString& key);
    // Any question; blocks until answered.
    SheetAnswer run(SheetRequest request);

    // A sheet that blocks nothing, such as the progress sheet: shown beside the
    // questions, not queued with them.
    void beginSheet(QDialog* sheet);
    void endSheet();

    // Answers the question on show and every waiting one with `code`, and
    // every later one at once: for quitting.
    void dismissAll(int code);

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
    void finish(const std::shared_ptr<Pending>& pending, const SheetAnswer& answer);
    std::optional<SheetAnswer> testAnswer(const SheetRequest& request);

    QPointer<QWidget> m_window;
    QPointer<QDialog> m_dialog;
    QPointer<QDialog> m_sheet;
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
