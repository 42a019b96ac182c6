# The last match of the pattern in the log of a step, or nothing.
last_of() { { grep -oP "$2" "$1" 2>/dev/null || true; } | tail -n 1; }

# progress PRESET...: where the builds and the tests are, and what is left, in one line.
progress() {
  local building='' testing='' running='' preset line="  $SECONDS s" left=()
  read -r building 2>/dev/null <"$state/building" || true
  read -r testing 2>/dev/null <"$state/testing" || true
  read -r running 2>/dev/null <"$state/running" || true
  if [[ $testing ]]; then
    line+="; testing $testing, $(last_of "$build/$testing-tests.log" '^ *\K\d+/\d+(?= Test)')"
  fi
  if [[ $building ]]; then
    line+="; building $building $(last_of "$build/$building.log" '^\[\K\d+/\d+(?=\])')"
  fi
  line+=${running:+; running $running}
  for preset; do
    [[ $preset == "$testing" ]] || grep -qP "^(report|skipped)\t$preset\t" "$results" ||
      left+=("$preset")
  done
  echo "$line${left[*]:+; to be tested: ${left[*]}}"
}

# Says it every 30 seconds, until it is ended.
watch_progress() {
  local never
  exec {never}<> <(:) # nothing is ever written there: a wait without a process of its own
  while true; do
    read -rt 30 -u "$never" || true
    progress "$@"
  done
}
