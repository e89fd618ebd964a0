#pragma once

#include "settings/processingparams.h"

#include <QList>
#include <QStringList>

#include <optional>

class QSettings;

namespace quillet {

// The user's named presets: ProcessingParams records plus "Name" (unique) and
// "Id" (unique, 1 or more), kept in menu order under "Presets" in the
// settings store. This is the store's logic only; menus and the manager panel
// sit on top of it. Indexes are positions in the list (menu item index - 1).
class PresetStore {
  public:
    static constexpr char PresetsKey[] = "Presets";
    // The older storage, a map from name to record, read once when "Presets"
    // does not exist yet.
    static constexpr char OldPresetsKey[] = "PresetsDictionaries";

    PresetStore() = default;

    // Reads the presets (migrating the old storage once), makes the names
    // unique, gives every preset without an id a fresh one, and writes the
    // result back. A stored value that its key may not hold is set back to
    // the key's reset value, with a message in problems().
    static PresetStore load(QSettings& settings);
    // The preset called name in the given store, for --preset NAME.
    static std::optional<ProcessingParams> lookup(QSettings& settings, const QString& name);

    // Writes the list to "Presets"; false when the store could not be written.
    bool save(QSettings& settings) const;
    // Throws the working list's edits away.
    void revert(QSettings& settings) { *this = load(settings); }

    const QList<ProcessingParams>& presets() const { return m_presets; }
    int count() const { return int(m_presets.size()); }
    QStringList names() const;
    QStringList menuTitles() const;
    int indexOfName(const QString& name) const;
    int indexOfId(int id) const;
    int nextId() const { return m_nextId; }
    // One message per value load() set back, naming the preset, the key and
    // the key's range; for the front end to show.
    const QStringList& problems() const { return m_problems; }

    bool nameIsAcceptable(const QString& name) const;
    QString duplicateNameForPreset(int index) const;

    // Appends current as a preset named by the trimmed name, with the next id.
    // Returns its index, or -1 when the name is not acceptable.
    int addPreset(const QString& name, const ProcessingParams& current);
    // Replaces the preset at index with current, named title. The new record
    // carries no id until the next load gives it one (kept so on purpose).
    bool setPreset(int index, const ProcessingParams& current, const QString& title);
    // False, with nothing changed, when the trimmed name is not acceptable.
    bool renamePreset(int index, const QString& name);
    // Inserts a copy below index with a copy name and the next id; returns
    // the copy's index, or -1 for a bad index.
    int duplicatePreset(int index);
    bool removePreset(int index);
    // Moves the preset at from to the row boundary to (as counted before the
    // move); returns the row to select, or nothing when nothing moved.
    std::optional<int> moveTarget(int from, int to);
    // Adds a preset from elsewhere: its name, trimmed, becomes a copy name
    // when taken or refused; its id is replaced. Returns its index.
    int importPreset(ProcessingParams preset);

  private:
    bool validIndex(int index) const { return index >= 0 && index < count(); }
    int takeNextId();

    QList<ProcessingParams> m_presets;
    int m_nextId = 1;
    QStringList m_problems;
};

} // namespace quillet
