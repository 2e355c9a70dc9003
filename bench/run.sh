#!/usr/bin/env bash
# Builds the benchmarks optimised and runs them.
#   bench/run.sh [documents ...]        the data layer (default sizes when none given)
#   bench/run.sh --all                  every benchmark, each at its default sizes
set -euo pipefail
cd "$(dirname "$0")/.."
build=${VX_BENCH_BUILD_DIR:-build-bench}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVX_BUILD_TESTS=OFF >/dev/null
if [[ "${1:-}" == "--all" ]]; then
  cmake --build "$build" -j "${VX_BUILD_JOBS:-2}"
  for bench in "$build"/bench/vxbench_*; do
    echo "== $(basename "$bench")"
    QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen} "$bench"
  done
else
  cmake --build "$build" -j "${VX_BUILD_JOBS:-2}" --target vxbench_data
  "$build/bench/vxbench_data" "$@"
fi
