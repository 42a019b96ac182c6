#!/usr/bin/env bash
# clang-tidy over the sources of the products. The compile commands come from a preset of their own:
# clang cannot read the precompiled headers of the others, and library headers that several sources
# share are looked at once for all of them. The tests are left to the compiler's warnings: with
# GoogleTest's headers they would take twice as long as everything else.
set -euo pipefail
cd "$(dirname "$0")/../.."

cmake --preset lint >/dev/null
products='(agent|bridge|checking|client|documents|editing|inspection|lparams|markup|schema|text|tools)'
run-clang-tidy -quiet -checks=-bugprone-suspicious-include -p build/lint \
  "^$PWD/(build/lint/)?$products/" 2>&1 |
  sed -E 's/\x1b\[[0-9;]*m//g; /^clang-tidy|^[0-9]+ warnings? generated/d'
