#pragma once

#include "support/file.h"
#include "support/newfile.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <ctime>
#include <functional>

namespace quillet {

// Every call through which the core changes the user's disk, so that a test
// can make any of them fail (a full disk, a read-only folder, a rename refused
// half-way through a rotation) and every component sees the failure the same
// way.
//
// The virtual calls follow the system calls they are named after: paths are
// the file names' own bytes, and a failure returns false (or a closed file)
// with errno set. The helpers below them are built only on those calls, so a
// failure injected into, say, write() is also a failed copy or atomic write.
class FileSystem {
  public:
    virtual ~FileSystem() = default;

    // fopen.
    virtual File open(const QByteArray& path, const char* mode);
    // A new file for writing that is to take the place of `target`.
    virtual NewFile create(const QByteArray& target);
    // Writes all of the bytes to the stream; false on any short write.
    virtual bool write(File& file, const void* data, std::size_t size);

    // rename: replaces whatever is at `to` in one step.
    virtual bool rename(const QByteArray& from, const QByteArray& to);
    // unlink.
    virtual bool remove(const QByteArray& path);
    // A hard link; fails when `newPath` exists.
    virtual bool link(const QByteArray& existing, const QByteArray& newPath);
    // mkdir of one folder whose parent exists.
    virtual bool makeFolder(const QByteArray& path);
    // rmdir: removes an empty folder only.
    virtual bool removeFolder(const QByteArray& path);

    // Extended attributes; attribute() is empty when absent or unreadable.
    virtual bool setAttribute(const QByteArray& path, const char* name, const QByteArray& value);
    virtual QByteArray attribute(const QByteArray& path, const char* name);
    virtual bool removeAttribute(const QByteArray& path, const char* name);
    // utimensat relative to the working folder, following links.
    virtual bool setTimes(const QByteArray& path, const struct timespec times[2]);

    // Creates the folder and its missing parents; true when it exists afterwards.
    bool makePath(const QString& dir);
    // True when a folder stands at `path` afterwards; an existing one is used.
    bool ensureFolder(const QString& path);
    // Writes a new file beside `target` through `fill` and returns its
    // temporary hidden name, which the caller then owns; empty on failure,
    // with nothing left behind.
    QByteArray writeBeside(const QByteArray& target, const std::function<bool(File&)>& fill);
    // The path then holds either its old content or all of the new bytes.
    bool writeAtomically(const QString& path, const QByteArray& bytes);
    // Copies a regular file, with its permissions, to a path that does not
    // exist yet. A failed copy leaves nothing at the destination.
    bool copyFile(const QString& source, const QString& destination);
    // A second name for the file's contents: a hard link, or a copy where the
    // file system has no links. Fails when `newPath` exists.
    bool linkOrCopy(const QString& existing, const QString& newPath);

    // True when both paths name the same file (same device and inode).
    static bool sameFile(const QString& a, const QString& b);
    // True when there is anything at `path`, a dangling symbolic link included.
    static bool exists(const QString& path);

    // The real file system, shared by every caller.
    static FileSystem& standard();
};

} // namespace quillet
