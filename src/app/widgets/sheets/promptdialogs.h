#pragma once

#include "app/widgets/sheets/sheetrequest.h"

#include <QString>

class QDialog;
class QWidget;

namespace quillet {

// The dialogs behind Sheets: the standard alert with up to three buttons, the
// buttonless timed message, and the wiring of an own panel's buttons.
namespace PromptDialogs {

// The property that gives a panel's push button its return code.
inline constexpr char TagProperty[] = "sheetTag";

// The least width of a message or a prompt, so that its text wraps as an
// alert's does instead of standing in a narrow column.
inline constexpr int MinimumWidth = 420;

// Buttons from right to left: default (code 1, Return), alternate (code 0,
// Escape), other (code -1); an empty title leaves that button out.
QDialog* makePrompt(QWidget* window, const QString& title, const QString& message,
                    const QString& defaultButton, const QString& alternateButton, const QString& otherButton);
// A prompt closed from its title bar reads as the alternate answer (the safe
// one of every question here), marked closed; Escape is a press of the
// alternate button itself.
SheetAnswer readPromptAnswer(QDialog* prompt, int result);

QDialog* makeTimedMessage(QWidget* window, const QString& title, const QString& message);

// Makes every push button of the panel that carries a tag end the panel with
// that tag; buttons without one keep whatever they do.
void wirePanelButtons(QDialog* panel);

// Notes when the dialog is closed from its title bar, for closedByWindow.
void watchWindowClose(QDialog* dialog);
bool closedByWindow(const QDialog* dialog);

} // namespace PromptDialogs

} // namespace quillet
