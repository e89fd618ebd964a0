#include "app/settingspanel.h"

#include "app/appcontroller.h"
#include "app/settingssummary.h"

#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace quillet {

SettingsPanel::SettingsPanel(AppController& controller, QWidget* parent)
    : QGroupBox(tr("Next batch"), parent), m_controller(controller), m_rows(new QFormLayout) {
    setObjectName(QStringLiteral("settingsPanel"));
    setMinimumWidth(280);
    m_rows->setLabelAlignment(Qt::AlignRight);
    m_rows->setHorizontalSpacing(12);
    m_rows->setVerticalSpacing(8);
    auto* note = new QLabel(tr("Every batch uses the stored settings shown here."), this);
    note->setWordWrap(true);
    note->setForegroundRole(QPalette::PlaceholderText);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(m_rows);
    layout->addStretch();
    layout->addWidget(note);
    refresh();
}

void SettingsPanel::refresh() {
    while (m_rows->rowCount() > 0)
        m_rows->removeRow(0);
    const auto rows = settingsSummary(m_controller.currentSetting(), m_controller.renamer());
    for (const auto& [label, value] : rows) {
        auto* text = new QLabel(value, this);
        text->setWordWrap(true);
        text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        m_rows->addRow(QStringLiteral("<b>%1</b>").arg(label.toHtmlEscaped()), text);
    }
}

} // namespace quillet
