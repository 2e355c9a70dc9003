#!/usr/bin/env bash
# Installs what is missing, builds everything and starts the sample host on the sample repository.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
build=${VX_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)"
exec "$build/apps/vxdemo/vxdemo" "$@"
