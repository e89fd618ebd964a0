#include "app/widgets/presets/presetnamesheet.h"

#include "app/widgets/sheets/promptdialogs.h"
#include "app/widgets/sheets/sheets.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quillet {

PresetNameSheet::PresetNameSheet(Acceptable acceptable, QWidget* parent)
    : QDialog(parent), m_acceptable(std::move(acceptable)), m_name(new QLineEdit(this)) {
    setObjectName(QStringLiteral("presetNameSheet"));
    setWindowTitle(tr("New Preset"));
    m_name->setObjectName(QStringLiteral("presetNameField"));
    m_name->setMinimumWidth(280);
    auto* note = new QLabel(tr("The current settings are kept under this name."), this);
    note->setForegroundRole(QPalette::PlaceholderText);
    auto* buttons = new QDialogButtonBox(this);
    QPushButton* cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    m_ok = buttons->addButton(tr("Add"), QDialogButtonBox::AcceptRole);
    m_ok->setObjectName(QStringLiteral("presetNameOk"));
    cancel->setProperty(PromptDialogs::TagProperty, 0);
    m_ok->setProperty(PromptDialogs::TagProperty, 1);
    m_ok->setDefault(true);
    m_ok->setEnabled(false);
    auto* layout = new QFormLayout(this);
    layout->addRow(tr("Preset name:"), m_name);
    layout->addRow(QString(), note);
    layout->addRow(buttons);
    PromptDialogs::wirePanelButtons(this);
    connect(m_name, &QLineEdit::textChanged, this,
            [this](const QString& typed) { m_ok->setEnabled(m_acceptable(typed)); });
}

QString PresetNameSheet::name() const {
    return m_name->text();
}

std::optional<QString> PresetNameSheet::ask(Sheets& sheets, const Acceptable& acceptable) {
    SheetRequest request;
    request.title = tr("New Preset");
    request.makeDialog = [acceptable](QWidget* window) { return new PresetNameSheet(acceptable, window); };
    request.readAnswer = [](QDialog* dialog, int result) {
        return SheetAnswer{result == 1 ? 1 : 0, static_cast<PresetNameSheet*>(dialog)->name()};
    };
    const SheetAnswer answer = sheets.run(std::move(request));
    if (answer.code != 1)
        return std::nullopt;
    return answer.text;
}

} // namespace quillet
