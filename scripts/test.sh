#!/usr/bin/env bash
# Sets up, builds and runs every test: the full build (core, window, report
# engine, launcher, scripts, fuzz replays), then the core tests again under
# AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
export QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-offscreen}"
jobs="${CVVE_JOBS:-$(nproc)}"

bash scripts/build.sh default
ctest --preset default -j "$jobs"

bash scripts/build.sh asan
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --preset asan -j "$jobs"
