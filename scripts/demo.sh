#!/usr/bin/env bash
# Sets up, builds and opens the editor on the demo account views. Without a
# display it runs the window under a virtual one when xvfb-run is there and
# CVVE_HEADLESS is not set; with CVVE_HEADLESS=1 it prints what the host's
# list window would show instead: the demo profiles and the first rows of one.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/build.sh default
viewedit=./build/apps/viewedit/viewedit
if [[ -n "${CVVE_HEADLESS:-}" ]]; then
  "$viewedit" list acct
elif [[ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
  exec "$viewedit" "$@"
else
  echo "demo: no display; showing the demo profiles and rows (run under a desktop for the window)" >&2
  "$viewedit" list acct
fi
