#pragma once

#include <QGroupBox>

class QMenu;
class QToolButton;
class QTreeWidget;

namespace quillet {

class VersionListModel;

// The versions each batch writes, one row each: the preset (or the current
// settings), the suffix its file names get (empty: its own folder) and where
// its files go. The suffix is edited in place; + adds a preset, - removes
// the selected row.
class VersionsBox : public QGroupBox {
    Q_OBJECT
  public:
    explicit VersionsBox(VersionListModel& model, QWidget* parent = nullptr);

    QTreeWidget* list() const { return m_list; }
    // Shows the model's rows again (the presets may have changed).
    void refresh();

  private:
    void fillAddMenu();

    VersionListModel& m_model;
    QTreeWidget* m_list;
    QMenu* m_addMenu;
    QToolButton* m_remove;
    bool m_filling = false;
};

} // namespace quillet
