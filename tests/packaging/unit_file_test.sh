#!/usr/bin/env bash
# What systemd's own tools say of the units as they are installed, with any prefix, and the limit of
# what their programs are exposed to.
#
# Usage: unit_file_test.sh BUILD_DIR
set -euo pipefail

command -v systemd-analyze >/dev/null || {
  echo 'systemd-analyze is not there'
  exit 77
}
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
units=$place/lib/systemd/system

for component in agent client; do
  cmake --install "$1" --prefix "$place" --component $component >/dev/null
done
sed -nE 's/^ExecStart=(\S+).*/\1/p' "$units"/lparams-*.service >"$place/programs"
diff "$place/programs" - <<END
$place/lib/lparams/lparams_agent
$place/bin/lparamsctl
END
if grep -r '@prefix@\|/usr/' "$units"; then
  echo 'this is not where it is installed'
  exit 1
fi

sed -i '/^Documentation=/d' "$units"/* # man(1) does not look there
said=$(systemd-analyze verify "$units"/* 2>&1) || true
said=$(grep -F lparams <<<"$said" || true) # other units of the machine are not ours
[[ -z $said ]] || {
  echo "$said"
  exit 1
}

for unit in "$units"/*.service; do
  exposure=$(systemd-analyze security --offline=true --threshold=10 "$unit" | tail -n 1) || {
    echo "$unit: $exposure"
    exit 1
  }
  echo "$exposure"
done
