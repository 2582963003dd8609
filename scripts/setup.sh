#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need.
# Does nothing when everything is already there; safe to run again.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libpugixml-dev libcli11-dev nlohmann-json3-dev libicu-dev libxxhash-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  qt6-base-dev libqt6sql6-sqlite libqt6sql6-psql libgl-dev
  libharfbuzz-dev zlib1g-dev libdeflate-dev fonts-dejavu-core libxlsxwriter-dev unzip
  sqlite3 libsqlite3-dev libpq-dev
  xvfb xauth poppler-utils valgrind time
  librsvg2-bin desktop-file-utils appstream man-db groff-base lintian dpkg-dev file
)
[[ "${CVVE_WITH_POSTGRES:-1}" == 1 ]] && packages+=(postgresql)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi
echo "setup: installing ${missing[*]}" >&2
SUDO=""
if [[ $(id -u) -ne 0 ]]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
