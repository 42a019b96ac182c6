# Completion of lparamsctl(1) in bash(1).

_lparamsctl_offers=$(dirname "$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")")/lparams/complete

_lparamsctl() {
  local cur prev words cword
  _init_completion -n =: || return
  mapfile -t COMPREPLY < <("$_lparamsctl_offers" "$1" "${words[@]:1:cword}")
  [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace
  # readline replaces only what follows the last of these.
  COMPREPLY=("${COMPREPLY[@]#"${cur%"${cur##*[=:]}"}"}")
} && complete -o default -F _lparamsctl lparamsctl
