#!/usr/bin/env bash
# Every source is formatted; `./dev format` does it.
set -euo pipefail
cd "$(dirname "$0")/../.."

git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cc' |
  xargs -0 clang-format --dry-run --Werror
