# quietly LOG COMMAND...: shows the output of the command only if it fails.
quietly() {
  local log=$1
  shift
  mkdir -p "$(dirname "$log")"
  "$@" </dev/null >"$log" 2>&1 || {
    cat "$log"
    return 1
  }
}

# compile PRESET [TARGET...]: the whole preset, or only the targets.
compile() {
  local preset=$1 targets=()
  shift
  (($# == 0)) || targets=(--target "$@")
  echo "building $preset, log in build/$preset.log"
  quietly "$build/$preset.log" cmake -S "$root" --preset "$preset" || return 1
  quietly "$build/$preset.log" \
    cmake --build "$build/$preset" -j "$(nproc)" ${targets[@]+"${targets[@]}"}
}
