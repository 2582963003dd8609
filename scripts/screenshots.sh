#!/usr/bin/env bash
# The editor window as it opens on common screen sizes, for docs/screenshots:
#   scripts/screenshots.sh [BUILD_DIR]
# Each run gets a fresh settings folder, so no remembered size is used.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
viewedit=${1:-$root/build}/apps/viewedit/viewedit
out=$root/docs/screenshots
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

shot() {  # NAME SCREEN [ENV...]
  local name=$1 screen=$2
  shift 2
  mkdir -p "$work/$name/config"
  cp -r "$root/data/demo/." "$work/$name/data"
  env XDG_CONFIG_HOME="$work/$name/config" "$@" \
    xvfb-run -a -s "-screen 0 ${screen}x24" "$viewedit" --views-folder "$work/$name/data" \
    --screenshot "$out/$name.png" --screenshot-select "North Lot Weekly Payers"
  echo "$out/$name.png"
}

shot screen-1024x768 1024x768
shot screen-1366x768 1366x768
shot screen-1920x1080 1920x1080
shot screen-2560x1440 2560x1440
shot screen-2560x1440-scale2 2560x1440 QT_SCALE_FACTOR=2
