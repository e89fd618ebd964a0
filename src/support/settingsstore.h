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

// Writes one value. QSettings writes an empty list to an INI file as
// @Invalid(), which reads back as no value at all; an empty list is written as
// empty text instead, which the store's list readers take for an empty list.
void setValue(QSettings& store, const QString& key, const QVariant& value);

} // namespace SettingsStore

} // namespace quillet
