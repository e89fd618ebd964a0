#include "app/widgets/sheets/foldernamesheet.h"

#include "app/widgets/sheets/promptdialogs.h"
#include "app/widgets/sheets/sheets.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace quillet {

FolderNameSheet::FolderNameSheet(const QString& destination, QWidget* parent)
    : QDialog(parent), m_destination(destination), m_name(new QLineEdit(this)), m_path(new QLabel(this)) {
    setObjectName(QStringLiteral("folderNameSheet"));
    setWindowTitle(tr("New Output Folder"));
    m_name->setObjectName(QStringLiteral("folderNameField"));
    m_path->setObjectName(QStringLiteral("folderPathLabel"));
    m_path->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_path->setMinimumWidth(360);
    auto* buttons = new QDialogButtonBox(this);
    QPushButton* cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    QPushButton* ok = buttons->addButton(tr("Process"), QDialogButtonBox::AcceptRole);
    cancel->setProperty(PromptDialogs::TagProperty, 0);
    ok->setProperty(PromptDialogs::TagProperty, 1);
    ok->setDefault(true);
    auto* layout = new QFormLayout(this);
    layout->addRow(tr("Folder name:"), m_name);
    layout->addRow(tr("Full path:"), m_path);
    layout->addRow(buttons);
    PromptDialogs::wirePanelButtons(this);
    connect(m_name, &QLineEdit::textChanged, this,
            [this](const QString& typed) { m_path->setText(outputFolder(m_destination, typed)); });
    m_path->setText(outputFolder(m_destination, {}));
}

QString FolderNameSheet::name() const {
    return m_name->text();
}

QString FolderNameSheet::outputFolder(const QString& destination, const QString& typed) {
    const QString name = QFileInfo(QDir::cleanPath(typed.trimmed())).fileName();
    if (name.isEmpty() || name == QLatin1String(".") || name == QLatin1String(".."))
        return destination;
    return QDir(destination).filePath(name);
}

std::optional<QString> FolderNameSheet::ask(Sheets& sheets, const QString& destination) {
    SheetRequest request;
    request.title = tr("New Output Folder");
    request.message = destination;
    request.makeDialog = [destination](QWidget* window) { return new FolderNameSheet(destination, window); };
    request.readAnswer = [](QDialog* dialog, int result) {
        return SheetAnswer{result == 1 ? 1 : 0, static_cast<FolderNameSheet*>(dialog)->name()};
    };
    const SheetAnswer answer = sheets.run(std::move(request));
    if (answer.code != 1)
        return std::nullopt;
    return outputFolder(destination, answer.text);
}

} // namespace quillet
