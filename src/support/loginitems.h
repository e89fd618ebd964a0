#pragma once

#include "support/filesystem.h"

#include <QList>
#include <QString>

#include <functional>

namespace quillet {

// The programs the desktop starts at login: the ".desktop" files of the XDG
// autostart folder. An item is known by its program's path; programs are
// told apart by the path's last component, so one program moved to another
// folder replaces its old item.
class LoginItems {
  public:
    struct Item {
        QString path; // the program, the first word of the entry's Exec
        bool hide;    // to start without showing a window
        QString file; // the entry's file in the folder
    };

    explicit LoginItems(QString folder = standardFolder(), FileSystem& fs = FileSystem::standard());

    // $XDG_CONFIG_HOME/autostart, ~/.config/autostart by default.
    static QString standardFolder();

    // Every entry that starts a program; entries marked Hidden (the desktop's
    // way of switching one off) and files without an Exec line are left out.
    QList<Item> items() const;
    // Removes the entries of every program with the same last component, then
    // adds one for `path`. False when a file could not be written or removed.
    bool add(const QString& path, bool hide);
    // Removes the entries whose program's last component is `name`.
    bool removeNamed(const QString& name);
    // Removes the entries whose program is exactly `path`.
    bool removeWithPath(const QString& path);
    // Whether some entry starts a program whose last component is `name`.
    bool launches(const QString& name) const;

    // The Exec value that runs `path` with no arguments, and the program a
    // value runs (its first word, unquoted).
    static QString execValue(const QString& path);
    static QString programOf(const QString& exec);

  private:
    bool removeWhere(const std::function<bool(const Item&)>& match);

    QString m_folder;
    FileSystem& m_fs;
};

} // namespace quillet
