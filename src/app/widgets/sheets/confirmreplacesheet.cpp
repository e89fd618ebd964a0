#include "app/widgets/sheets/confirmreplacesheet.h"

#include "app/widgets/sheets/promptdialogs.h"
#include "app/widgets/sheets/sheets.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {

ConfirmReplaceSheet::ConfirmReplaceSheet(const QString& path, QWidget* parent)
    : QDialog(parent), m_applyToAll(new QCheckBox(tr("Apply to all files in this folder"), this)) {
    setObjectName(QStringLiteral("confirmReplaceSheet"));
    setWindowTitle(tr("File Exists"));
    auto* layout = new QVBoxLayout(this);
    auto* text = new QLabel(tr("<b>'%1' already exists.</b><br>Do you want to replace it?")
                                .arg(QFileInfo(path).fileName().toHtmlEscaped()),
                            this);
    text->setObjectName(QStringLiteral("confirmReplaceText"));
    text->setWordWrap(true);
    setMinimumWidth(PromptDialogs::MinimumWidth);
    m_applyToAll->setObjectName(QStringLiteral("applyToAllBox"));
    auto* buttons = new QDialogButtonBox(this);
    QPushButton* skip = buttons->addButton(tr("Skip"), QDialogButtonBox::RejectRole);
    QPushButton* replace = buttons->addButton(tr("Replace"), QDialogButtonBox::AcceptRole);
    skip->setObjectName(QStringLiteral("skipButton"));
    replace->setObjectName(QStringLiteral("replaceButton"));
    skip->setProperty(PromptDialogs::TagProperty, 0);
    replace->setProperty(PromptDialogs::TagProperty, 1);
    replace->setDefault(true);
    layout->addWidget(text);
    layout->addWidget(m_applyToAll);
    layout->addWidget(buttons);
    PromptDialogs::wirePanelButtons(this);
}

bool ConfirmReplaceSheet::appliesToAll() const {
    return m_applyToAll->isChecked();
}

int ConfirmReplaceSheet::ask(Sheets& sheets, const QString& path) {
    SheetRequest request;
    request.title = tr("File Exists");
    request.message = path;
    request.makeDialog = [path](QWidget* window) { return new ConfirmReplaceSheet(path, window); };
    request.readAnswer = [](QDialog* dialog, int result) {
        // Escape rejects the dialog with 0, which is Skip.
        const bool all = static_cast<ConfirmReplaceSheet*>(dialog)->appliesToAll();
        return SheetAnswer{(result == 1 ? 1 : 0) + (all ? 2 : 0), {}};
    };
    return sheets.run(std::move(request)).code;
}

} // namespace quillet
