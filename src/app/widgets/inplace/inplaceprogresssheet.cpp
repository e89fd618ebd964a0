#include "app/widgets/inplace/inplaceprogresssheet.h"

#include "app/models/inplacemodel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {

InplaceProgressSheet::InplaceProgressSheet(InplaceModel& model, QWidget* parent)
    : QDialog(parent), m_status(new QLabel(this)), m_bar(new QProgressBar(this)),
      m_cancel(new QPushButton(tr("Cancel"), this)) {
    setObjectName(QStringLiteral("inplaceProgressSheet"));
    setWindowTitle(tr("Working in Place"));
    m_status->setObjectName(QStringLiteral("inplaceStatusLabel"));
    m_bar->setObjectName(QStringLiteral("inplaceProgressBar"));
    m_cancel->setObjectName(QStringLiteral("inplaceCancelButton"));
    m_cancel->setAutoDefault(false);
    m_status->setMinimumWidth(320);
    m_bar->setTextVisible(true);
    m_bar->setFormat(tr("%v of %m"));

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_status);
    layout->addWidget(m_bar);
    layout->addLayout(buttons);

    connect(m_cancel, &QPushButton::clicked, &model, &InplaceModel::cancel);
    connect(
        &model, &InplaceModel::progressChanged, this, [this](const QString& status, int value, int maximum) {
            m_status->setText(m_status->fontMetrics().elidedText(status, Qt::ElideMiddle, m_status->width()));
            m_bar->setRange(0, std::max(maximum, 1));
            m_bar->setValue(std::min(value, std::max(maximum, 1)));
        });
}

} // namespace quillet
