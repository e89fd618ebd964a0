#pragma once

#include <QString>

namespace quillet {

// The file-system calls the in-place operations make on the user's files.
// Virtual so that tests can make one of them fail (a read-only folder, a
// rename that fails half-way through a rotation).
class InplaceFileSystem {
  public:
    virtual ~InplaceFileSystem() = default;

    // Renames, replacing whatever is at `to` in one step.
    virtual bool rename(const QString& from, const QString& to);
    virtual bool remove(const QString& path);
    // A second name for the file's contents: a hard link, or a copy where the
    // file system has no links. Fails when `newPath` exists.
    virtual bool link(const QString& existing, const QString& newPath);
    // True when a folder stands at `path` afterwards; an existing folder is used.
    virtual bool makeFolder(const QString& path);

    // True when both paths name the same file (same device and inode).
    static bool sameFile(const QString& a, const QString& b);
    // True when there is anything at `path`, a dangling symbolic link included.
    static bool exists(const QString& path);

    // The real file system, shared by every caller.
    static InplaceFileSystem& standard();
};

} // namespace quillet
