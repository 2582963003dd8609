#!/usr/bin/env bash
# Sets up, builds the Release benchmark preset and runs the benchmarks that
# docs/performance.md reports, each printing its ratios against the targets.
#
#   scripts/bench.sh            the editor's benchmarks and the reports at 100,000 accounts
#   scripts/bench.sh --all      also 1,000,000 accounts (first page, peak memory) and callgrind
#   scripts/bench.sh NAME...    only these: sql browse gui report report-1m report-instructions
#
# A benchmark's own output goes to standard output as it runs; the machine's
# load average is printed before each, since it weighs on the wall times.
set -euo pipefail
cd "$(dirname "$0")/.."

all=(sql browse gui report)
if [[ "${1:-}" == "--all" ]]; then
  all+=(report-1m report-instructions)
  shift
fi
(($# > 0)) && all=("$@")

bash scripts/build.sh bench
b=build-bench/bench

heading() { printf '\n=== %s (%s)\n' "$1" "$(uptime | sed 's/.*load average/load average/')"; }

for name in "${all[@]}"; do
  case "$name" in
    sql) heading "viewedit sql"; "$b/sql_bench" ;;
    browse) heading "opening a file set"; "$b/browse_bench" ;;
    gui)
      heading "the window, offscreen"
      QT_QPA_PLATFORM=offscreen "$b/gui_bench"
      heading "the window, on X11 (Xvfb)"
      env -u QT_QPA_PLATFORM xvfb-run -a -s '-screen 0 1280x1024x24' "$b/gui_bench"
      ;;
    report)
      heading "reports, 100,000 accounts"
      "$b/report_bench" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true
      ;;
    report-1m)
      heading "reports, 1,000,000 accounts: first page and peak memory"
      "$b/report_bench" --accounts=1000000 --benchmark_filter='FirstPage|BareFirstRow' --rss
      ;;
    report-instructions)
      heading "reports to PDF in callgrind instructions, 100,000 accounts"
      "$b/report_bench" --instructions=100000 --benchmark_filter=NONE
      ;;
    *) echo "bench.sh: unknown benchmark '$name'" >&2; exit 2 ;;
  esac
done
