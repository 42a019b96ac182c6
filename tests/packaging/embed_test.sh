#!/usr/bin/env bash
# The example of an embedding program builds from what is installed alone, with CMake and with
# pkg-config, and does what it says.
#
# Usage: embed_test.sh BUILD_DIR CXX_FLAGS
set -euo pipefail

build=$1
read -ra flags <<<"$2"
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
tree=$place/tree
example=$tree/share/doc/lparams-dev/examples/embed

for component in agent dev; do
  cmake --install "$build" --prefix "$tree" --component $component >"$place/log"
done

(($(wc -l <"$example/embed.cc") < 80)) || {
  echo 'the example is no longer short'
  exit 1
}

expected='unknown: NO_SUCH_NAME in IKE
dropped at IKE_PORT:  7 
EXCHANGE_TIMEOUT 60
IKE changes
IKE has changed'
settings='/ROOT=
    /IKE=
        NO_SUCH_NAME=1
        IKE_PORT=501 7
    end=
end='

# run PROGRAM MODULE
run() {
  local state=$place/state
  rm -rf "$state"
  mkdir -m 700 "$state"
  echo "$settings" >"$state/localsettings.ini"
  "$1" "$2" "$state" | tee "$place/said"
  diff <(echo "$expected") <(grep -vE '^saved | missing in (IKE|ROOT) ?' "$place/said")
  grep -qE '^[0-9]+ missing in IKE$' "$place/said"
  grep -qxF "saved file: $state/localsettings.ini" "$place/said"
  grep -qx ' *EXCHANGE_TIMEOUT=120' "$state/localsettings.ini"
  grep -qx ' *IKE_PORT=501' "$state/localsettings.ini"
  echo '<LocalSettings/>' >"$state/localsettings.xml"
  "$1" "$2" "$state" && return 1
  [[ -e $state/localsettings.xml ]] # not deleted by an import that reads nothing
}

echo 'with CMake'
cmake -S "$example" -B "$place/build" -DCMAKE_PREFIX_PATH="$tree" -DCMAKE_CXX_FLAGS="$2" >"$place/log"
cmake --build "$place/build" >"$place/log"
run "$place/build/embed" "$(<"$place/build/module.txt")"

echo 'with pkg-config'
export PKG_CONFIG_PATH=$tree/share/pkgconfig
read -ra options < <(pkg-config --cflags --libs lparams)
c++ "${flags[@]}" -Wall -Wextra -Wpedantic -Werror "$example/embed.cc" "${options[@]}" -o "$place/embed"
run "$place/embed" "$(pkg-config --variable=module lparams)"

echo 'each header, from the installed tree'
(cd "$tree/include/lparams" && find . -name '*.h' -printf '#include "%P"\n' | sort) >"$place/all.cc"
c++ "${flags[@]}" -Wall -Wextra -Wpedantic -Werror -fsyntax-only "$place/all.cc" "${options[@]}"
