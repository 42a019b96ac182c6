#!/usr/bin/env bash
# Every shell script is clean, with the parts that it takes in.
set -euo pipefail
cd "$(dirname "$0")/../.."

git grep --untracked -lzE '^#!.*sh$' | xargs -0 shellcheck -x -a
