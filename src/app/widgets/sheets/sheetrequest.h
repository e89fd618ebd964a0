#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>

class QDialog;

namespace quillet {

// What a modal question ended with: the return code (1 default button,
// 0 alternate, -1 other, or a panel button's tag) and, for panels with a text
// field, the text typed.
struct SheetAnswer {
    int code = 0;
    QString text;
    // Closed from its title bar (the window manager's close button) rather
    // than answered with a button or a key; `code` then holds the safe answer.
    bool closed = false;
};

// One modal question. The dialog is built on the main thread when the
// question's turn comes, so a worker thread can describe it without touching
// widgets.
struct SheetRequest {
    QString title;
    QString message;
    // Makes the dialog as a child of the given window.
    std::function<QDialog*(QWidget* window)> makeDialog;
    // Reads the answer from the finished dialog and its QDialog result.
    std::function<SheetAnswer(QDialog* dialog, int result)> readAnswer;
    // Closes the dialog by itself after this many seconds (0: never).
    double timeout = 0;
    // The window the dialog attaches to, when not the main window (a
    // question asked from the watermark window sits on that window).
    QPointer<QWidget> window;
    // The dialog outlives the question (a panel made once and shown again):
    // it is hidden when answered, not deleted.
    bool keepDialog = false;
};

} // namespace quillet
