#include "app/widgets/main/droparea.h"

#include <QDragEnterEvent>
#include <QFontMetricsF>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace quillet {

namespace {

constexpr qreal BoxMargin = 12;
constexpr qreal TextPadding = 16;
// The picture symbol's half height, and the gaps below it and between the lines.
constexpr qreal SymbolHalfHeight = 26;
constexpr qreal SymbolGap = 14;
constexpr qreal LineGap = 6;

} // namespace

DropArea::DropArea(QWidget* parent) : QFrame(parent) {
    setObjectName(QStringLiteral("dropArea"));
    setAcceptDrops(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QFont DropArea::titleFont() const {
    QFont bold = font();
    bold.setPointSizeF(bold.pointSizeF() * 1.3);
    bold.setBold(true);
    return bold;
}

QString DropArea::title() const {
    return tr("Drop pictures or folders here");
}

QString DropArea::detail() const {
    return tr("or choose them with File > Open. Each batch uses the settings on the right.");
}

DropArea::HintLayout DropArea::hintLayout(QSize size) const {
    HintLayout layout;
    layout.box = QRectF(QPointF(0, 0), QSizeF(size)).adjusted(BoxMargin, BoxMargin, -BoxMargin, -BoxMargin);
    const qreal textWidth = std::max<qreal>(layout.box.width() - 2 * TextPadding, 1);
    const QFontMetricsF titleMetrics(titleFont());
    const QRectF detailBounds = QFontMetricsF(font()).boundingRect(
        QRectF(0, 0, textWidth, 1e6), Qt::AlignHCenter | Qt::TextWordWrap, detail());
    const qreal height =
        2 * SymbolHalfHeight + SymbolGap + titleMetrics.height() + LineGap + detailBounds.height();
    const qreal top = layout.box.center().y() - height / 2;
    const qreal left = layout.box.left() + TextPadding;
    layout.symbolCentre = QPointF(layout.box.center().x(), top + SymbolHalfHeight);
    layout.title = QRectF(left, top + 2 * SymbolHalfHeight + SymbolGap, textWidth, titleMetrics.height());
    layout.detail = QRectF(left, layout.title.bottom() + LineGap, textWidth, detailBounds.height());
    return layout;
}

QSize DropArea::minimumSizeHint() const {
    const qreal titleWidth = QFontMetricsF(titleFont()).horizontalAdvance(title());
    // Two pixels spare for the rounding of the text's own layout.
    const int width = int(std::ceil(titleWidth + 2 * (BoxMargin + TextPadding))) + 2;
    const HintLayout layout = hintLayout(QSize(width, 0));
    const qreal needed = layout.detail.bottom() - layout.symbolCentre.y() + SymbolHalfHeight;
    const int height = int(std::ceil(needed + 2 * (BoxMargin + TextPadding)));
    return QSize(std::max(width, 320), std::max(height, 240));
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
    const HintLayout layout = hintLayout(size());
    const QColor accent = palette().color(QPalette::Highlight);
    painter.setBrush(m_hovered ? accent.lighter(190) : palette().color(QPalette::Base));
    QPen pen(m_hovered ? accent : palette().color(QPalette::Mid), 2, Qt::DashLine);
    painter.setPen(pen);
    painter.drawRoundedRect(layout.box, 14, 14);

    // A stack of two frames as the picture symbol, above the hint.
    const QPointF centre = layout.symbolCentre;
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

    painter.setFont(titleFont());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(layout.title, Qt::AlignCenter, title());
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(layout.detail, Qt::AlignHCenter | Qt::TextWordWrap, detail());
}

} // namespace quillet
