#pragma once

#include "settings/settingkey.h"

#include <QList>
#include <QString>

namespace quillet {

// Keys of the settings store other than the record keys of ParamKey.
namespace StoreKey {
// The main window's application settings.
inline constexpr char Destinations[] = "Destinations";
inline constexpr char SelectedDestination[] = "SelectedDestination";
inline constexpr char ResolutionSet[] = "ResolutionSet";
inline constexpr char Creators[] = "Creators";
inline constexpr char SelectedCreator[] = "SelectedCreator";
inline constexpr char CopyNonImageFiles[] = "CopyNonImageFiles";
inline constexpr char SetCreationDate[] = "SetCreationDate";
inline constexpr char SetModificationDate[] = "SetModificationDate";
inline constexpr char HideExtension[] = "HideExtension";
inline constexpr char CustomIcon[] = "CustomIcon";
inline constexpr char ActivityLogVisible[] = "ActivityLogVisible";
inline constexpr char InspectorVisible[] = "InspectorVisible";
inline constexpr char PreviewVisible[] = "PreviewVisible";
inline constexpr char ShowAutoRotateHint[] = "ShowAutoRotateHint";
inline constexpr char ShowCustomIconHint[] = "ShowCustomIconHint";
// The versions every batch writes (settings/versionlist.h).
inline constexpr char OutputVersions[] = "OutputVersions";
// Set once the note that text shadows are unsupported has been silenced.
inline constexpr char SUMS[] = "SUMS";
// Preferences.
inline constexpr char SingleFile[] = "SingleFile";
inline constexpr char RevealFolder[] = "RevealFolder";
inline constexpr char HideOnDeactivate[] = "HideOnDeactivate";
inline constexpr char HideToolTips[] = "HideToolTips";
inline constexpr char BrushMetal[] = "BrushMetal";
inline constexpr char OnTheFlyFolder[] = "OnTheFlyFolder";
// The renaming scheme. "DateFallbackTag" has no "Rename" in front; stored
// settings use it so.
inline constexpr char SelectedRename[] = "SelectedRename";
inline constexpr char RenamePrefix[] = "RenamePrefix";
inline constexpr char RenameSuffix[] = "RenameSuffix";
inline constexpr char RenameDigits[] = "RenameDigits";
inline constexpr char RenameStartFrom[] = "RenameStartFrom";
inline constexpr char RenameDateFormatTag[] = "RenameDateFormatTag";
inline constexpr char RenameConflictFormatTag[] = "RenameConflictFormatTag";
inline constexpr char DateFallbackTag[] = "DateFallbackTag";
// The in-place panel.
inline constexpr char KeepBackup[] = "KeepBackup";
inline constexpr char InplaceVisible[] = "InplaceVisible";
// The preset store.
inline constexpr char Presets[] = "Presets";
inline constexpr char PresetsDictionaries[] = "PresetsDictionaries";
inline constexpr char SelectedPreset[] = "SelectedPreset";
// The update checker: the day the next automatic check is due.
inline constexpr char NextCheckVersion[] = "NextCheckVersion";
// Where the update checker asks ("host" or "host:port"); empty: never.
inline constexpr char UpdateServer[] = "UpdateServer";
// The maker's web pages and mail address, for the about box and the help menu.
inline constexpr char HomePage[] = "HomePage";
inline constexpr char ContactAddress[] = "ContactAddress";
// Whether the sizing fields under the sizing mode are unfolded.
inline constexpr char ScaleOptionsExpanded[] = "ScaleOptionsExpanded";
} // namespace StoreKey

// Every key of the settings store with its type, owner, default and allowed
// values: the one description that the reset record, the registered
// defaults, preset files and the command line all read.
namespace SettingsSchema {

// Every key: the processing record's keys in the order a record lists them,
// then the others by owner.
const QList<SettingKey>& keys();
// The key's entry, or null for a key the schema does not know.
const SettingKey* find(const QString& key);
// The entry of a key named in this program's own code. An unknown name is a
// programming error; it gets a bare string entry rather than a crash.
const SettingKey& entry(const char* key);
// The keys of one owner, in table order.
QList<const SettingKey*> group(SettingGroup group);

} // namespace SettingsSchema

} // namespace quillet
