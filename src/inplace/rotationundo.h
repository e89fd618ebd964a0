#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace quillet {

class ActivityLog;
class FileSystem;

// The originals that one rotation run with backups kept can put back. For
// each file turned it notes what the turned file and its backup in "Quillet
// Originals" looked like when the run left them, so that an original never
// goes back over a file changed since, nor a file from a later run.
//
// The backup is the original file itself, moved aside, so putting it back is
// one rename: its bytes, dates and attributes come back as they were.
class RotationUndo {
  public:
    // Notes that `path` has just been turned and its original kept as its
    // backup. A file turned twice in one run keeps its latest backup only,
    // as the backup folder does.
    void add(const QString& path);
    bool isEmpty() const { return m_entries.isEmpty(); }
    // The files noted, in the order they were turned.
    QStringList files() const;
    // True when the original of at least one file can still come back.
    bool canRestore() const;

    // Puts back the original of `path` in place of the turned file and logs
    // what became of it; removes the backup folder once it is empty. True when
    // the original is back; the file is forgotten either way.
    bool restore(const QString& path, FileSystem& fileSystem, ActivityLog& log);

  private:
    // Enough of a file's identity to tell whether it changed: the same inode
    // with the same length and modification time.
    struct Stamp {
        dev_t device = 0;
        ino_t inode = 0;
        off_t size = -1;
        long long modifiedNs = 0;
        bool operator==(const Stamp&) const = default;
    };
    struct Entry {
        QString path;
        Stamp turned;
        Stamp backup;
    };

    static Stamp stampOf(const QString& path);
    static bool unchanged(const Entry& entry);

    QList<Entry> m_entries;
};

} // namespace quillet
