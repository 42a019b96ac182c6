#!/usr/bin/env bash
# Builds and runs the benchmark against the modules and agents that stand in build/release and
# build/release-32, and prints its tables. `./dev bench` installs what it needs and calls it.
#
# Usage: bench/run.sh [PLOT]
set -euo pipefail

root=$(dirname "$(dirname "$(readlink -f "$0")")")
results=$root/build/bench
memory=/dev/shm/lparams-bench-$$
processor=$(($(nproc) - 1))
trap 'rm -rf "$memory"' EXIT
mkdir -p "$results" "$memory"

# measure WIDTH PRESET [CMAKE ARGUMENT...]
measure() {
  local width=$1 products=$root/build/$2 build=$results/$1 options=()
  shift 2
  cmake -S "$root/bench" -B "$build" -G Ninja "$@" >"$results/build-$width.log"
  cmake --build "$build" >>"$results/build-$width.log" || {
    cat "$results/build-$width.log"
    return 1
  }
  echo "measuring the store in $width bit" >&2
  if ((width == 64)); then
    options=(--benchmark_repetitions=15 --benchmark_enable_random_interleaving
      --benchmark_min_time=0.02 --benchmark_report_aggregates_only --benchmark_format=json)
  fi
  "$build/store_bench" "$products/lparams_server.so" "$memory/store" \
    ${options[@]+"${options[@]}"} >"$results/store-$width.json" 2>"$results/store-$width.log"
  echo "measuring the bridge in $width bit" >&2
  taskset -c "$processor" "$build/bridge_bench" "$products/lparams_agent" "$memory/bridge" \
    >"$results/bridge-$width.json" 2>"$results/bridge-$width.log"
}

measure 64 release
measure 32 release-32 -DCMAKE_CXX_FLAGS=-m32
"$root/bench/report.py" "$results" "$@" | tee "$results/report.md"
