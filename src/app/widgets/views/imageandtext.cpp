#include "app/widgets/views/imageandtext.h"

#include <QApplication>
#include <QPainter>

namespace quillet {

namespace {

const ImageAndText* pairOf(const QModelIndex& index, ImageAndText& holder) {
    const QVariant value = index.data(Qt::DisplayRole);
    if (!value.canConvert<ImageAndText>() || value.metaType() != QMetaType::fromType<ImageAndText>())
        return nullptr;
    holder = value.value<ImageAndText>();
    return &holder;
}

} // namespace

QRect ImageAndTextDelegate::imageRect(const QRect& cell, const QSize& image) {
    if (image.isEmpty())
        return {};
    const int x = cell.left() + Gap;
    const int spare = cell.height() - image.height();
    const int y = cell.top() + (spare + 1) / 2;
    return {QPoint(x, y), image};
}

QRect ImageAndTextDelegate::textRect(const QRect& cell, const QSize& image) {
    const int split = image.isEmpty() ? 0 : image.width() + Gap;
    return cell.adjusted(split, 0, 0, 0);
}

void ImageAndTextDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    ImageAndText holder;
    const ImageAndText* pair = pairOf(index, holder);
    if (!pair) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem textOption = option;
    initStyleOption(&textOption, index);
    textOption.text = pair->text();
    textOption.features |= QStyleOptionViewItem::HasDisplay;
    textOption.rect = textRect(option.rect, pair->image().size());
    // The picture's square takes the row's background too.
    if (option.state & QStyle::State_Selected)
        painter->fillRect(option.rect, option.palette.highlight());
    // Drawn by the style directly: the base class would read the text from
    // the index again, which holds the pair, not the text.
    const QWidget* widget = option.widget;
    QStyle* style = widget ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &textOption, painter, widget);
    painter->drawImage(imageRect(option.rect, pair->image().size()), pair->image());
}

QSize ImageAndTextDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    ImageAndText holder;
    const ImageAndText* pair = pairOf(index, holder);
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    if (!pair)
        return size;
    QStyleOptionViewItem textOption = option;
    textOption.text = pair->text();
    size = QStyledItemDelegate::sizeHint(textOption, QModelIndex());
    const QSize image = pair->image().size();
    return {size.width() + image.width() + Gap, qMax(size.height(), image.height())};
}

void ImageAndTextDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                                const QModelIndex& index) const {
    ImageAndText holder;
    const ImageAndText* pair = pairOf(index, holder);
    QStyleOptionViewItem textOption = option;
    if (pair)
        textOption.rect = textRect(option.rect, pair->image().size());
    QStyledItemDelegate::updateEditorGeometry(editor, textOption, index);
}

} // namespace quillet
