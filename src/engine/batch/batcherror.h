#pragma once

#include <QString>

namespace quillet {

// What ended a worker of the batch before its last file. The batch reports
// the last one after every worker has ended; the shell words it for the user.
struct BatchError {
    enum class Code { FolderNotCreated, WriteFailed };

    Code code;
    // The output folder that could not be made, or the one a file could not
    // be written in.
    QString folder;
};

} // namespace quillet
