#!/usr/bin/env bash
# clang-tidy over the sources of the project, as the release preset compiles them. `./dev lint`
# configures that preset first.
set -euo pipefail
cd "$(dirname "$0")/../.."

# The compile commands also name the sources of GoogleTest, which are not ours.
run-clang-tidy -quiet -p build/release "^$PWD/(agent|bridge|client|lparams|tests|tools)/" 2>&1 |
  sed -E '/^clang-tidy-|^[0-9]+ warnings? generated/d'
