#!/usr/bin/env bash
# Installs what is missing, checks the sources' format, builds, and runs the
# whole test suite: the release
# build with warnings as errors, then the suites of the code that works on raw
# bytes (metadata and the resampler) under AddressSanitizer and
# UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/check-format.sh
scripts/build.sh ci
ctest --test-dir build/release --output-on-failure -j2
scripts/build.sh asan
ctest --test-dir build/asan --output-on-failure -R '^(metadata_|engine_geometry_resampler_)'
