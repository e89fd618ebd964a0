#include "app/widgets/inplace/inplacedroptarget.h"

#include "app/widgets/main/droparea.h"

#include <QDragEnterEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyleOptionFocusRect>
#include <QtMath>

namespace quillet {

namespace {

// An arc of the circle around `centre` from `startDegrees`, turning `spanDegrees`
// (counter-clockwise when positive, as QPainterPath counts), ending in an arrowhead.
void drawArrow(QPainter& painter, QPointF centre, qreal radius, qreal startDegrees, qreal spanDegrees) {
    const QRectF circle(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    QPainterPath arc;
    arc.arcMoveTo(circle, startDegrees);
    arc.arcTo(circle, startDegrees, spanDegrees);
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(arc);
    // The head points along the arc's direction at its end.
    const qreal end = qDegreesToRadians(startDegrees + spanDegrees);
    const QPointF tip(centre.x() + radius * std::cos(end), centre.y() - radius * std::sin(end));
    const qreal sign = spanDegrees > 0 ? 1 : -1;
    const QPointF along(-std::sin(end) * sign, -std::cos(end) * sign);
    const QPointF across(along.y(), -along.x());
    const qreal size = radius * 0.35;
    QPainterPath head;
    head.moveTo(tip + along * size);
    head.lineTo(tip + across * size * 0.8);
    head.lineTo(tip - across * size * 0.8);
    head.closeSubpath();
    painter.setBrush(painter.pen().color());
    painter.drawPath(head);
}

// A landscape picture: frame, a hill and a sun.
void drawPicture(QPainter& painter, const QRectF& frame) {
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame, 2, 2);
    QPainterPath hill;
    hill.moveTo(frame.left() + frame.width() * 0.1, frame.bottom() - frame.height() * 0.15);
    hill.lineTo(frame.left() + frame.width() * 0.4, frame.top() + frame.height() * 0.45);
    hill.lineTo(frame.left() + frame.width() * 0.6, frame.bottom() - frame.height() * 0.3);
    hill.lineTo(frame.left() + frame.width() * 0.72, frame.top() + frame.height() * 0.6);
    hill.lineTo(frame.right() - frame.width() * 0.1, frame.bottom() - frame.height() * 0.15);
    painter.drawPath(hill);
    const qreal sun = frame.height() * 0.12;
    painter.drawEllipse(QPointF(frame.right() - frame.width() * 0.25, frame.top() + frame.height() * 0.3),
                        sun, sun);
}

} // namespace

InplaceDropTarget::InplaceDropTarget(Glyph glyph, const QString& title, QWidget* parent)
    : QAbstractButton(parent), m_glyph(glyph) {
    setText(title);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QSize InplaceDropTarget::sizeHint() const {
    return {140, 130};
}

QSize InplaceDropTarget::minimumSizeHint() const {
    const int textWidth = fontMetrics().horizontalAdvance(text()) + 16;
    return {std::max(100, textWidth), 110};
}

void InplaceDropTarget::dragEnterEvent(QDragEnterEvent* event) {
    if (DropArea::localPaths(event->mimeData()).isEmpty())
        return;
    event->acceptProposedAction();
    m_hovered = true;
    update();
}

void InplaceDropTarget::dragLeaveEvent(QDragLeaveEvent*) {
    m_hovered = false;
    update();
}

void InplaceDropTarget::dropEvent(QDropEvent* event) {
    m_hovered = false;
    update();
    const QStringList paths = DropArea::localPaths(event->mimeData());
    if (paths.isEmpty())
        return;
    event->acceptProposedAction();
    Q_EMIT pathsDropped(paths);
}

void InplaceDropTarget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(4, 4, -4, -4);
    const QColor ink =
        palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText);
    QColor fill = palette().color(QPalette::Highlight);
    fill.setAlpha(m_hovered ? 70 : (isDown() ? 50 : (underMouse() ? 25 : 0)));
    QPen border(m_hovered ? palette().color(QPalette::Highlight) : palette().color(QPalette::Mid), 1.5,
                Qt::DashLine);
    painter.setPen(border);
    painter.setBrush(fill);
    painter.drawRoundedRect(box, 8, 8);

