#!/usr/bin/env bash
# Every source lies in a folder that is a layer, and the tests mirror the tree of the sources.
set -euo pipefail
cd "$(dirname "$0")/../.."

# The layers are those of layers.sh; these folders are none, and have no tests of their own.
apart='bench bench/peers examples/embed tools'
# Tests of more than one folder: the module as it is loaded, and the agent and its client as they
# run. What all tests use is in support/, what breaks the product on purpose in prove/.
across='tests/module tests/system tests/system/safety tests/support tests/prove tests/prove/coverage tests/prove/fuzz tests/prove/locks tests/prove/rot tests/prove/static tests/prove/races'

mapfile -t layers < <(grep -oP '^  \[\K[^]]+(?=\]=)' tests/lint/layers.sh)

faults=0
fault() {
  echo "$*"
  faults=$((faults + 1))
}

# folders_of PATTERN...: where the files are that match, tracked or about to be.
folders_of() {
  local file
  git ls-files --cached --others --exclude-standard -- "$@" | while read -r file; do
    [[ ! -e $file ]] || dirname "$file"
  done | sort -u
}

# Where the tests of a folder are. The module's own folder has those of the loaded module.
tests_of() {
  case $1 in
    lparams) echo tests/module ;;
    lparams/*) echo "tests/${1#lparams/}" ;;
    *) echo "tests/$1" ;;
  esac
}

among() { [[ " ${*:2} " == *" $1 "* ]]; }

((${#layers[@]} > 5)) || fault 'tests/lint/layers.sh: the layers cannot be read'
for folder in platform lparams lparams/params lparams/catalogue lparams/storage; do
  among "$folder" "${layers[@]}" || fault "$folder is no layer any more"
done
[[ -e lparams/lparams_server.cc ]] || fault 'lparams/lparams_server.cc, the start-up, is missing'

mirrors=$across
for folder in $(folders_of '*.h' '*.cc'); do
  case $folder in
    tests/*) continue ;;
  esac
  mirrors+=" $(tests_of "$folder")"
  among "$folder" "${layers[@]}" "$apart" || fault "$folder: sources outside of the known folders"
done
for folder in $(folders_of '*.cc'); do
  case $folder in
    tests/*)
      among "$folder" "$mirrors" || fault "$folder mirrors no folder of the sources"
      ;;
    *)
      among "$folder" "$apart" || [[ -n $(folders_of ":(glob)$(tests_of "$folder")/*_test.cc") ]] ||
        fault "$folder has no tests in $(tests_of "$folder")"
      ;;
  esac
done
for layer in "${layers[@]}"; do
  [[ -n $(folders_of ":(glob)$layer/*.h" ":(glob)$layer/*.cc") ]] || fault "$layer is a layer without sources"
done

# A test that no list names is never run.
for test in $(git ls-files --cached --others --exclude-standard -- '*_test.cc'); do
  [[ ! -e $test ]] || grep -rqwF --include=CMakeLists.txt "${test##*/}" tests ||
    fault "$test is in no CMakeLists.txt"
done

((faults == 0))
