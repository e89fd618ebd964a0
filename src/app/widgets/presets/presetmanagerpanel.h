#pragma once

#include <QDialog>

class QAction;

namespace quillet {

class PresetManagerModel;
class Sheets;
class SingleEditTable;

// The preset manager: the presets in a table whose names are edited in place
// and whose rows are dragged into a new order, an action menu for the
// selected preset (rename, duplicate, remove, export), import and revert.
// OK keeps the edits, Cancel throws them all away. Shown window-modal on the
// main window rather than as a queued question, so that its own questions
// (the file choosers, a refused file) come up above it.
class PresetManagerPanel : public QDialog {
    Q_OBJECT
  public:
    PresetManagerPanel(PresetManagerModel& model, Sheets& sheets, QWidget* parent = nullptr);

    SingleEditTable* table() const { return m_table; }
    // Opens an editing session on the selected preset's row.
    void start();
    int selectedRow() const;

    void renameSelected();
    void duplicateSelected();
    void removeSelected();
    void importPreset();
    void exportSelected();
    void revert();

    void done(int result) override;

  private:
    void selectRow(int row);
    void selectionChanged();

    PresetManagerModel& m_model;
    Sheets& m_sheets;
    SingleEditTable* m_table;
    QList<QAction*> m_rowActions;
};

} // namespace quillet
