#pragma once

#include "app/models/imageandtext.h"

#include <QStyledItemDelegate>

namespace quillet {

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
