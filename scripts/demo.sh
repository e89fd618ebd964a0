#!/usr/bin/env bash
# Installs what is missing, builds, and processes the pictures shipped in
# samples/ as one batch with the settings in the user's store: in the desktop
# application when there is a display, otherwise through the command-line tool
# (same store, same settings) into out/demo.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    exec build/release/quillet-gui samples/
fi
echo "No display (neither DISPLAY nor WAYLAND_DISPLAY is set): running the same batch with 'quillet process'."
rm -rf out/demo
build/release/quillet process --dest out/demo samples/
echo "Outputs written to $(pwd)/out/demo"
