#pragma once

#include <QImage>
#include <QString>
#include <QWidget>

namespace quillet {

// A picture shrunk to fit the view, never enlarged, centred under a caption;
// the placeholder text in its place while there is none.
class ScaledImageView : public QWidget {
    Q_OBJECT
  public:
    explicit ScaledImageView(const QString& caption, QWidget* parent = nullptr);

    void setImage(const QImage& image);
    QImage image() const { return m_image; }
    void setPlaceholder(const QString& text);
    QSize sizeHint() const override { return {240, 240}; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString m_caption;
    QString m_placeholder;
    QImage m_image;
};

} // namespace quillet
