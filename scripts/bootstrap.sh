#!/usr/bin/env bash
# Installs the Debian packages the project builds, tests and demonstrates with.
# Only missing packages are installed; nothing is fetched from anywhere else.
set -euo pipefail
packages=(
  cmake ninja-build g++ pkg-config
  qt6-base-dev qt6-tools-dev qt6-tools-dev-tools libgl-dev libqt6sql6-sqlite libqt6sql6-psql
  libsqlite3-dev sqlite3
  libpq-dev postgresql
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth python3 python3-dbfread
  doxygen dpkg-dev file
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi
echo "bootstrap: installing ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
