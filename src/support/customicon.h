#pragma once

#include <QString>

namespace quillet {

// A file's custom icon, made from its own picture. On Linux desktops this is
// the freedesktop thumbnail cache: 128 and 256 pixel PNGs under
// $XDG_CACHE_HOME/thumbnails/{normal,large}, named by the MD5 of the file URI
// and tagged with Thumb::URI and Thumb::MTime, which file managers show as the
// file's icon. Failures are reported by the return value and otherwise ignored.
namespace CustomIcon {

// _setCustomIconForPath:
bool setForFile(const QString& path);
bool removeFromFile(const QString& path);
// Where the thumbnail of the given size (128 or 256) for the file lives.
QString thumbnailPath(const QString& path, int size);

} // namespace CustomIcon

} // namespace quillet
