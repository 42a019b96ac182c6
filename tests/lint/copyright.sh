#!/usr/bin/env bash
# The packages' copyright file names every library whose headers the products are built from.
set -euo pipefail
cd "$(dirname "$0")/../.."

status=0
while read -r header; do
  folder=${header%%/*}
  [[ $header != */* ]] || folder+=/\*
  grep -qE "^Files: (.* )?${folder//\*/\\*}( |$)" packaging/debian/copyright || {
    echo "packaging/debian/copyright does not name $header"
    status=1
  }
done < <(git grep --untracked -hoP '^ *# *include <\K[\w./]+\.(h|hpp)(?=>)' -- \
  '*.h' '*.cc' ':!tests/' ':!bench/' ':!examples/' | sort -u |
  grep -vE '^(sys/[a-z]+|dirent|dlfcn|fcntl|fnmatch|getopt|glob|grp|libgen|linux/.*|malloc|netinet/.*|poll|pthread|pwd|sched|signal|spawn|syslog|termios|unistd)\.h$')
exit "$status"
