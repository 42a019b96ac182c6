#!/usr/bin/env bash
# clang-tidy over the sources of the project. The compile commands come from a preset of their own:
# clang cannot read the precompiled headers of the others.
set -euo pipefail
cd "$(dirname "$0")/../.."

cmake --preset lint >/dev/null
# The compile commands also name the sources of GoogleTest, which are not ours.
run-clang-tidy -quiet -p build/lint "^$PWD/(agent|bridge|client|lparams|tests|tools)/" 2>&1 |
  sed -E 's/\x1b\[[0-9;]*m//g; /^clang-tidy|^[0-9]+ warnings? generated/d'
