#!/usr/bin/env bash
# The editor window as it opens on common screen sizes, for docs/screenshots,
# and its results pane at 1024x768 on a refused and on a slow statement:
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

# A word where the balance filter wants a number, and an advanced filter that
# counts to a billion, both saved as a user would; the grab waits until the
# pane shows the refusal, or its busy state with Cancel.
results=$work/results
mkdir -p "$results/config" "$results/cache"
cp -r "$root/data/demo/." "$results/data"
export XDG_CONFIG_HOME="$results/config" XDG_CACHE_HOME="$results/cache"
"$viewedit" script - --views-folder "$results/data" <<'SCRIPT'
open acct
select tvwViews North Lot Weekly Payers
check lstFilters 5 on
cell lstFilters 5 Data1
type abc
key Enter
answer Yes
click cmdOK
open acct
select tvwViews Promises Next 7 Days
click cmdAdvancedFilter
set frmAcctViewAdvanced txtSQL WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x+1 FROM c WHERE x<1000000000) SELECT count(*) AS Promises FROM c
click cmdClose
answer Yes
click cmdOK
SCRIPT
for pair in "results-pane-error:North Lot Weekly Payers" "results-pane-slow:Promises Next 7 Days"; do
  xvfb-run -a -s "-screen 0 1024x768x24" "$viewedit" --views-folder "$results/data" \
    --screenshot "$out/${pair%%:*}.png" --screenshot-select "${pair#*:}" --screenshot-delay 3000
  echo "$out/${pair%%:*}.png"
done
