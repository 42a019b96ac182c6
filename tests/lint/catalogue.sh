#!/usr/bin/env bash
# The names in the sources of the catalogue and in its document are the same, so that the program
# that prints the document cannot leave out a group.
set -euo pipefail
cd "$(dirname "$0")/../.."

names_in_sources() { grep -ohP '\{\*this, Label\("\K[^"\\]+' lparams/catalogue/*.h; }
names_in_document() { grep -oP '^\| \d+ \| .\K\w+' docs/catalogue.md; }

diff --label 'rows of lparams/catalogue' --label 'rows of docs/catalogue.md' -u \
  <(names_in_sources | sort) <(names_in_document | sort)
