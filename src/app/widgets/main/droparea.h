#pragma once

#include <QFrame>
#include <QRectF>
#include <QStringList>

class QMimeData;

namespace quillet {

// The main window's target for pictures and folders dragged from a file
// manager (text/uri-list of local files).
class DropArea : public QFrame {
    Q_OBJECT
  public:
    explicit DropArea(QWidget* parent = nullptr);

    // The local paths a drop carries, in order; empty when there are none.
    static QStringList localPaths(const QMimeData* data);

    // Where the hint goes in a drop area of the given size: the dashed box,
    // the picture symbol's centre and the two lines of text (the second one
    // wrapped), the block centred in the box.
    struct HintLayout {
        QRectF box;
        QPointF symbolCentre;
        QRectF title;
        QRectF detail;
    };
    HintLayout hintLayout(QSize size) const;
    // Large enough for the whole hint, its title on one line.
    QSize minimumSizeHint() const override;

  Q_SIGNALS:
    void pathsDropped(const QStringList& paths);

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QFont titleFont() const;
    QString title() const;
    QString detail() const;

    bool m_hovered = false;
};

} // namespace quillet
