#pragma once

#include <QString>
#include <QStringList>

namespace quillet {

class ActivityLog;
class FileSystem;
class JpegtranRunner;

// Turns one JPEG in place through jpegtran, and puts back an original that an
// interrupted run left under its temporary name.
//
// While a file is being turned its original is kept under ".qlt.<name>" beside
// it (with a backup, that name is a second link to the backup in "Quillet
// Originals"). The name is removed only once the turned file is complete, so
// its presence always means a rotation that did not finish, whatever killed it.
class FileRotation {
  public:
    enum class Outcome { Rotated, Skipped, Bad };

    static constexpr char BackupFolderName[] = "Quillet Originals";

    FileRotation(JpegtranRunner& jpegtran, FileSystem& fileSystem, ActivityLog& log);

    // _rotateFile:by: degrees 90, 180 or 270, or 0 to turn (or mirror) the
    // picture upright from its orientation tag (then reset to 1). Every
    // metadata segment is kept. The user's file is never lost: on any failure
    // the original is back at its path.
    Outcome rotate(const QString& path, int degrees, bool keepBackup);

    // Puts back the original of an interrupted rotation of `path`. Returns
    // false when one is there and could not be put back; the file must then be
    // left alone.
    bool restoreLeftover(const QString& path);

    // Puts back, before a run over `paths`, the leftovers of their own
    // interrupted rotations, and those of files in the same folders that are
    // missing altogether (a file list made by the shell no longer names them).
    void restoreLeftovers(const QStringList& paths);

    // ".qlt.<name>" beside the file.
    static QString temporaryPath(const QString& path);
    // "Quillet Originals/<name>" beside the file.
    static QString backupPath(const QString& path);

    // jpegtran's arguments that turn a picture of this EXIF orientation
    // upright; none when it already is.
    static QStringList transformForOrientation(int orientation);

  private:
    // Runs jpegtran; `trimmed` tells whether the picture's partial edge
    // blocks had to go. Returns the tool's status, -1 when it did not run.
    int turn(const QString& path, const QString& source, const QStringList& transform, bool& trimmed);
    // Puts back the metadata segments of `original` that the EXIF copy left
    // out of `path`; with `uprightXmp` the XMP's orientation becomes 1.
    bool restoreSegments(const QString& original, const QString& path, bool uprightXmp);
    void putBack(const QString& path, const QString& source, const QString& marker);
    Outcome fail(const QString& format, const QString& name);

    JpegtranRunner& m_jpegtran;
    FileSystem& m_fileSystem;
    ActivityLog& m_log;
};

} // namespace quillet
