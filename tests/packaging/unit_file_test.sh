#!/usr/bin/env bash
# What systemd's own tools say of the units, and the limit of what the agent is exposed to.
#
# Usage: unit_file_test.sh BUILD_DIR
set -euo pipefail
cd "$(dirname "$0")/../.."

command -v systemd-analyze >/dev/null || {
  echo 'systemd-analyze is not there'
  exit 77
}
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

# The programs are where this build has them, and the manual is not installed.
for unit in packaging/lparams-agent.{service,socket}; do
  sed -e "s:/usr/lib/lparams/lparams_agent:$(readlink -f "$1")/lparams_agent:" \
    -e '/^Documentation=/d' "$unit" >"$place/${unit##*/}"
done
said=$(systemd-analyze verify "$place"/* 2>&1) || true
said=$(grep -F lparams <<<"$said" || true) # other units of the machine are not ours
[[ -z $said ]] || {
  echo "$said"
  exit 1
}

exposure=$(systemd-analyze security --offline=true --threshold=10 "$place/lparams-agent.service" |
  tail -n 1) || {
  echo "$exposure"
  exit 1
}
echo "$exposure"
