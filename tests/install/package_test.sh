#!/usr/bin/env bash
# package_test.sh BUILD_DIR WORK_DIR: builds the Debian package with CPack,
# checks its contents and dependencies, and runs lintian on it (errors fail).
set -euo pipefail
build=$1 work=$2
source "$(dirname "$0")/check_files.sh"
fail() { echo "FAIL: $*" >&2; exit 1; }

rm -rf "$work" && mkdir -p "$work"
(cd "$work" && cpack -G DEB --config "$build/CPackConfig.cmake" -B "$work" >cpack.log 2>&1) ||
  { cat "$work/cpack.log" >&2; fail "cpack"; }
deb=$(ls "$work"/cvviewedit_*.deb)

dpkg-deb -c "$deb" | awk '{ $1=$2=$3=$4=$5=""; sub(/^ +/, ""); sub(/ -> .*/, ""); print }' |
  sed -n 's|^\./usr/||p' | grep -v '/$' >"$work/contents.txt"
check_listed "$work/contents.txt" lib || fail "the package lacks files"
if grep -q '^local/' "$work/contents.txt"; then fail "files under /usr/local"; fi

depends=$(dpkg-deb -f "$deb" Depends)
for library in libqt6widgets6 libqt6sql6 libpugixml1v5 libc6 qt6-qpa-plugins libqt6sql6-sqlite; do
  [[ $depends == *"$library"* ]] || fail "Depends lacks $library: $depends"
done

lintian --tag-display-limit 0 "$deb" >"$work/lintian.txt" 2>&1 || true
cat "$work/lintian.txt"
if grep -q '^E:' "$work/lintian.txt"; then fail "lintian reports errors"; fi
echo "$(basename "$deb"): $(wc -l <"$work/contents.txt") files, lintian without errors"
