#!/usr/bin/env bash
# The programs are built so that a mistake with memory ends them before anybody makes use of it: what
# is read of their files, not of the options that they were to be built with.
#
# Usage: hardening_test.sh BUILD_DIR
set -euo pipefail
export LC_ALL=C

faults=0
# wants FILE WHAT TEXT PATTERN: the text has a line like that.
wants() {
  grep -qE -- "$4" <<<"$3" || {
    echo "$1: $2"
    faults=$((faults + 1))
  }
}

for file in "$1"/{lparams_agent,lparamsctl,lparams_server.so}; do
  header=$(readelf -hlW "$file")
  dynamic=$(readelf -dW "$file")
  symbols=$(readelf -W --dyn-syms "$file")
  wants "$file" 'no address is chosen at its start' "$header" 'Type: +DYN'
  wants "$file" 'its stack can be executed' "$header" 'GNU_STACK .* RW +0x'
  wants "$file" 'its tables stay writable' "$header" 'GNU_RELRO'
  wants "$file" 'its tables stay writable until they are used' "$dynamic" 'BIND_NOW|FLAGS_1.* NOW'
  wants "$file" 'its stack is not watched' "$symbols" ' __stack_chk_fail'
  # Where branches may lead to is marked in the code; the whole file is not, for Debian's start files
  # are not. Only 64-bit processors look at it.
  marks=$(objdump -d "$file" | grep -c endbr) || true
  wants "$file" 'its branches are not marked' "$marks marks" '^[0-9]{3,} marks'
done
# The module calls nothing of the C library's that fills a buffer of a size known to the compiler.
for file in "$1"/{lparams_agent,lparamsctl}; do
  wants "$file" 'its buffers are not watched' "$(readelf -W --dyn-syms "$file")" '__\w+_chk\b.*GLIBC'
done
((faults == 0))
