#pragma once

#include <QString>

class QMimeData;
class QUrl;

namespace quillet {

// What the application asks of the desktop around it; tests put a recorder
// in its place so a batch does not open windows of other programs.
class DesktopServices {
  public:
    virtual ~DesktopServices() = default;
    // Shows the folder in the file manager.
    virtual void revealFolder(const QString& folder) = 0;
    // Opens the file with the desktop's default application for it.
    virtual void openFile(const QString& path) = 0;
    // Puts the picture at `path` on the clipboard (clipboardData).
    virtual void copyToClipboard(const QString& path) = 0;
    // Opens a web page, a mail or a help page in the desktop's program for it.
    virtual void openUrl(const QUrl& url);

    // The file manager's ShowItems on the session bus, falling back to
    // opening the folder; the default handler; the system clipboard.
    static DesktopServices& standard();

    // The picture as "image/tiff" (encoded by libvips), its path as text and
    // as a file URL; null when the file cannot be read as a picture.
    static QMimeData* clipboardData(const QString& path);
};

} // namespace quillet
