#!/usr/bin/env bash
# Every link of a document leads to a file of the tree.
set -euo pipefail
cd "$(dirname "$0")/../.."

status=0
while IFS=: read -r document link; do
  link=${link#](}
  link=${link%%[)#]*}
  [[ -n $link && $link != *://* ]] || continue
  [[ -e $(dirname "$document")/$link ]] || {
    echo "$document: there is no $link"
    status=1
  }
done < <(git ls-files '*.md' | xargs grep -HoE '\]\([^)]+\)')
exit "$status"
