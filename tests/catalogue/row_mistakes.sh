#!/usr/bin/env bash
# row_mistakes.sh COMPILER: does every mistaken row fail to compile, for its reason, and no other?
set -euo pipefail
cd "$(dirname "$0")/../.."

source=tests/catalogue/row_mistakes.cc
options=(-std=c++20 -fsyntax-only -fmax-errors=0 -fno-diagnostics-show-caret -I.)
errors=$("$1" "${options[@]}" "$source" 2>&1) || true

# What the compiler says of the line of a row: its own words and, if it came upon the error deeper
# down, the line that it came upon.
error_of() {
  local error file line rest
  error=$(grep -A1 "^$source:$1:" <<<"$errors" | grep -m1 ': error: ') || return 0
  IFS=: read -r file line rest <<<"$error"
  echo "$rest $(sed -n "${line}p" "$file")"
}

faults=0
while IFS=: read -r line row; do
  reason=
  [[ $row == *wrong* ]] && reason=${row##*// }
  found=$(error_of "$line")
  if [[ -z $reason && -n $found ]] || [[ $found != *"$reason"* ]]; then
    echo "$source:$line: expected ${reason:-no error}; found ${found:-none}"
    faults=$((faults + 1))
  fi
done < <(grep -nE '(right|wrong)[0-9]+\(' "$source")

((faults == 0))
