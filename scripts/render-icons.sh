#!/usr/bin/env bash
# Renders the application icon's PNG sizes for the hicolor theme from the
# hand-drawn SVG. The PNGs are committed, so a build needs no SVG renderer;
# run this after changing data/icons/com.korvane.Quillet.svg.
set -euo pipefail
cd "$(dirname "$0")/../data/icons"
command -v rsvg-convert >/dev/null || { echo "rsvg-convert is missing: apt-get install librsvg2-bin" >&2; exit 1; }
id=com.korvane.Quillet
for size in 16 22 24 32 48 64 128 256 512; do
  mkdir -p "hicolor/${size}x${size}/apps"
  rsvg-convert -w "$size" -h "$size" "$id.svg" -o "hicolor/${size}x${size}/apps/$id.png"
done
