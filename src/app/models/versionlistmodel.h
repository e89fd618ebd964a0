#pragma once

#include "settings/versionlist.h"

#include <QObject>
#include <QStringList>

class QSettings;

namespace quillet {

class UserDefaults;

// The window's list of the versions every batch writes ("OutputVersions",
// settings/versionlist.h): at first the current settings alone. Rows are
// entries; each change is stored at once, so `quillet process` on the same
// store writes the same versions.
class VersionListModel : public QObject {
    Q_OBJECT
  public:
    VersionListModel(QSettings& store, UserDefaults& defaults, QObject* parent = nullptr);

    // Never empty: "*" alone when nothing is stored.
    QStringList entries() const;
    VersionList::Entry entry(int row) const { return VersionList::parse(entries().value(row)); }
    int count() const { return int(entries().size()); }
    // "Current settings" or the preset's name.
    QString title(int row) const;
    // "Writes into the destination", "... into the folder 'Web'", "... beside
    // them, names ending in '_t'", or why the row cannot run.
    QString placement(int row) const;
    // What the row's version makes ("JPEG 80 · fit 2560×2560"), with
    // `current` for the current settings; empty for a missing preset.
    QString makes(int row, const ProcessingRequest& current) const;
    // The preset a row names is not in the store (it was deleted or renamed).
    bool isMissing(int row) const;

    // The presets a row may name, in menu order, and whether the current
    // settings may still be added.
    QStringList presetNames() const;
    bool canAddCurrent() const;

    // Appends a version of the preset (or "*"); its files go into a folder of
    // its name, or the destination for "*".
    void add(const QString& preset);
    // The last row is never removed.
    void remove(int row);
    // An empty suffix puts the version's files into its own folder again.
    void setSuffix(int row, const QString& suffix);

    // The versions as the next batch runs them, with `current` for "*"; the
    // error says which row cannot run.
    VersionList::Resolved resolve(const ProcessingRequest& current) const;

  Q_SIGNALS:
    void changed();

  private:
    void store(const QStringList& entries);

    QSettings& m_store;
    UserDefaults& m_defaults;
};

} // namespace quillet
