#!/bin/sh
# stress.sh BUILD SECONDS [drd]: eight clients that read, write with revisions and save, against the
# agent of a build directory; under DRD if that is named (for 32 bit; the tsan build needs no tool).
# Fails if an update is lost, a request fails, or the tool reports something.
set -eu
build=$1
seconds=$2
tool=${3:-}

here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
agent=
trap 'test -z "$agent" || kill -KILL "$agent"; rm -rf "$work"' EXIT
mkdir -m 700 "$work/state" "$work/run"
: > "$work/log"

set -- "$build/lparams_agent" --state-dir "$work/state" --socket "$work/run/agent.sock"
if [ "$tool" = drd ]; then
  # A condition variable may be signalled without its mutex, as the library of the loop does.
  set -- valgrind --tool=drd --report-signal-unlocked=no --suppressions="$here/valgrind.supp" \
    --error-exitcode=99 "$@"
fi
"$@" > "$work/log" 2>&1 &
agent=$!
until grep -q ' listening ' "$work/log"; do
  kill -0 "$agent" || { cat "$work/log"; exit 1; }
  sleep 1
done

failed=0
"$build/tests/system/safety/bridge_stress" "$seconds" "$work/run/agent.sock" || failed=1
kill -TERM "$agent"
status=0
wait "$agent" || status=$?
agent=
grep -E 'ERROR SUMMARY|WARNING: ThreadSanitizer' "$work/log" || true
echo "exit status of the agent: $status"
if [ "$status" -ne 0 ]; then
  grep -v ': settings saved' "$work/log"
  failed=1
fi
exit $failed
