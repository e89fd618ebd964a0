#include "app/models/libraryversions.h"

#include <QCoreApplication>
#include <QtGlobal>

#include <vips/vips.h>

#include <dlfcn.h>

#if __has_include(<jconfig.h>)
#include <jconfig.h>
#endif

namespace quillet {

namespace {

#define QUILLET_TEXT(x) #x
#define QUILLET_EXPANDED_TEXT(x) QUILLET_TEXT(x)

QString notAvailable() {
    return QCoreApplication::translate("LibraryVersions", "not available");
}

// libvips loads libheif with its HEIF module, on demand; the version is asked
// of the library itself, which need not be loaded yet.
QString heifVersion() {
    void* library = dlopen("libheif.so.1", RTLD_LAZY | RTLD_LOCAL);
    if (!library)
        return notAvailable();
    using VersionFunction = const char* (*)();
    auto version = reinterpret_cast<VersionFunction>(dlsym(library, "heif_get_version"));
    const QString text = version ? QString::fromLatin1(version()) : notAvailable();
    dlclose(library);
    return text;
}

} // namespace

QList<LibraryVersions::Library> LibraryVersions::all() {
#ifdef LIBJPEG_TURBO_VERSION
    const QString jpeg = QStringLiteral(QUILLET_EXPANDED_TEXT(LIBJPEG_TURBO_VERSION));
#else
    const QString jpeg = notAvailable();
#endif
    return {{QStringLiteral("Qt"), QString::fromLatin1(qVersion())},
            {QStringLiteral("libvips"), QString::fromLatin1(vips_version_string())},
            {QStringLiteral("libjpeg-turbo"), jpeg},
            {QStringLiteral("libheif"), heifVersion()}};
}

} // namespace quillet
