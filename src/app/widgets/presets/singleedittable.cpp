#include "app/widgets/presets/singleedittable.h"

namespace quillet {

SingleEditTable::SingleEditTable(QWidget* parent) : QTableView(parent) {}

void SingleEditTable::commitEditing() {
    if (!isEditing())
        return;
    if (QWidget* editor = indexWidget(currentIndex())) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

} // namespace quillet
