#pragma once

#include <QByteArray>
#include <QString>

namespace quillet {

// The file-system calls of a batch that tests must be able to make fail: a
// folder that cannot be created, a write that does not land, a copy that does
// not happen. The engine reaches the disk for writing only through this.
class BatchFileSystem {
  public:
    virtual ~BatchFileSystem() = default;

    // Creates the folder and its missing parents; true when it exists afterwards.
    virtual bool makePath(const QString& dir);
    // Writes the bytes so that the path holds either its old content or all of
    // the new one: a temporary file in the same folder, then a rename.
    virtual bool writeAtomically(const QString& path, const QByteArray& bytes);
    // Copies a regular file to a path that does not exist yet.
    virtual bool copyFile(const QString& source, const QString& destination);

    // The shared plain implementation.
    static BatchFileSystem& standard();
};

} // namespace quillet
