# The Debian package, made by CPack's DEB generator (scripts/package.sh).
# Its library dependencies come from the programs' links (dpkg-shlibdeps);
# the rest are what the programs start or load by name at run time.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillet)
set(CPACK_PACKAGE_VENDOR Korvane)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "batch image processor: convert, resize, watermark and rename pictures")
set(CPACK_PACKAGE_DESCRIPTION
    "Quillet converts pictures and folder trees of pictures into an output tree that
mirrors the input: rotation, eight sizing modes, JPEG, PNG or TIFF output with a
file-size limit, EXIF kept, image and text watermarks, a renaming scheme and
presets. It also rotates JPEG files losslessly in place and sets file dates from
EXIF. The package holds the desktop application quillet-gui and the
command-line tool quillet.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Korvane <quillet@korvane.example>")
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://korvane.example/quillet/")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# jpegtran for the lossless rotation; Qt's platform plugins (only recommended
# by its GUI library) for the window; the text watermark's font.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libjpeg-turbo-progs, qt6-qpa-plugins, fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
