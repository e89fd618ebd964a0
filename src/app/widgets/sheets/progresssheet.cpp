#include "app/widgets/sheets/progresssheet.h"

#include "app/models/appcontroller.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace quillet {

ProgressSheet::ProgressSheet(AppController& controller, QWidget* parent)
    : QDialog(parent), m_file(new QLabel(this)), m_bar(new QProgressBar(this)),
      m_pause(new QPushButton(controller.pauseButtonTitle(), this)),
      m_cancel(new QPushButton(tr("Cancel"), this)) {
    setObjectName(QStringLiteral("progressSheet"));
    setWindowTitle(tr("Processing"));
    m_file->setObjectName(QStringLiteral("progressFileLabel"));
    m_bar->setObjectName(QStringLiteral("progressBar"));
    m_pause->setObjectName(QStringLiteral("pauseButton"));
    m_cancel->setObjectName(QStringLiteral("cancelButton"));
    m_pause->setAutoDefault(false);
    m_cancel->setAutoDefault(false);
    m_file->setMinimumWidth(380);
    m_bar->setTextVisible(true);
    m_bar->setFormat(tr("%v of %m"));

    auto* heading = new QLabel(tr("<b>Processing pictures</b>"), this);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_pause);
    buttons->addWidget(m_cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(m_file);
    layout->addWidget(m_bar);
    layout->addLayout(buttons);

    connect(m_pause, &QPushButton::clicked, &controller, &AppController::pause);
    connect(m_cancel, &QPushButton::clicked, &controller, &AppController::cancel);
    connect(&controller, &AppController::pauseTitleChanged, m_pause, &QPushButton::setText);
    connect(&controller, &AppController::currentFileChanged, this, [this](const QString& text) {
        m_file->setText(m_file->fontMetrics().elidedText(text, Qt::ElideMiddle, m_file->width()));
    });
    connect(&controller, &AppController::progressChanged, this, [this](int value, int maximum) {
        // A busy bar while the batch is still counting its files.
        if (maximum == BatchShell::UnknownTotal) {
            m_bar->setRange(0, 0);
            return;
        }
        m_bar->setRange(0, std::max(maximum, 1));
        m_bar->setValue(std::min(value, std::max(maximum, 1)));
    });
}

} // namespace quillet
