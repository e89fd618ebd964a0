#pragma once

#include <QList>
#include <QWidget>

class QAction;
class QComboBox;
class QToolButton;

namespace quillet {

class AppController;
class PresetManagerModel;
class PresetManagerPanel;
class PresetMenuModel;
class Sheets;

// The preset row above the settings: the preset menu ("None" and the
// presets), a button that adds the current settings as a new preset, one
// that stores them into the selected preset, and the manager. The same
// commands sit in the window's Presets menu. Rests while a batch runs.
class PresetBar : public QWidget {
    Q_OBJECT
  public:
    PresetBar(PresetMenuModel& menu, AppController& controller, Sheets& sheets, QWidget* parent = nullptr);
    ~PresetBar() override;

    QComboBox* menu() const { return m_menu; }
    // Add, store and manage, for the window's menu bar.
    QList<QAction*> commands() const { return {m_add, m_store, m_manage}; }
    // Made the first time it is shown.
    PresetManagerPanel* manager() const { return m_manager; }

    // Asks for a name and adds the current settings under it.
    void addPreset();
    void storePreset();
    void showManager();
    // Opens the preset menu, for its screenshot.
    void showMenu();

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void rebuild();

    PresetMenuModel& m_model;
    Sheets& m_sheets;
    QComboBox* m_menu;
    QToolButton* m_addButton;
    QToolButton* m_storeButton;
    QToolButton* m_manageButton;
    QAction* m_add;
    QAction* m_store;
    QAction* m_manage;
    PresetManagerModel* m_managerModel;
    PresetManagerPanel* m_manager = nullptr;
    bool m_processing = false;
};

} // namespace quillet
