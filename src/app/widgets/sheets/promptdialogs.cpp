#include "app/widgets/sheets/promptdialogs.h"

#include <QDialog>
#include <QEvent>
#include <QGridLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace quillet {

namespace {

constexpr char CodeProperty[] = "promptCode";
constexpr char ClosedProperty[] = "closedByWindow";

// A close event reaches a dialog only from its title bar (or the application
// closing its windows): buttons, keys and Sheets end dialogs without one. The
// mark holds while the close is handled, which is when a dialog that accepts
// it finishes; one that refuses it (no Escape button) is not left marked.
class CloseWatcher : public QObject {
  public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Close) {
            watched->setProperty(ClosedProperty, true);
            QTimer::singleShot(0, watched, [watched] { watched->setProperty(ClosedProperty, false); });
        }
        return false;
    }
};

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
    // QMessageBox fixes its own size from its layout's minimum when shown, so
    // the least width goes into the layout, as a spacer under everything.
    if (auto* grid = qobject_cast<QGridLayout*>(box->layout()))
        grid->addItem(new QSpacerItem(MinimumWidth, 0, QSizePolicy::Minimum, QSizePolicy::Fixed),
                      grid->rowCount(), 0, 1, grid->columnCount());
    watchWindowClose(box);
    return box;
}

SheetAnswer PromptDialogs::readPromptAnswer(QDialog* prompt, int) {
    auto* box = qobject_cast<QMessageBox*>(prompt);
    if (closedByWindow(prompt))
        return SheetAnswer{0, {}, true};
    QAbstractButton* clicked = box ? box->clickedButton() : nullptr;
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
    dialog->setMinimumWidth(MinimumWidth);
    return dialog;
}

void PromptDialogs::watchWindowClose(QDialog* dialog) {
    dialog->installEventFilter(new CloseWatcher(dialog));
}

bool PromptDialogs::closedByWindow(const QDialog* dialog) {
    return dialog->property(ClosedProperty).toBool();
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
