# Completion of lparamsctl(1) in bash(1): the program tells itself what a word could become.

_lparamsctl() {
  local cur prev words cword lines kept=''
  _init_completion -n =: || return
  # readline replaces only what follows the quote, or the last of these.
  [[ $cur == [\'\"]* ]] || kept=${cur%"${cur##*[=:]}"}
  cur=${cur#[\'\"]}
  mapfile -t lines < <("$1" complete "${words[@]:1:cword-1}" "$cur" 2>/dev/null)
  case ${lines[0]-} in
    files)
      cur=${cur#"${lines[1]}"}
      _filedir
      COMPREPLY=("${COMPREPLY[@]/#/"${lines[1]}"}")
      [[ ${lines[1]} == "$kept" ]] || compopt -o nospace # it cannot tell a directory then
      ;;
    words)
      COMPREPLY=("${lines[@]:1}")
      [[ ${COMPREPLY[0]-} != *[.=] ]] || compopt -o nospace
      ;;
  esac
  COMPREPLY=("${COMPREPLY[@]#"$kept"}")
} && complete -F _lparamsctl lparamsctl
