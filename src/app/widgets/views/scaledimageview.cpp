#include "app/widgets/views/scaledimageview.h"

#include <QPainter>

namespace quillet {

ScaledImageView::ScaledImageView(const QString& caption, QWidget* parent)
    : QWidget(parent), m_caption(caption) {
    setMinimumSize(120, 120);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ScaledImageView::setImage(const QImage& image) {
    m_image = image;
    update();
}

void ScaledImageView::setPlaceholder(const QString& text) {
    m_placeholder = text;
    update();
}

void ScaledImageView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const int captionHeight = fontMetrics().height() + 4;
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(QRect(0, 0, width(), captionHeight), Qt::AlignCenter, m_caption);
    const QRect area = rect().adjusted(2, captionHeight, -2, -2);
    painter.fillRect(area, palette().color(QPalette::Base));
    if (m_image.isNull()) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, m_placeholder);
        return;
    }
    QSize shown = m_image.size();
    if (shown.width() > area.width() || shown.height() > area.height())
        shown.scale(area.size(), Qt::KeepAspectRatio);
    QRect target(QPoint(0, 0), shown);
    target.moveCenter(area.center());
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, m_image);
}

} // namespace quillet
