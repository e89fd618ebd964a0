#!/usr/bin/env bash
# Installs what is missing, checks the sources' format, builds, and runs the
# whole test suite: the release
# build with warnings as errors, then the suites of the code that works on raw
# bytes (metadata, the resampler and the block average) under AddressSanitizer and
# UndefinedBehaviorSanitizer, then the threaded suites (the batch, the in-place
# operations and the window) under ThreadSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/check-format.sh
scripts/build.sh ci
ctest --test-dir build/release --output-on-failure -j2
scripts/build.sh asan
ctest --test-dir build/asan --output-on-failure -R '^(metadata_|engine_geometry_resampler_|engine_geometry_boxshrink_)'
# Only the ThreadSanitizer suites and what they link are built: the suites are
# listed by name once the build is configured.
tsan_suites='^(engine_batch_|inplace_|app_)'
cmake --preset tsan >/dev/null
mapfile -t tsan_targets < <(ctest --test-dir build/tsan -N -R "$tsan_suites" | sed -n 's/^ *Test *#[0-9]*: //p')
cmake --build --preset tsan --target "${tsan_targets[@]}"
ctest --test-dir build/tsan --output-on-failure -R "$tsan_suites"
