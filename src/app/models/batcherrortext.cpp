#include "app/models/batcherrortext.h"

namespace quillet {

QString BatchErrorText::title(const BatchError& error) {
    switch (error.code) {
    case BatchError::Code::FolderNotCreated:
        return tr("Error Creating Folder");
    case BatchError::Code::WriteFailed:
        return tr("Write Error");
    }
    return {};
}

QString BatchErrorText::message(const BatchError& error) {
    switch (error.code) {
    case BatchError::Code::FolderNotCreated:
        return tr("Unable to create folder '%1'. Please try creating it manually in the file manager.")
            .arg(error.folder);
    case BatchError::Code::WriteFailed:
        return tr("Unable to write in folder '%1'. Please check permission.").arg(error.folder);
    }
    return {};
}

} // namespace quillet
