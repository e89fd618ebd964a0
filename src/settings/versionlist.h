#pragma once

#include "settings/outputversion.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace quillet {

class PresetStore;

// The versions a batch writes, as the user names them: each entry is a
// preset's name, whose files go into a folder of that name inside the
// destination, or "NAME:SUFFIX", whose files go beside the others with SUFFIX
// added to their names. "*" stands for the batch's own settings (the window's
// current ones), written straight into the destination. The store keeps the
// window's list under "OutputVersions", which `quillet process` runs too
// unless --versions gives the entries, separated by commas.
namespace VersionList {

inline constexpr char CurrentSettings[] = "*";

struct Entry {
    QString preset; // "*" for the batch's own settings
    QString suffix;

    bool isCurrent() const { return preset == QLatin1String(CurrentSettings); }
    friend bool operator==(const Entry&, const Entry&) = default;
};

Entry parse(const QString& text);
QString text(const Entry& entry);
// "A, B:_b" gives "A" and "B:_b"; empty items are dropped.
QStringList split(const QString& commaList);

// The entries as the batch runs them; an empty list is the batch's own
// settings alone.
QStringList effective(const QStringList& entries);

struct Resolved {
    std::vector<OutputVersion> versions;
    QString error; // set when the list cannot run; nothing is to be written then
};
// The versions of `entries` with each preset's settings from `presets` and
// "*" as `current`. Refused, naming the entry: a preset the store does not
// hold, a name that cannot be a folder ("." or ".."), and two versions that
// would write the same files.
Resolved resolve(const QStringList& entries, const PresetStore& presets, const ProcessingRequest& current);

} // namespace VersionList

} // namespace quillet
