#pragma once

#include <QFrame>
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

  Q_SIGNALS:
    void pathsDropped(const QStringList& paths);

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    bool m_hovered = false;
};

} // namespace quillet
