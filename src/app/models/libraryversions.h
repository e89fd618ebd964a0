#pragma once

#include <QList>
#include <QString>

namespace quillet {

// The libraries the application is built on, with the versions in use, for
// the about box.
class LibraryVersions {
  public:
    struct Library {
        QString name;
        QString version; // "not available" when it cannot be found
    };

    // Qt, libvips, libjpeg-turbo and libheif. Qt's, libvips's and libheif's
    // are those of the libraries loaded; libjpeg-turbo tells its version only
    // to the programs built against it, so that one is the version we were
    // built with.
    static QList<Library> all();
};

} // namespace quillet
