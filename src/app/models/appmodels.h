#pragma once

#include "app/models/activitylogmodel.h"
#include "app/models/creatormenu.h"
#include "app/models/destinationlist.h"
#include "app/models/inplacemodel.h"
#include "app/models/inspectormodel.h"
#include "app/models/presetmenumodel.h"
#include "app/models/previewmodel.h"
#include "app/models/renamingmodel.h"
#include "app/models/settingsmodel.h"
#include "app/models/versionlistmodel.h"
#include "settings/userdefaults.h"

#include <QSettings>

#include <memory>

namespace quillet {

// Every model of the window, made once at start on the settings store
// (SettingsStore::open). Each window and the controller take the models they
// show or use from here; none of them hands its parts to another.
class AppModels {
  public:
    AppModels();
    AppModels(const AppModels&) = delete;
    AppModels& operator=(const AppModels&) = delete;

    QSettings& store() { return *m_store; }
    UserDefaults& defaults() { return m_defaults; }
    // The processing settings; every change is written to the store.
    SettingsModel& settings() { return m_settings; }
    RenamingModel& renaming() { return m_renaming; }
    ActivityLogModel& log() { return m_log; }
    DestinationList& destinations() { return m_destinations; }
    CreatorMenu& creators() { return m_creators; }
    // The picture of the queue as the next batch would write it.
    PreviewModel& preview() { return m_preview; }
    // The presets, shared with `quillet presets`; the one chosen last is
    // applied again at start.
    PresetMenuModel& presets() { return m_presets; }
    // The inspector's list of pictures.
    InspectorModel& inspector() { return m_inspector; }
    // The in-place panel: lossless rotation, file dates, icons.
    InplaceModel& inplace() { return m_inplace; }
    // The versions each batch writes.
    VersionListModel& versions() { return m_versions; }

  private:
    void storeSettings();

    std::unique_ptr<QSettings> m_store;
    UserDefaults m_defaults;
    SettingsModel m_settings;
    RenamingModel m_renaming;
    ActivityLogModel m_log;
    DestinationList m_destinations;
    CreatorMenu m_creators;
    PreviewModel m_preview;
    PresetMenuModel m_presets;
    InspectorModel m_inspector;
    InplaceModel m_inplace;
    VersionListModel m_versions;
};

} // namespace quillet
