#!/usr/bin/env bash
# compare_catalogue.sh PROGRAM: is the checked-in catalogue what the program prints?
set -euo pipefail

document=$(dirname "$0")/../docs/catalogue.md
if ! diff -u --label docs/catalogue.md --label 'as built' "$document" <("$1"); then
  echo 'docs/catalogue.md is not what the objects say: run ./dev catalogue and commit the result'
  exit 1
fi
