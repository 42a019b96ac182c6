#!/usr/bin/env bash
# The texts here stand on their own: they cite no document from elsewhere and no path of the machine
# that they were written on. (The brackets keep the patterns from finding themselves.)
set -euo pipefail
cd "$(dirname "$0")/../.."

patterns=(
  -e 'specific[a]tion'
  -e '\bthe spe[c]\b'
  -e '\bas specifie[d]\b'
  -e '\bPart [0-9]+\.[0-9]'
  -e '\bissue #?[0-9]'
  -e '(^|[^[:alnum:]_.-])/(hom[e]|roo[t]|wor[k])/'
)
! git grep --untracked -nIiE "${patterns[@]}"
