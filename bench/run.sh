#!/usr/bin/env bash
# Builds and runs the benchmark against the modules and agents that stand in build/release and
# build/release-32, prints its tables and draws its plot, build/bench/performance.svg; with --plot
# that of the documents, docs/performance.svg. `./dev bench` installs what it needs and calls it.
#
# Usage: bench/run.sh [--plot] [RUNS]
set -euo pipefail

root=$(dirname "$(dirname "$(readlink -f "$0")")")
results=$root/build/bench
plot=$results/performance.svg
if [[ ${1-} == --plot ]]; then
  plot=$root/docs/performance.svg
  shift
fi
runs=${1-1}
memory=/dev/shm/lparams-bench-$$
processor=$(($(nproc) - 1))
trap 'rm -rf "$memory"' EXIT
mkdir -p "$results" "$memory"

# logged LOG COMMAND...: shows what the command has to say only if it fails.
logged() {
  local log=$1
  shift
  "$@" >"$log" 2>&1 || {
    cat "$log" >&2
    return 1
  }
}

# build WIDTH [CMAKE ARGUMENT...]
build() {
  local width=$1
  shift
  logged "$results/$width.log" cmake -S "$root/bench" -B "$results/$width" -G Ninja "$@"
  logged "$results/$width.log" cmake --build "$results/$width"
}

# measure RUN WIDTH PRESET
measure() {
  local to=$results/run-$1 width=$2 products=$root/build/$3 options=()
  local log=$to/$width.log from=$results/$width here=$memory/$1-$2
  mkdir -p "$to"
  echo "run $1: the store in $width bit" >&2
  if ((width == 64)); then
    options=(--benchmark_enable_random_interleaving --benchmark_out="$to/store-$width.json"
      --benchmark_out_format=json)
  else
    options=("$to/store-$width.json")
  fi
  logged "$log" "$from/store_bench" "$products/lparams_server.so" "$here-store" \
    "$results/quiet-$width" "${options[@]}"
  echo "run $1: the bridge in $width bit" >&2
  logged "$log" taskset -c "$processor" "$from/bridge_bench" "$products/lparams_agent" \
    "$here-bridge" "$to/bridge-$width.json"
  echo "run $1: the client in $width bit" >&2
  logged "$log" taskset -c "$processor" "$from/client_bench" "$products/lparams_agent" \
    "$products/lparamsctl" "$from/one_line" "$here-client" "$to/client-$width.json"
}

build 64
build 32 -DCMAKE_CXX_FLAGS=-m32
directories=()
for ((run = 1; run <= runs; ++run)); do
  measure "$run" 64 release
  measure "$run" 32 release-32
  directories+=("$results/run-$run")
done
"$root/bench/report.py" "$plot" "${directories[@]}" | tee "$results/report.md"
