#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite: the release
# build with warnings as errors, then the metadata suites under
# AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh ci
ctest --test-dir build/release --output-on-failure -j2
scripts/build.sh asan
ctest --test-dir build/asan --output-on-failure -R '^metadata_'
