#pragma once

#include <QSettings>

#include <memory>

namespace quillet {

// The one settings store shared by the command-line tool and the desktop
// application: QSettings for organisation "Korvane", application "Quillet".
// When the environment variable QUILLET_SETTINGS names a file, that INI file
// is used instead, which is how tests and scripted runs get a scratch store.
namespace SettingsStore {

inline constexpr char EnvironmentVariable[] = "QUILLET_SETTINGS";

std::unique_ptr<QSettings> open();

// Points every later open() at the given INI file (empty: back to the
// environment / user store). Used by the command-line option --settings.
void overridePath(const QString& iniPath);

} // namespace SettingsStore

} // namespace quillet
