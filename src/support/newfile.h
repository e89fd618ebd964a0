#pragma once

#include "support/file.h"

#include <QByteArray>

#include <sys/types.h>

namespace quillet {

// The permissions a plain create gives a new file under the process's umask.
mode_t defaultCreateMode();

// A file being written to take the place of another. It is made in the
// target's folder without a name (O_TMPFILE): if the process dies before the
// file is named, the kernel deletes it, so a killed run never leaves a
// half-written file behind. Where the file system offers no unnamed files it
// gets a hidden temporary name instead, removed again unless published.
class NewFile {
  public:
    // A file that could not be made (errno tells why).
    NewFile() = default;
    // Made beside `target`; check isOpen().
    static NewFile beside(const QByteArray& target);
    ~NewFile();
    NewFile(NewFile&& other) noexcept;
    NewFile& operator=(NewFile&&) = delete;
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    bool isOpen() const { return bool(m_file); }
    File& stream() { return m_file; }
    // Finishes the writing and gives the file a hidden name beside its target
    // (".<name>.new-<random>", or its temporary name), with the permissions a
    // plain create gives. Returns that name, which the caller then owns; empty
    // when the data did not all reach the file or no name could be given.
    QByteArray publish();

  private:
    File m_file;
    QByteArray m_temporaryName; // the fallback's name while it is ours to remove
};

} // namespace quillet
