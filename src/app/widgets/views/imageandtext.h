#pragma once

#include <QImage>
#include <QMetaType>
#include <QString>
#include <QStyledItemDelegate>

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

// Draws an ImageAndText cell: the picture unscaled, 3 pixels in from the
// left and centred vertically, the text beside it; editing and selection use
// the text part. Any other value is drawn as usual.
class ImageAndTextDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int Gap = 3;

    // Where the picture goes in a cell: 3 pixels in, centred vertically (the
    // offset rounded up); empty without a picture.
    static QRect imageRect(const QRect& cell, const QSize& image);
    // The part of the cell left for the text.
    static QRect textRect(const QRect& cell, const QSize& image);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
};

} // namespace quillet

Q_DECLARE_METATYPE(quillet::ImageAndText)
