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
    // What the list shows of one entry.
    struct Row {
        QString title;        // "Current settings" or the preset's name
        QString makes;        // "JPEG 80 · fit 2560×2560"; empty for a missing preset
        QString suffix;       // empty: the version has a folder of its own
        QString placement;    // "Into the destination", "Into the folder 'Web'",
                              // "Names ending in '_t'", or why the row cannot run
        bool missing = false; // the preset is not in the store (deleted or renamed)
    };
    // Every row, the store's presets read once, with `current` for the
    // current settings.
    QList<Row> rows(const ProcessingRequest& current) const;

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
