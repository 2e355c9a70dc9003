#!/usr/bin/env bash
# Builds the Debian packages: the shared libraries, the development files, the tools and the
# Qt Designer plugin.
#   scripts/package.sh [OUTPUT_DIR]      packages go to OUTPUT_DIR (default: <build>/packages)
# Install them with: sudo apt install ./OUTPUT_DIR/*.deb
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
build=${VX_BUILD_DIR:-build}
out=$(realpath -m "${1:-$build/packages}")
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)"
rm -rf "$out"
cpack --config "$build/CPackConfig.cmake" -B "$out" >/dev/null
rm -rf "$out/_CPack_Packages"
for deb in "$out"/*.deb; do
  printf '%s\n  Depends: %s\n' "$(basename "$deb")" "$(dpkg-deb --field "$deb" Depends)"
done
