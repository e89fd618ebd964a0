#pragma once

#include <QImage>
#include <QMetaType>
#include <QString>

namespace quillet {

// An immutable pair of a picture and a text: the value of a list cell that
// shows a thumbnail beside a name. Copies share the picture's pixels.
class ImageAndText {
  public:
    ImageAndText() = default;
    ImageAndText(QImage image, QString text) : m_image(std::move(image)), m_text(std::move(text)) {}

    const QImage& image() const { return m_image; }
    const QString& text() const { return m_text; }

    friend bool operator==(const ImageAndText& a, const ImageAndText& b) {
        return a.m_text == b.m_text && a.m_image == b.m_image;
    }

  private:
    QImage m_image;
    QString m_text;
};

} // namespace quillet

Q_DECLARE_METATYPE(quillet::ImageAndText)
