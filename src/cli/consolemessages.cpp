#include "cli/consolemessages.h"

namespace quillet {

QString ConsoleMessages::batchError(const BatchError& error) {
    switch (error.code) {
    case BatchError::Code::FolderNotCreated:
        return QStringLiteral("Error Creating Folder: Unable to create folder '%1'. Please try creating it "
                              "manually in the file manager.")
            .arg(error.folder);
    case BatchError::Code::WriteFailed:
        return QStringLiteral("Write Error: Unable to write in folder '%1'. Please check permission.")
            .arg(error.folder);
    }
    return {};
}

QString ConsoleMessages::inplaceAlert(InplaceAlert alert) {
    switch (alert) {
    case InplaceAlert::NonJpegFiles:
        return QStringLiteral("Non-JPEG Files: Lossless JPEG operations can only be performed on JPEG "
                              "files. Non-JPEG files ignored.");
    }
    return {};
}

} // namespace quillet
