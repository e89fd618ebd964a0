#!/usr/bin/env bash
# Installs what is missing, builds, and converts the pictures shipped in
# samples/ into out/demo.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh release
rm -rf out/demo
build/release/quillet process --rotate auto --fit 320x320 --quality 85 --dest out/demo samples/
echo "Outputs written to $(pwd)/out/demo"
