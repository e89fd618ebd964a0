#pragma once

#include <QAbstractButton>
#include <QStringList>

namespace quillet {

// One target of the in-place panel: files dropped on it (or chosen after a
// click, for those who do not drag) start its operation at once.
class InplaceDropTarget : public QAbstractButton {
    Q_OBJECT
  public:
    // What the symbol shows.
    enum class Glyph { RotateLeft, RotateRight, Rotate180, AutoRotate, Dates, AddIcon, RemoveIcon };

    InplaceDropTarget(Glyph glyph, const QString& title, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  Q_SIGNALS:
    void pathsDropped(const QStringList& paths);

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void paintGlyph(QPainter& painter, const QRectF& area) const;

    Glyph m_glyph;
    bool m_hovered = false;
};

} // namespace quillet
