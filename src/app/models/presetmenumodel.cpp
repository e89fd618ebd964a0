#include "app/models/presetmenumodel.h"

#include "app/models/settingsmodel.h"
#include "settings/userdefaults.h"

#include <QSettings>

namespace quillet {

namespace {

int idAt(const PresetStore& presets, int index) {
    return presets.presets().at(index).intValue(QString::fromLatin1(ParamKey::Id));
}

QVariantList storedForm(const PresetStore& presets) {
    QVariantList list;
    for (const ProcessingParams& preset : presets.presets())
        list.append(preset.values());
    return list;
}

} // namespace

PresetMenuModel::PresetMenuModel(UserDefaults& defaults, SettingsModel& settings, QObject* parent)
    : QObject(parent), m_defaults(defaults), m_settings(settings),
      m_presets(PresetStore::load(defaults.store())) {}

void PresetMenuModel::select(int menuIndex) {
    if (menuIndex > 0 && menuIndex <= m_presets.count()) {
        m_selected = menuIndex;
        m_selectedId = idAt(m_presets, menuIndex - 1);
        m_settings.load(m_presets.presets().at(menuIndex - 1));
    } else {
        m_selected = 0;
        m_selectedId = 0;
        m_settings.reset();
    }
    m_defaults.setInt(QLatin1String(SelectedKey), m_selected);
    Q_EMIT changed();
}

void PresetMenuModel::restoreSelection() {
    const int stored = m_defaults.intValue(QLatin1String(SelectedKey));
    // The window keeps its own settings between starts; only a chosen preset
    // is applied over them.
    if (stored > 0 && stored <= m_presets.count())
        select(stored);
}

bool PresetMenuModel::nameIsAcceptable(const QString& typed) const {
    return m_presets.nameIsAcceptable(typed.trimmed());
}

bool PresetMenuModel::addPreset(const QString& typed) {
    const int index = m_presets.addPreset(typed, m_settings.request().toRecord());
    if (index < 0)
        return false;
    selectId(idAt(m_presets, index));
    save();
    return true;
}

void PresetMenuModel::storeIntoSelected() {
    if (!canStore())
        return;
    m_presets.setPreset(m_selected - 1, m_settings.request().toRecord(), titles().at(m_selected));
    save();
}

void PresetMenuModel::endEditing(bool keep) {
    m_editing = false;
    if (keep)
        save();
    else
        revert();
    selectId(m_selectedId);
}

void PresetMenuModel::revert() {
    m_presets.revert(m_defaults.store());
}

void PresetMenuModel::reload() {
    if (m_editing)
        return;
    QSettings& store = m_defaults.store();
    store.sync();
    if (store.value(QLatin1String(PresetStore::PresetsKey)).toList() == storedForm(m_presets))
        return;
    m_presets = PresetStore::load(store);
    // Only the menu follows: the settings may have been changed since the
    // preset was applied, and another program's edit must not undo that.
    const int index = m_selected > 0 ? m_presets.indexOfId(m_selectedId) : -1;
    m_selected = index + 1;
    if (index < 0)
        m_selectedId = 0;
    m_defaults.setInt(QLatin1String(SelectedKey), m_selected);
    Q_EMIT changed();
}

void PresetMenuModel::selectId(int id) {
    // Id 0 is "None". A preset stored into keeps no id until the store is
    // read again, so the menu falls back to "None" after the manager then.
    select(id > 0 ? m_presets.indexOfId(id) + 1 : 0);
}

void PresetMenuModel::save() {
    if (!m_presets.save(m_defaults.store()))
        Q_EMIT saveFailed();
}

} // namespace quillet
