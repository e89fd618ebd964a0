#pragma once

#include "app/models/inspectorcolumnlayout.h"

#include <QWidget>

class QLabel;
class QPushButton;
class QTableView;

namespace quillet {

class InspectorColumnChooser;
class InspectorModel;
class UserDefaults;

// The inspector window: the list of pictures with their metadata and the
// name each will get, filled by dropping files on it. Rows are reordered by
// dragging, sorted by a click on a column's header and removed with Clear;
// Process starts a batch on the listed files in list order. The columns
// shown, their order and widths, the window's frame and whether it is open
// are kept in the settings store.
class InspectorWindow : public QWidget {
    Q_OBJECT
  public:
    InspectorWindow(InspectorModel& model, UserDefaults& defaults, QWidget* parent = nullptr);

    QTableView* table() const { return m_table; }
    InspectorColumnChooser* columnChooser() const { return m_chooser; }
    // Shows or hides the window and remembers which.
    void setOpen(bool open);
    // Everything but the window's frame rests while files are added.
    void setUIEnabled(bool enabled);

  Q_SIGNALS:
    void openChanged(bool open);
    // Process: every listed file, in list order.
    void processRequested(const QStringList& paths);
    // The selection changed to show this picture (the current row when it
    // is selected, else the first selected one).
    void pictureSelected(const QString& path);

  protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* buildButtons();
    void applyLayout();
    void headerMoved();
    void toggleColumn(int column, bool shown);
    void selectionChanged();
    void countChanged(int count);
    void clearSelected();
    void saveFrame();

    InspectorModel& m_model;
    UserDefaults& m_defaults;
    InspectorColumnLayout m_layout;
    QTableView* m_table;
    InspectorColumnChooser* m_chooser;
    QLabel* m_summary = nullptr;
    QPushButton* m_selectAll = nullptr;
    QPushButton* m_customize = nullptr;
    QPushButton* m_clear = nullptr;
    QPushButton* m_process = nullptr;
    bool m_uiEnabled = true;
    bool m_applying = false;
    bool m_restoring = false;
};

} // namespace quillet
