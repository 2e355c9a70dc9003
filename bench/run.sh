#!/usr/bin/env bash
# Builds the data-layer benchmark optimised and runs it: bench/run.sh [documents ...]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${VX_BENCH_BUILD_DIR:-build-bench}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVX_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" -j "${VX_BUILD_JOBS:-2}" --target vxbench_data
"$build/bench/vxbench_data" "$@"
