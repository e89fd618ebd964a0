#pragma once

#include "settings/presetstore.h"

#include <QObject>
#include <QStringList>

namespace quillet {

class SettingsModel;
class UserDefaults;

// The preset menu of the main window without its widget: "None", then one
// item per preset of the store ("Presets", shared with `quillet presets`).
// Choosing an item applies its preset to the settings (or resets them for
// "None") and is kept in "SelectedPreset" for the next start. The list held
// here is also the working list the preset manager edits; it reaches the
// store only through save().
class PresetMenuModel : public QObject {
    Q_OBJECT
  public:
    static constexpr char SelectedKey[] = "SelectedPreset";

    PresetMenuModel(UserDefaults& defaults, SettingsModel& settings, QObject* parent = nullptr);

    PresetStore& presets() { return m_presets; }
    const PresetStore& presets() const { return m_presets; }
    // "None", then the presets' names ("Untitled n" for nameless ones).
    QStringList titles() const { return m_presets.menuTitles(); }
    int selectedIndex() const { return m_selected; }
    // Whether the current settings may be stored into the selected preset.
    bool canStore() const { return m_selected > 0; }
    // Values the last read of the store set back, one message each.
    const QStringList& problems() const { return m_presets.problems(); }

    // Applies the preset of a menu item; 0 (or an index past the list) resets
    // the settings and selects "None".
    void select(int menuIndex);
    // At start: selects the item "SelectedPreset" names and applies its
    // preset. "None" keeps the settings the window was left with.
    void restoreSelection();
    // Whether a name typed for a new preset may be taken, once trimmed.
    bool nameIsAcceptable(const QString& typed) const;
    // Adds the current settings as a preset and selects it. False, with
    // nothing added, for a name that may not be taken.
    bool addPreset(const QString& typed);
    // Replaces the selected preset with the current settings under its title.
    void storeIntoSelected();

    // The manager edits the working list between these two. While it does,
    // reload() leaves the list alone.
    void beginEditing() { m_editing = true; }
    // Keeps the edits (written to the store) or reads the stored list back;
    // then rebuilds the menu on the same item, when it still exists, and
    // selects the preset chosen before by its id ("None" when it is gone).
    void endEditing(bool keep);
    // Throws the working list's edits away.
    void revert();
    // Reads the store again when another program (`quillet presets import`)
    // has changed its presets; the selection follows its preset by id.
    void reload();

  Q_SIGNALS:
    // The titles, the selection or canStore() changed.
    void changed();
    // The store could not be written; the list here is still the edited one.
    void saveFailed();

  private:
    void save();
    void selectId(int id);

    UserDefaults& m_defaults;
    SettingsModel& m_settings;
    PresetStore m_presets;
    int m_selected = 0;
    int m_selectedId = 0;
    bool m_editing = false;
};

} // namespace quillet
