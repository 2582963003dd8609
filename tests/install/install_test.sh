#!/usr/bin/env bash
# install_test.sh STEP BUILD_DIR WORK_DIR LIBDIR SOURCE_DIR
#   prefix    install the build into WORK_DIR/prefix and check its files
#   examples  build examples/host-cpp and host-c against it, run them
#             offscreen with the auto-close test aid, and without a display
#   desktop   desktop-file-validate and appstreamcli validate
#   man       man -l renders the page without warnings
set -euo pipefail
step=$1 build=$2 work=$3 libdir=$4 source=$5
prefix=$work/prefix
source "$(dirname "$0")/check_files.sh"

fail() { echo "FAIL: $*" >&2; exit 1; }

case $step in
prefix)
  rm -rf "$prefix"
  cmake --install "$build" --prefix "$prefix" >/dev/null
  (cd "$prefix" && find . \( -type f -o -type l \) | sed 's|^\./||' | sort) >"$work/installed.txt"
  check_listed "$work/installed.txt" "$libdir" || fail "the installation lacks files"
  # The public headers stand alone: each compiles with nothing before it.
  for header in "$prefix"/include/cvviewedit/*.h; do
    echo "#include <cvviewedit/$(basename "$header")>" |
      c++ -std=c++17 -fsyntax-only -Wall -Wextra -Werror -I"$prefix/include" -x c++ - ||
      fail "$header does not compile alone"
  done
  echo "#include <cvviewedit/c_api.h>" |
    cc -std=c99 -fsyntax-only -Wall -Wextra -Werror -I"$prefix/include" -x c - ||
    fail "c_api.h is not C"
  echo "installed $(wc -l <"$work/installed.txt") files"
  ;;
examples)
  rm -rf "$work/host-cpp" "$work/host-c" "$work/config"
  mkdir -p "$work/host-c" "$work/config"
  cmake -S "$source/examples/host-cpp" -B "$work/host-cpp" -G Ninja \
    -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
  cmake --build "$work/host-cpp" >/dev/null
  PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig" make -s -C "$work/host-c" \
    -f "$source/examples/host-c/Makefile" VPATH="$source/examples/host-c"

  # No settings file of the user running the tests gets in the way.
  export XDG_CONFIG_HOME=$work/config LD_LIBRARY_PATH=$prefix/$libdir
  unset CVVE_DATA_DIR
  run() {  # run NAME EXE: offscreen, closing itself
    QT_QPA_PLATFORM=offscreen CVVE_TEST_AUTOCLOSE_MS=200 timeout 60 "$2" \
      >"$work/$1.out" 2>"$work/$1.err" || { cat "$work/$1.err" >&2; fail "$1 exited with $?"; }
  }
  run cpp "$work/host-cpp/host-cpp"
  grep -q "^AcctViewEdit returned$" "$work/cpp.out" || fail "host-cpp: the call did not return"
  [[ $(grep -c "editor window shown" "$work/cpp.err") == 1 ]] || fail "host-cpp: no window shown"
  grep -q "^cvViewEdit [0-9]" "$work/cpp.out" || fail "host-cpp: no version"
  # The installed demo data, found from the library's own folder.
  grep -qxF "views: $(cd "$prefix" && pwd -P)/share/cvviewedit/demo" "$work/cpp.out" ||
    fail "host-cpp: not on the installed demo data: $(cat "$work/cpp.out")"
  run c "$work/host-c/host-c"
  grep -q "^AcctViewEdit and InvViewEdit returned$" "$work/c.out" || fail "host-c: no return"
  # Two calls, two windows: the library's QApplication is made for each.
  [[ $(grep -c "editor window shown" "$work/c.err") == 2 ]] || fail "host-c: not two windows"

  # Without a display the view entry fails and says why.
  if env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$work/host-cpp/host-cpp" \
      >"$work/nodisplay.out" 2>"$work/nodisplay.err"; then
    fail "host-cpp without a display succeeded"
  fi
  grep -q "no display" "$work/nodisplay.err" || fail "no clear error without a display"
  echo "both examples opened the editor and returned"
  ;;
desktop)
  desktop-file-validate "$prefix/share/applications/com.corvane.cvviewedit.desktop"
  appstreamcli validate --no-net "$prefix/share/metainfo/com.corvane.cvviewedit.metainfo.xml"
  ;;
man)
  page=$prefix/share/man/man1/viewedit.1.gz
  MANWIDTH=80 man --warnings -l "$page" >"$work/man.txt" 2>"$work/man.err"
  [[ ! -s $work/man.err ]] || { cat "$work/man.err" >&2; fail "groff warns"; }
  for heading in NAME SYNOPSIS DESCRIPTION OPTIONS FILES; do
    grep -q "^$heading" "$work/man.txt" || fail "the page has no $heading"
  done
  grep -q -- "--views-folder" "$work/man.txt" || fail "the page lacks the options"
  ;;
*)
  fail "unknown step $step"
  ;;
esac
