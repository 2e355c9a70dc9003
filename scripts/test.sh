#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test. The control suites then run a
# second time with every sample repository on a throw-away PostgreSQL server.
#   scripts/test.sh [ctest arguments]     extra arguments go to both ctest runs
#   VX_TEST_ENGINES=sqlite scripts/test.sh   skips the PostgreSQL run
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
build=${VX_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)"
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
if [[ "${VX_TEST_ENGINES:-sqlite,postgres}" == *postgres* ]]; then
  echo "== the control suites on PostgreSQL"
  VX_TEST_ENGINE=postgres ctest --test-dir "$build" --output-on-failure -j "$(nproc)" \
    -L '^(companions|pickers|index|query|hitlist|recordform|marking|findreplace|fileops|dbf|portable)$' "$@"
fi
