#pragma once

#include "settings/settingkey.h"

#include <QList>

namespace quillet {

// The rows of SettingsSchema, built once by it; read them through SettingsSchema.
QList<SettingKey> settingsTable();

} // namespace quillet
