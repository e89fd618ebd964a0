#pragma once

#include <QString>

#include <optional>

namespace quillet {

class UserDefaults;

// Every modal question the window's models ask. The window answers them with
// its sheets, one at a time, from any thread: a worker's call blocks until the
// answer comes through the main thread's event loop. Codes follow the sheets:
// 1 the default button, 0 the alternate one, -1 the other.
class Questions {
  public:
    virtual ~Questions() = default;

    // One "Okay" button.
    virtual void runMessageSheet(const QString& title, const QString& message) = 0;
    // Up to three buttons (an empty title leaves one out): returns 1, 0 or -1.
    virtual int runPromptSheet(const QString& title, const QString& message, const QString& defaultButton,
                               const QString& alternateButton, const QString& otherButton) = 0;
    // "Okay" and "Don't show this again", which turns the boolean setting
    // `key` off; shows nothing while the key is off.
    virtual void runHintSheet(const QString& title, const QString& message, UserDefaults& defaults,
                              const QString& key) = 0;
    // Whether to replace an existing output: BatchShell's ReplaceAnswer.
    virtual int confirmReplace(const QString& path) = 0;
    // The folder a batch writes into, made inside `destination`; none when
    // cancelled.
    virtual std::optional<QString> askFolderName(const QString& destination) = 0;
    // A desktop application (its .desktop file); none when cancelled.
    virtual std::optional<QString> chooseApplication(const QString& startFolder) = 0;
    // Answers the question on show, every waiting one and every later one
    // with `code`: for quitting.
    virtual void dismissAll(int code) = 0;
};

} // namespace quillet
