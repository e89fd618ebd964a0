#include "app/widgets/preview/previewpane.h"

#include "app/models/previewmodel.h"
#include "app/widgets/views/scaledimageview.h"

#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace quillet {

namespace {

QLabel* figure(const QString& name, QWidget* parent) {
    auto* label = new QLabel(QStringLiteral("–"), parent);
    label->setObjectName(name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

PreviewPane::PreviewPane(PreviewModel& model, QWidget* parent)
    : QWidget(parent), m_model(model), m_original(new ScaledImageView(tr("Original"), this)),
      m_output(new ScaledImageView(tr("Result"), this)), m_previous(new QPushButton(tr("◀ Previous"), this)),
      m_next(new QPushButton(tr("Next ▶"), this)), m_position(new QLabel(this)),
      m_pixels(figure(QStringLiteral("previewPixels"), this)),
      m_bytes(figure(QStringLiteral("previewBytes"), this)),
      m_quality(figure(QStringLiteral("previewQuality"), this)),
      m_name(figure(QStringLiteral("previewName"), this)),
      m_estimate(figure(QStringLiteral("previewEstimate"), this)) {
    setObjectName(QStringLiteral("previewPane"));
    m_original->setObjectName(QStringLiteral("previewOriginal"));
    m_output->setObjectName(QStringLiteral("previewOutput"));
    m_previous->setObjectName(QStringLiteral("previewPrevious"));
    m_next->setObjectName(QStringLiteral("previewNext"));
    m_position->setObjectName(QStringLiteral("previewPosition"));
    m_position->setAlignment(Qt::AlignCenter);
    m_original->setPlaceholder(tr("Drop or open pictures to preview them"));

    auto* split = new QSplitter(Qt::Horizontal, this);
    split->setObjectName(QStringLiteral("previewSplit"));
    split->setChildrenCollapsible(false);
    split->addWidget(m_original);
    split->addWidget(m_output);

    auto* steps = new QHBoxLayout;
    steps->addWidget(m_previous);
    steps->addWidget(m_position, 1);
    steps->addWidget(m_next);

    auto* figures = new QFormLayout;
    figures->addRow(tr("Pixels:"), m_pixels);
    figures->addRow(tr("File size:"), m_bytes);
    figures->addRow(tr("JPEG quality:"), m_quality);
    figures->addRow(tr("Output name:"), m_name);
    figures->addRow(tr("Whole batch:"), m_estimate);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(split, 1);
    layout->addLayout(steps);
    layout->addLayout(figures);

    connect(m_previous, &QPushButton::clicked, &model, &PreviewModel::previous);
    connect(m_next, &QPushButton::clicked, &model, &PreviewModel::next);
    connect(&model, &PreviewModel::queueChanged, this, &PreviewPane::showQueue);
    connect(&model, &PreviewModel::originalChanged, this,
            [this] { m_original->setImage(m_model.original()); });
    connect(&model, &PreviewModel::outputChanged, this, [this] { m_output->setImage(m_model.output()); });
    connect(&model, &PreviewModel::resultChanged, this, &PreviewPane::showResult);
    connect(&model, &PreviewModel::estimateChanged, this, &PreviewPane::showEstimate);
    connect(&model, &PreviewModel::busyChanged, this, [this](bool busy) {
        if (busy)
            m_bytes->setText(tr("Rendering…"));
    });
    showQueue();
}

void PreviewPane::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_model.setActive(true);
}

void PreviewPane::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_model.setActive(false);
}

void PreviewPane::showQueue() {
    const int count = int(m_model.queue().size());
    m_previous->setEnabled(m_model.canGoPrevious());
    m_next->setEnabled(m_model.canGoNext());
    m_position->setText(count == 0 ? tr("No pictures")
                                   : tr("%1 of %2: %3")
                                         .arg(m_model.currentIndex() + 1)
                                         .arg(count)
                                         .arg(QFileInfo(m_model.currentPath()).fileName()));
}

void PreviewPane::showResult() {
    const PreviewResult& result = m_model.result();
    if (!result.rendered) {
        m_output->setPlaceholder(result.message);
        for (QLabel* label : {m_pixels, m_bytes, m_quality, m_name})
            label->setText(QStringLiteral("–"));
        return;
    }
    const QLocale locale;
    m_pixels->setText(tr("%1 × %2").arg(result.width).arg(result.height));
    m_bytes->setText(
        tr("%1 bytes (%2)")
            .arg(locale.toString(result.bytes.size()), locale.formattedDataSize(result.bytes.size())));
    m_quality->setText(result.quality < 0 ? tr("not a JPEG") : QString::number(result.quality));
    m_name->setText(result.outputName);
}

void PreviewPane::showEstimate() {
    const qint64 estimate = m_model.batchEstimate();
    const int count = int(m_model.queue().size());
    const QString pictures = count == 1 ? tr("1 picture") : tr("%1 pictures").arg(count);
    m_estimate->setText(estimate < 0
                            ? QStringLiteral("–")
                            : tr("about %1 for %2").arg(QLocale().formattedDataSize(estimate), pictures));
}

} // namespace quillet
