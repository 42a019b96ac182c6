# What a run of the linters and the tests has come to so far, one line per result, for tally.py.
# Beside it lie what is built (PRESET.built, PRESET.broken) and what is going on (building, testing, running).
results=$build/tests/results
state=$build/tests

start_results() {
  rm -rf "$state"
  mkdir -p "$state"
  touch "$results"
}

# result KIND FIELD...
result() {
  local IFS=$'\t'
  echo "$*" >>"$results"
}

tally() { python3 "$root/dev.d/tally.py" "$@"; }

# lint LINTER...
lint() {
  local linter name
  for linter; do
    name="lint $(basename "$linter" .sh)"
    echo "$name"
    if quietly "$build/lint.log" "$linter"; then result passed "$name"; else result failed "$name"; fi
  done
}

# Every linter, whatever the others say, but the one that takes minutes.
lint_style() {
  local linter
  for linter in "$root"/tests/lint/*.sh; do
    [[ $linter == */tidy.sh ]] || lint "$linter"
  done
}

# Says so where no process can have mounts or a user namespace of its own. Tests that use them are not
# there then: others show the same with a stand-in.
note_namespaces() {
  unshare -m true 2>/dev/null || unshare -Urm true 2>/dev/null ||
    result note "no process can have mounts or users of its own here: only stand-ins took their place"
}

lint_tidy() { lint "$root/tests/lint/tidy.sh"; }

# Sets `layout` to the command that lets programs with the thread sanitizer start. It cannot live
# with the wider randomisation of addresses that newer kernels have, and not everybody may switch it
# off. Returns 1 if they cannot start at all.
find_layout() {
  local program=$state/starts i
  echo 'int main() {}' | c++ -x c++ -fsanitize=thread -o "$program" - || return 1
  for layout in 'setarch -R' ''; do
    # With addresses at random one start says little.
    for ((i = 0; i < 10; ++i)); do $layout "$program" >/dev/null 2>&1 || continue 2; done
    return 0
  done
  return 1
}

# Runs the tests of a preset that is built. Those that take longest start first: four of them only
# wait, and one takes the place of two.
run_tests() {
  local preset=$1 report=$build/$1/tests.xml layout='' status=0
  if [[ $preset == tsan ]] && ! find_layout; then
    echo "tsan: not run, the thread sanitizer cannot start on this machine"
    result skipped tsan "the thread sanitizer cannot start with this machine's layout of addresses"
    return
  fi
  echo "$preset" >"$state/testing"
  echo "testing $preset, log in build/$preset-tests.log (after $SECONDS s)"
  rm -f "$report"
  find "$build/$preset/tests" -name '*_tests.cmake' -delete  # the lists of another user, perhaps
  (cd "$root" && $layout ctest --preset "$preset" -j "$(($(nproc) + 6))" \
    --test-output-size-passed 4096 --output-junit "$report") \
    </dev/null >"$build/$preset-tests.log" 2>&1 || status=$?
  rm -f "$state/testing"
  result report "$preset" "$report" "$status"
  tally failures "$preset" "$report" || true
}

# Once more, alone and on a machine that is quiet by now, those that failed. What passes then is
# counted, and named.
run_again() {
  local preset report status failed layout=''
  while IFS=$'\t' read -r kind preset report status; do
    [[ $kind == report ]] || continue
    failed=$(tally again "$report") || continue
    echo "running again what failed in $preset"
    [[ $preset != tsan ]] || find_layout || continue
    (cd "$root" && $layout ctest --preset "$preset" -j 1 -R "$failed" \
      --output-junit "$report.again") </dev/null >"$build/$preset-again.log" 2>&1 || true
    result again "$preset" "$report.again"
  done < <(cat "$results")
}

# build_presets PRESET... [-- COMMAND...]: one after the other, then the command. The processors go
# to the tests first.
build_presets() {
  local preset
  renice -n 5 -p "$BASHPID" >/dev/null || true
  while (($#)) && [[ $1 != -- ]]; do
    preset=$1
    shift
    echo "$preset" >"$state/building"
    if compile "$preset"; then
      touch "$state/$preset.built"
    else
      result failed "build of $preset"
      touch "$state/$preset.broken"
    fi
  done
  rm -f "$state/building"
  if (($# > 1)); then
    shift
    echo "$*" >"$state/running"
    "$@"
    rm -f "$state/running"
  fi
}

# test_presets PRESET... [-- COMMAND...]: while the tests of one preset run, and some of them only
# wait, the next one is built, and at last the command runs.
test_presets() {
  local preset presets=() builder
  for preset; do
    [[ $preset != -- ]] || break
    presets+=("$preset")
  done
  set -m # each job can be ended with all that it has started
  build_presets "$@" &
  builder=$!
  watch_progress "${presets[@]}" &
  # shellcheck disable=SC2064  # these very jobs
  trap "kill -- -$builder -$! 2>/dev/null || true" EXIT
  for preset in "${presets[@]}"; do
    until [[ -e $state/$preset.built || -e $state/$preset.broken ]]; do
      if ! kill -0 "$builder" 2>/dev/null; then
        result failed "build of $preset"
        break
      fi
      sleep 0.2
    done
    [[ ! -e $state/$preset.built ]] || run_tests "$preset"
  done
  wait "$builder" || result failed "the builds ended early"
  run_again
}

# Counts and names; the outcome of the run.
summary() {
  echo "after $SECONDS s:"
  tally summary "$results"
}
