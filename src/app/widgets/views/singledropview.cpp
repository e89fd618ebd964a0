#include "app/widgets/views/singledropview.h"

#include "app/models/watermarkmodel.h"

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeData>
#include <QPainter>
#include <QUrl>

namespace quillet {

SingleDropView::SingleDropView(QWidget* parent) : QFrame(parent) {
    setAcceptDrops(true);
    setFrameShape(QFrame::StyledPanel);
    setMinimumSize(64, 64);
}

QString SingleDropView::singleLocalPath(const QMimeData* data) {
    if (!data || !data->hasUrls())
        return {};
    const QList<QUrl> urls = data->urls();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return {};
    return urls.first().toLocalFile();
}

void SingleDropView::setPath(const QString& path) {
    m_path = path;
    update();
}

void SingleDropView::setPlaceholder(const QString& text) {
    m_placeholder = text;
    update();
}

void SingleDropView::setPicture(const QPixmap& picture) {
    m_picture = picture;
    update();
}

void SingleDropView::setHover(Hover hover) {
    m_hover = hover;
    update();
}

void SingleDropView::dragEnterEvent(QDragEnterEvent* event) {
    // Taking the enter event even for a refused drag keeps the leave event
    // coming, so the red frame goes away again.
    event->accept();
    dragMoveEvent(event);
}

void SingleDropView::dragMoveEvent(QDragMoveEvent* event) {
    const QString path = singleLocalPath(event->mimeData());
    const bool ok = isEnabled() && !path.isEmpty() && accepts(path);
    setHover(ok ? Hover::Accepted : Hover::Refused);
    if (ok)
        event->acceptProposedAction();
    else
        event->ignore();
}

void SingleDropView::dragLeaveEvent(QDragLeaveEvent*) {
    setHover(Hover::None);
}

void SingleDropView::dropEvent(QDropEvent* event) {
    setHover(Hover::None);
    const QString path = singleLocalPath(event->mimeData());
    if (!isEnabled() || path.isEmpty() || !accepts(path)) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    setPath(path);
    window()->activateWindow();
    Q_EMIT dropped(path);
}

void SingleDropView::paintEvent(QPaintEvent* event) {
    QFrame::paintEvent(event);
    QPainter painter(this);
    const QRect area = contentsRect().adjusted(4, 4, -4, -4);
    if (!m_picture.isNull()) {
        const QPixmap scaled = m_picture.scaled(area.size(), Qt::KeepAspectRatio, Qt::SmoothTransformation);
        painter.drawPixmap(area.center() - scaled.rect().center(), scaled);
    } else {
        const QString text = m_path.isEmpty() ? m_placeholder : QFileInfo(m_path).fileName();
        painter.setPen(
            palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::PlaceholderText));
        painter.drawText(area, Qt::AlignCenter | Qt::TextWordWrap, text);
    }
    if (m_hover != Hover::None) {
        QPen pen(m_hover == Hover::Accepted ? palette().color(QPalette::Highlight) : QColor(Qt::red), 2);
        pen.setStyle(m_hover == Hover::Accepted ? Qt::SolidLine : Qt::DashLine);
        painter.setPen(pen);
        painter.drawRect(rect().adjusted(1, 1, -2, -2));
    }
}

WatermarkView::WatermarkView(QWidget* parent) : SingleDropView(parent) {
    setObjectName(QStringLiteral("watermarkView"));
    setAccessibleName(tr("Watermark picture"));
    setPath(QString());
}

bool WatermarkView::accepts(const QString& path) const {
    return WatermarkModel::loadsAsImage(path);
}

void WatermarkView::setPath(const QString& path) {
    SingleDropView::setPath(path);
    if (path.isEmpty()) {
        setPicture(QPixmap());
        setPlaceholder(tr("Drop watermark file here."));
        setToolTip(tr("Drop watermark file here."));
        return;
    }
    QImageReader reader(path);
    reader.setAutoTransform(true);
    reader.setScaledSize(reader.size().scaled(256, 256, Qt::KeepAspectRatio));
    setPicture(QPixmap::fromImageReader(&reader));
    setToolTip(path);
}

FolderView::FolderView(QWidget* parent) : SingleDropView(parent) {
    setObjectName(QStringLiteral("folderView"));
    setAccessibleName(tr("Drop a folder"));
    setPlaceholder(tr("Drop a folder here"));
}

bool FolderView::accepts(const QString& path) const {
    return QFileInfo(path).isDir();
}

AppDropView::AppDropView(QWidget* parent) : SingleDropView(parent) {
    setObjectName(QStringLiteral("appDropView"));
    setAccessibleName(tr("Drop an application"));
    setPlaceholder(tr("Drop an application here"));
}

bool AppDropView::accepts(const QString& path) const {
    return path.endsWith(QLatin1String(".desktop")) && QFileInfo(path).isFile();
}

} // namespace quillet
