#pragma once

#include <QTableView>

namespace quillet {

// The manager's table. Return ends the editing of a name on the same row and
// goes no further: the view takes the key, so the dialog's default button
// does not close the manager with it. Tab moves on to the next row.
class SingleEditTable : public QTableView {
    Q_OBJECT
  public:
    explicit SingleEditTable(QWidget* parent = nullptr);

    bool isEditing() const { return state() == EditingState; }
    // Keeps the text of a name being edited, as Return would.
    void commitEditing();
};

} // namespace quillet
