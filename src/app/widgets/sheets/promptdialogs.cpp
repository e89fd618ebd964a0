#include "app/widgets/sheets/promptdialogs.h"

#include <QDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {

namespace {

constexpr char CodeProperty[] = "promptCode";

QPushButton* addButton(QMessageBox* box, const QString& title, QMessageBox::ButtonRole role, int code) {
    if (title.isEmpty())
        return nullptr;
    QPushButton* button = box->addButton(title, role);
    button->setProperty(CodeProperty, code);
    return button;
}

} // namespace

QDialog* PromptDialogs::makePrompt(QWidget* window, const QString& title, const QString& message,
                                   const QString& defaultButton, const QString& alternateButton,
                                   const QString& otherButton) {
    auto* box = new QMessageBox(window);
    box->setObjectName(QStringLiteral("promptSheet"));
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(title);
    box->setText(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()));
    box->setInformativeText(message);
    box->setTextFormat(Qt::RichText);
    QPushButton* defaultPush = addButton(box, defaultButton, QMessageBox::AcceptRole, 1);
    QPushButton* alternatePush = addButton(box, alternateButton, QMessageBox::RejectRole, 0);
    addButton(box, otherButton, QMessageBox::DestructiveRole, -1);
    if (defaultPush)
        box->setDefaultButton(defaultPush);
    // Escape answers the alternate button and nothing else; a lone button
    // takes Escape too, as Qt does for a one-button box.
    if (alternatePush)
        box->setEscapeButton(alternatePush);
    else if (defaultPush && otherButton.isEmpty())
        box->setEscapeButton(defaultPush);
    return box;
}

SheetAnswer PromptDialogs::readPromptAnswer(QDialog* prompt, int) {
    auto* box = qobject_cast<QMessageBox*>(prompt);
    QAbstractButton* clicked = box ? box->clickedButton() : nullptr;
    // A box closed without a button (by the window manager) counts as the
    // alternate answer, the safe one of every question here.
    return SheetAnswer{clicked ? clicked->property(CodeProperty).toInt() : 0, {}};
}

QDialog* PromptDialogs::makeTimedMessage(QWidget* window, const QString& title, const QString& message) {
    auto* dialog = new QDialog(window);
    dialog->setObjectName(QStringLiteral("timedMessageSheet"));
    dialog->setWindowTitle(title);
    auto* layout = new QVBoxLayout(dialog);
    auto* heading = new QLabel(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()), dialog);
    auto* text = new QLabel(message, dialog);
    text->setWordWrap(true);
    layout->addWidget(heading);
    layout->addWidget(text);
    return dialog;
}

void PromptDialogs::wirePanelButtons(QDialog* panel) {
    const auto buttons = panel->findChildren<QPushButton*>();
    for (QPushButton* button : buttons) {
        const QVariant tag = button->property(TagProperty);
        if (!tag.isValid())
            continue;
        QObject::connect(button, &QPushButton::clicked, panel, [panel, tag] { panel->done(tag.toInt()); });
    }
}

} // namespace quillet
