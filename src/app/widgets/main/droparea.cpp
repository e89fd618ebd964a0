#include "app/widgets/main/droparea.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QUrl>

namespace quillet {

DropArea::DropArea(QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("dropArea"));
    setAcceptDrops(true);
    setMinimumSize(320, 240);
}

QStringList DropArea::localPaths(const QMimeData* data) {
    QStringList paths;
    if (!data || !data->hasUrls())
        return paths;
    const QList<QUrl> urls = data->urls();
    for (const QUrl& url : urls)
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    return paths;
}

void DropArea::dragEnterEvent(QDragEnterEvent* event) {
    if (localPaths(event->mimeData()).isEmpty())
        return;
    event->acceptProposedAction();
    m_hovered = true;
    update();
}

void DropArea::dragLeaveEvent(QDragLeaveEvent*) {
    m_hovered = false;
    update();
}

void DropArea::dropEvent(QDropEvent* event) {
    m_hovered = false;
    update();
    const QStringList paths = localPaths(event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    Q_EMIT pathsDropped(paths);
}

void DropArea::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(12, 12, -12, -12);
    const QColor accent = palette().color(QPalette::Highlight);
    painter.setBrush(m_hovered ? accent.lighter(190) : palette().color(QPalette::Base));
    QPen pen(m_hovered ? accent : palette().color(QPalette::Mid), 2, Qt::DashLine);
    painter.setPen(pen);
    painter.drawRoundedRect(box, 14, 14);

    // A stack of two frames as the picture symbol, above the hint.
    const QPointF centre = box.center() - QPointF(0, 28);
    painter.setPen(QPen(palette().color(QPalette::Mid), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(centre.x() - 30, centre.y() - 26, 60, 44), 4, 4);
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(centre.x() - 22, centre.y() - 18, 60, 44), 4, 4);
    QPainterPath hills;
    hills.moveTo(centre.x() - 16, centre.y() + 20);
    hills.lineTo(centre.x() + 2, centre.y() + 2);
    hills.lineTo(centre.x() + 14, centre.y() + 12);
    hills.lineTo(centre.x() + 22, centre.y() + 6);
    hills.lineTo(centre.x() + 34, centre.y() + 20);
    painter.drawPath(hills);

    QFont font = painter.font();
    font.setPointSizeF(font.pointSizeF() * 1.3);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(palette().color(QPalette::Text));
    const QRectF textBox(box.left(), centre.y() + 40, box.width(), 30);
    painter.drawText(textBox, Qt::AlignCenter, tr("Drop pictures or folders here"));
    font.setBold(false);
    font.setPointSizeF(font.pointSizeF() / 1.3);
    painter.setFont(font);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(textBox.translated(0, 28), Qt::AlignCenter,
                     tr("or choose them with File > Open. Each batch uses the settings on the right."));
}

} // namespace quillet
