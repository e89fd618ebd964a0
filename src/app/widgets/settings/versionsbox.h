#pragma once

#include <QGroupBox>

class QMenu;
class QToolButton;
class QTreeWidget;

namespace quillet {

class SettingsModel;
class VersionListModel;

// The versions each batch writes, one row each: the preset (or the current
// settings), what it makes, the suffix its file names get (empty: its own
// folder) and where its files go. The suffix is edited in place; + adds a preset, - removes
// the selected row.
class VersionsBox : public QGroupBox {
    Q_OBJECT
  public:
    VersionsBox(VersionListModel& model, SettingsModel& settings, QWidget* parent = nullptr);

    QTreeWidget* list() const { return m_list; }
    // Shows the model's rows again (the presets may have changed).
    void refresh();

  private:
    void fillAddMenu();
    // The current settings' row follows the settings as they are edited.
    void showCurrentMakes();

    VersionListModel& m_model;
    SettingsModel& m_settings;
    QTreeWidget* m_list;
    QMenu* m_addMenu;
    QToolButton* m_remove;
    bool m_filling = false;
};

} // namespace quillet
