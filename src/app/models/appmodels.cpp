#include "app/models/appmodels.h"

#include "support/settingsstore.h"

namespace quillet {

AppModels::AppModels()
    : m_store(SettingsStore::open()), m_defaults(*m_store), m_renaming(*m_store), m_destinations(m_defaults),
      m_creators(m_defaults), m_preview(m_settings, m_renaming), m_presets(m_defaults, m_settings),
      m_inspector(m_renaming), m_inplace(m_log, m_defaults), m_versions(*m_store, m_defaults) {
    // The window starts with the settings it was left with, which are also
    // what the command-line tool uses with the same store.
    m_settings.load(m_defaults.processingParams());
    QObject::connect(&m_settings, &SettingsModel::changed, [this] { storeSettings(); });
    m_presets.restoreSelection();
}

void AppModels::storeSettings() {
    // A resolution field emptied for typing a new value is not stored: the
    // record would be set back to 72 under the user's fingers.
    if (m_settings.isStorable())
        m_defaults.setProcessingParams(m_settings.record());
}

} // namespace quillet