    const QFontMetricsF metrics(font());
    const QRectF caption(box.left() + 4, box.bottom() - metrics.height() - 8, box.width() - 8,
                         metrics.height());
    const qreal side = std::min(box.width() - 16, caption.top() - box.top() - 12);
    const QRectF symbol(box.center().x() - side / 2, box.top() + 8, side, side);
    painter.setPen(QPen(ink, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    paintGlyph(painter, symbol);

    painter.setPen(ink);
    painter.drawText(caption, Qt::AlignCenter, metrics.elidedText(text(), Qt::ElideRight, caption.width()));
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.rect = caption.toAlignedRect().adjusted(-2, -1, 2, 1);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void InplaceDropTarget::paintGlyph(QPainter& painter, const QRectF& area) const {
    const QPointF centre = area.center();
    const qreal unit = area.width() / 10;
    const QRectF picture(centre.x() - 2.6 * unit, centre.y() - 1.8 * unit + unit, 5.2 * unit, 3.6 * unit);
    switch (m_glyph) {
    case Glyph::RotateRight:
        drawPicture(painter, picture);
        drawArrow(painter, centre + QPointF(0, unit), 3.9 * unit, 150, -120);
        break;
    case Glyph::RotateLeft:
        drawPicture(painter, picture);
        drawArrow(painter, centre + QPointF(0, unit), 3.9 * unit, 30, 120);
        break;
    case Glyph::Rotate180:
        drawPicture(painter, picture);
        drawArrow(painter, centre + QPointF(0, unit), 3.9 * unit, 180, -180);
        break;
    case Glyph::AutoRotate: {
        // A picture lying on its side, and the arrows that stand it up.
        const QPointF middle = centre + QPointF(0, unit);
        painter.save();
        painter.translate(middle);
        painter.rotate(90);
        painter.scale(0.8, 0.8);
        drawPicture(painter, picture.translated(-middle));
        painter.restore();
        drawArrow(painter, middle, 3.9 * unit, 120, -60);
        drawArrow(painter, middle, 3.9 * unit, 300, -60);
        break;
    }
    case Glyph::Dates: {
        const QRectF page(centre.x() - 3 * unit, centre.y() - 2.6 * unit + unit, 6 * unit, 5.2 * unit);
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(page, 3, 3);
        painter.drawLine(QPointF(page.left(), page.top() + 1.3 * unit),
                         QPointF(page.right(), page.top() + 1.3 * unit));
        for (const qreal x : {page.left() + 1.6 * unit, page.right() - 1.6 * unit})
            painter.drawLine(QPointF(x, page.top() - 0.7 * unit), QPointF(x, page.top() + 0.5 * unit));
        for (int row = 0; row < 3; ++row)
            for (int column = 0; column < 4; ++column)
                painter.drawPoint(QPointF(page.left() + (1.05 + 1.3 * column) * unit,
                                          page.top() + (2.3 + 1.0 * row) * unit));
        break;
    }
    case Glyph::AddIcon:
    case Glyph::RemoveIcon: {
        drawPicture(painter, picture.translated(-0.8 * unit, -0.6 * unit));
        const QPointF badge(picture.right() + 0.2 * unit, picture.bottom() + 0.1 * unit);
        painter.setBrush(palette().color(QPalette::Window));
        painter.drawEllipse(badge, 1.4 * unit, 1.4 * unit);
        painter.drawLine(badge - QPointF(0.7 * unit, 0), badge + QPointF(0.7 * unit, 0));
        if (m_glyph == Glyph::AddIcon)
            painter.drawLine(badge - QPointF(0, 0.7 * unit), badge + QPointF(0, 0.7 * unit));
        break;
    }
    }
}

} // namespace quillet
