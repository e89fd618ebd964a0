#pragma once

#include <QString>

namespace quillet {

// The last path component split at its last dot. A leading dot (".profile")
// starts the name, not an extension.
QString fileExtension(const QString& path);
QString fileBaseName(const QString& path);

// The display kind of a file, from its extension: "JPEG", "TIFF", "PNG",
// "GIF", "Photoshop", or else the extension itself in upper case (empty when
// the name has none).
QString kindFromPath(const QString& path);

} // namespace quillet
