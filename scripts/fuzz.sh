#!/usr/bin/env bash
# Fuzzes every harness under fuzz/ for a while (default 60 seconds each), two at a time, in a
# clang build of its own (build-fuzz). Inputs that crash or trip a sanitizer are kept as files
# under fuzz/<target>/crashes; the committed seed corpora stay as they are, and what the runs
# learn goes to build-fuzz/corpus/<target>.
#   scripts/fuzz.sh [seconds] [target...]      VX_FUZZ_JOBS=n runs n targets at a time
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  targets=(connection_text private_profile form_definition sql_dialect value_conversions dbf_writer
    query_restriction)
fi
scripts/bootstrap.sh
build=${VX_FUZZ_BUILD_DIR:-build-fuzz}
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only" \
  -DVX_BUILD_FUZZERS=ON -DVX_BUILD_TESTS=OFF -DVX_BUILD_BENCH=OFF \
  -DVX_BUILD_DESIGNER_PLUGIN=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${targets[@]/#/fuzz_}"

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
run() {
  local target=$1
  local crashes="fuzz/$target/crashes"
  local learned="$build/corpus/$target"
  mkdir -p "$crashes" "$learned"
  "$build/fuzz/fuzz_$target" -max_total_time="$seconds" -timeout=30 -rss_limit_mb=4096 \
    -artifact_prefix="$crashes/" -print_final_stats=1 "$learned" "fuzz/$target/corpus" \
    >"$build/fuzz-$target.log" 2>&1 || true
  local executions findings
  executions=$(grep -o 'stat::number_of_executed_units: *[0-9]*' "$build/fuzz-$target.log" |
    grep -o '[0-9]*$' || echo 0)
  findings=$(find "$crashes" -type f | wc -l)
  echo "$target: ${executions:-0} executions, $findings finding(s) in $crashes"
}
jobs_at_once=${VX_FUZZ_JOBS:-2}
for target in "${targets[@]}"; do
  while [ "$(jobs -rp | wc -l)" -ge "$jobs_at_once" ]; do
    wait -n
  done
  run "$target" &
done
wait
if find "${targets[@]/#/fuzz/}" -path '*/crashes/*' -type f 2>/dev/null | grep -q .; then
  echo "fuzz: findings to look at (replay one with $build/fuzz/fuzz_<target> <file>)"
  exit 1
fi
