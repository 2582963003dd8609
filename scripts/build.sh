#!/usr/bin/env bash
# Installs what is missing, then configures and builds a preset (default: "default").
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-default}"
bash scripts/setup.sh
cmake --preset "$preset" >/dev/null
jobs="${CVVE_JOBS:-$(nproc)}"
cmake --build --preset "$preset" -j "$jobs"
