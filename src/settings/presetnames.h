#pragma once

#include <QString>
#include <QStringList>

namespace quillet {

// The naming rules of the preset store, kept apart from any widget so the
// command-line tool and the desktop application share them.
namespace PresetNames {

// The title of menu item 0, which is no preset; no preset may be called so.
inline constexpr char NoneTitle[] = "None";

// Refused: a null or empty name, "None", or a name already in use (a preset
// being renamed to its own name included). The caller trims first.
bool isAcceptable(const QString& name, const QStringList& existing);

// At least 6 characters and the last 5 are " copy".
bool endsInCopy(const QString& name);

// The name for a duplicate of a preset called name. "A" gives "A copy", or
// "A copy 2" when that exists (the counter has already moved on), while
// "A copy" gives "A copy 1", "A copy 2", ... The asymmetry is intended.
QString duplicateName(const QString& name, const QStringList& existing);

// "None", then each name; empty names become "Untitled 0", "Untitled 1", ...
// counting only the nameless ones.
QStringList menuTitles(const QStringList& names);

} // namespace PresetNames

} // namespace quillet
