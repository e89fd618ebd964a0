#!/usr/bin/env bash
# Builds the Debian package into build/package/: a release build without the
# test suites, installed under /usr by CPack's DEB generator, its library
# dependencies found by dpkg-shlibdeps.
#   apt-get install ./build/package/quillet_*.deb
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
out=build/package
cmake -S . -B "$out/build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLET_WERROR=ON \
  -DQUILLET_BUILD_TESTS=OFF -DCMAKE_INSTALL_PREFIX=/usr -DCMAKE_SKIP_INSTALL_ALL_DEPENDENCY=ON >/dev/null
cmake --build "$out/build" --target quillet quillet-gui
rm -f "$out"/quillet_*.deb
# Only the two programs are installed, so only they need building.
(cd "$out/build" && cpack -G DEB -B "$PWD/..")
rm -rf "$out/_CPack_Packages"
ls "$out"/quillet_*.deb
