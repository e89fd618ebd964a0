#!/usr/bin/env bash
# Installs what is missing, builds, and processes the pictures shipped in
# samples/ as one batch: in the desktop application when there is a display,
# otherwise through the command-line tool into out/demo.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release
if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
    exec build/release/quillet-gui samples/
fi
echo "No display (neither DISPLAY nor WAYLAND_DISPLAY is set): running the same batch with 'quillet process'."
rm -rf out/demo
build/release/quillet process --rotate auto --fit 320x320 --quality 85 --dest out/demo samples/
echo "Outputs written to $(pwd)/out/demo"
