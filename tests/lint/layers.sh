#!/usr/bin/env bash
# The folder is the layer: no folder includes a higher one, and the module includes nothing but
# itself, the standard library and POSIX.
set -euo pipefail
cd "$(dirname "$0")/../.."

# Each layer, and the layers that it may include besides itself. The tests and the benchmark may
# include all; the example includes what is installed.
model='platform lparams/params lparams/catalogue'
module="$model lparams/interface lparams lparams/values"
declare -A may_include=(
  [platform]=''
  [lparams/interface]=''
  [lparams/params]='platform'
  [lparams/catalogue]='platform lparams/params'
  [lparams/values]='platform lparams/params'
  [lparams/storage]="$model lparams/interface"
  [lparams]="$model lparams/interface lparams/storage"
  [bridge]=''
  [schema]="$model lparams/values text"
  [text]=''
  [markup]='platform'
  [programs]=''
  [editing]="$model lparams/values bridge text"
  [inspection]="$model lparams/storage lparams/values text"
  [documents]="$model lparams/values inspection bridge editing text"
  [checking]="$model lparams/storage lparams/values text markup inspection editing documents"
  [agent/base]='platform lparams/params text programs'
  [agent/services]='platform agent/base'
  [agent/state]="$module inspection markup text agent/base"
  [agent/events]="$model lparams/values bridge text agent/base"
  [agent/bridge]="$module bridge editing agent/base agent/events"
  [agent/access]="$module schema bridge editing inspection agent/base agent/events agent/state agent/bridge"
  [agent/history]="$module bridge editing inspection agent/base agent/events agent/state agent/bridge"
  [agent/confirmation]="$module bridge editing inspection text agent/base agent/state agent/bridge agent/access agent/history"
  [agent]="$module inspection editing agent/base agent/events agent/services agent/state agent/bridge agent/access agent/history agent/confirmation schema markup text"
  [client]="$model lparams/interface lparams/values client/verbs bridge editing inspection documents text schema programs"
  [client/verbs]="$model lparams/values client bridge editing inspection checking documents text schema programs"
  [tools]="$model lparams/values"
)

# Every folder of lparams/, agent/ and client/ is a layer; elsewhere only the folders at the root are.
layer_of() {
  local folder=${1%/*}
  [[ $folder == @(lparams|agent|client)/* ]] && echo "$folder" || echo "${folder%%/*}"
}

faults=0
fault() {
  echo "$*"
  faults=$((faults + 1))
}

while IFS=: read -r file line include; do
  layer=$(layer_of "$file")
  [[ $include =~ [\<\"](.+)[\>\"] ]]
  included=${BASH_REMATCH[1]}
  if [[ -z ${may_include[$layer]+known} ]]; then
    fault "$file:$line: $layer has no place among the layers"
  elif [[ $include == *\"* ]]; then
    [[ " $layer ${may_include[$layer]} " == *" $(layer_of "$included") "* ]] ||
      fault "$file:$line: $layer must not include $included"
  elif [[ $layer == platform || $layer == lparams* ]]; then
    [[ $included != */* && $included != *.hpp ]] ||
      fault "$file:$line: the module must not depend on $included"
  fi
done < <(git grep --untracked -nE '^ *# *include' -- '*.h' '*.cc' ':!tests/' ':!bench/' ':!examples/')

((faults == 0))
