#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test. The control suites then run a
# second time with every sample repository on a throw-away PostgreSQL server.
#   scripts/test.sh [ctest arguments]     extra arguments go to both ctest runs
#   VX_TEST_ENGINES=sqlite scripts/test.sh   skips the PostgreSQL run
#   scripts/test.sh --sanitize [ctest arguments]
#       builds into build-sanitize with AddressSanitizer and UndefinedBehaviorSanitizer and runs
#       the SQLite suites; any report fails the run. scripts/sanitizer-suppressions.txt lists
#       the only leaks tolerated (the system libraries' own).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
export QT_QPA_PLATFORM=offscreen

if [[ "${1:-}" == "--sanitize" ]]; then
  shift
  build=${VX_SANITIZE_BUILD_DIR:-build-sanitize}
  flags="-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer"
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_C_FLAGS="$flags" \
    -DCMAKE_EXE_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DCMAKE_SHARED_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DCMAKE_MODULE_LINKER_FLAGS="-fsanitize=address,undefined" \
    -DVX_BUILD_BENCH=OFF -DVX_BUILD_DESIGNER_PLUGIN=OFF >/dev/null
  # Also for the test listing the build itself runs.
  export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
  export LSAN_OPTIONS="suppressions=$PWD/scripts/sanitizer-suppressions.txt:print_suppressions=0"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
  cmake --build "$build" -j "$(nproc)"
  # Every suite on the embedded engine; the installed-package and tour checks build and run
  # programs of their own and are left to the ordinary run.
  ctest --test-dir "$build" --output-on-failure -j "$(nproc)" -LE '^(postgres|install|demo)$' "$@"
  exit
fi

build=${VX_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j "$(nproc)"
ctest --test-dir "$build" --output-on-failure -j "$(nproc)" "$@"
if [[ "${VX_TEST_ENGINES:-sqlite,postgres}" == *postgres* ]]; then
  echo "== the control suites on PostgreSQL"
  VX_TEST_ENGINE=postgres ctest --test-dir "$build" --output-on-failure -j "$(nproc)" \
    -L '^(companions|pickers|index|query|hitlist|recordform|marking|findreplace|fileops|dbf|portable)$' "$@"
fi
