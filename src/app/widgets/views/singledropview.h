#pragma once

#include <QFrame>
#include <QPixmap>
#include <QString>

class QMimeData;

namespace quillet {

// A drop target for exactly one file that passes the view's test: a
// watermark picture, a destination folder, an application. Anything else is
// refused where the user can see it: the frame turns red while it hovers and
// the drop does nothing. An accepted drop stores the path and emits dropped().
class SingleDropView : public QFrame {
    Q_OBJECT

  public:
    explicit SingleDropView(QWidget* parent = nullptr);

    QString path() const { return m_path; }
    virtual void setPath(const QString& path);
    // Shown when there is no path: a line of text telling what to drop.
    void setPlaceholder(const QString& text);

    // The one local path a drag carries, or nothing for none or several.
    static QString singleLocalPath(const QMimeData* data);
    // Whether this view takes the path.
    virtual bool accepts(const QString& path) const = 0;

  Q_SIGNALS:
    void dropped(const QString& path);

  protected:
    void setPicture(const QPixmap& picture);
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    enum class Hover { None, Accepted, Refused };
    void setHover(Hover hover);

    QString m_path;
    QString m_placeholder;
    QPixmap m_picture;
    Hover m_hover = Hover::None;
};

// Takes one picture that libvips can read and shows it.
class WatermarkView : public SingleDropView {
    Q_OBJECT
  public:
    explicit WatermarkView(QWidget* parent = nullptr);
    bool accepts(const QString& path) const override;
    // Also loads the picture to show and sets the tool tip to the path; an
    // empty path shows "Drop watermark file here.".
    void setPath(const QString& path) override;
};

// Takes one existing folder.
class FolderView : public SingleDropView {
    Q_OBJECT
  public:
    explicit FolderView(QWidget* parent = nullptr);
    bool accepts(const QString& path) const override;
};

// Takes one desktop application (a .desktop file).
class AppDropView : public SingleDropView {
    Q_OBJECT
  public:
    explicit AppDropView(QWidget* parent = nullptr);
    bool accepts(const QString& path) const override;
};

} // namespace quillet
