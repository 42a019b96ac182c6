#!/usr/bin/env bash
# What bash and zsh offer for a command line of the client, without an agent and with one.
#
# Usage: completion_test.sh BUILD_DIR
set -euo pipefail

build=$(readlink -f "$1")
command -v zsh >/dev/null || {
  echo 'zsh is not there'
  exit 77
}
place=$(mktemp -d)
agent=''
trap '[[ -z $agent ]] || kill "$agent"; rm -rf "$place"' EXIT
cmake --install "$build" --prefix "$place" --component client >/dev/null
export PATH=$place/bin:$PATH LPARAMS_SOCKET=$place/run/agent.sock

# in_bash WORD...: what bash would put in the place of the last word, or of its last part.
# shellcheck disable=SC2317  # called by its name
in_bash() {
  bash -c '
    source /usr/share/bash-completion/bash_completion
    source "$1/share/bash-completion/completions/lparamsctl"
    shift
    COMP_WORDS=()
    for word; do # as readline takes them apart
      while [[ $word =~ ^([^=:]*)([=:]+)(.*)$ ]]; do
        [[ -z ${BASH_REMATCH[1]} ]] || COMP_WORDS+=("${BASH_REMATCH[1]}")
        COMP_WORDS+=("${BASH_REMATCH[2]}")
        word=${BASH_REMATCH[3]}
        [[ $word ]] || continue 2
      done
      COMP_WORDS+=("$word")
    done
    COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
    COMP_LINE=$*
    COMP_POINT=${#COMP_LINE}
    compopt() { :; } # only where the shell itself has asked
    _lparamsctl lparamsctl
    printf "%s\n" "${COMPREPLY[@]}"' bash "$place" lparamsctl "$@"
}

# in_zsh WORD...: what zsh would put in the place of the last word.
# shellcheck disable=SC2317  # called by its name
in_zsh() {
  zsh -fc '
    fpath=($1/share/zsh/vendor-completions)
    autoload -Uz _lparamsctl
    autoload +X _lparamsctl
    compset() { [[ -z $2 ]] || print "behind $2"; }
    compadd() { [[ $1 != -S ]] || shift 2; shift; (( ! $# )) || print -rl -- "$@"; }
    _files() { print a file; }
    shift
    words=("$@")
    CURRENT=$#
    _lparamsctl' zsh "$place" lparamsctl "$@"
}

failed=0
# offers SHELL EXPECTED WORD...: EXPECTED is among what is offered, or, with "=" before it, all of it.
offers() {
  local shell=$1 expected=$2 said
  shift 2
  said=$("in_$shell" "$@")
  if [[ $expected == =* ]]; then
    [[ $(xargs <<<"$said") != "${expected#=}" ]] || return 0
  else
    ! grep -qxF -e "$expected" <<<"$said" || return 0
  fi
  echo "$shell offers for \"${*}\": $(xargs <<<"$said"), not $expected"
  failed=1
}

both() {
  offers bash "$@"
  offers zsh "$@"
}

check_names() {
  both '=status' stat
  both '=rename' user re
  both '--unsaved' list --un
  both '--socket' list --so
  both '=IKE.IKE_PORT' get IKE.IKE_P
  both '=POLICY' show POLICY
  both '=IKE.IKE_PORT=' set IKE.IKE_P
  both '=PMP_AUTH= PMP_AUTH_MODE=' user add anna PMP_AUTH
  offers zsh '=IKE.PERSISTENT_SA=0 IKE.PERSISTENT_SA=1' set IKE.PERSISTENT_SA=
  offers bash '=0 1' set IKE.PERSISTENT_SA=
  offers bash '=TFC_PADDING_OFF TFC_PADDING_ON' set IKE.IKE_PORT=501 IKE.IPSEC_TFC_PADDING=TFC
  offers bash '=PMPAUTH_SIG PMPAUTH_PSK' user set anna PMP_AUTH=
  offers bash '=PMPAUTH_SIG PMPAUTH_PSK' set 'USERS[anna].PMP_AUTH='
  offers zsh '=a file' --file ''
  offers zsh '=behind --file= a file' --file=
  offers bash "=$place/share/zsh" check "$place/share/z"
  offers bash "=$place/share/zsh" "--file=$place/share/z"
  offers bash "=@$place/share/zsh" set "IKE.QCD_SECRET=@$place/share/z"
  both '=' apply --message ''
}

echo 'without an agent'
check_names
both '=' user show ''

echo 'with one'
mkdir -m 700 "$place/state"
"$build/lparams_agent" --socket "$LPARAMS_SOCKET" --state-dir "$place/state" 2>"$place/log" &
agent=$!
for ((i = 0; i < 600; ++i)); do
  ! lparamsctl status >/dev/null 2>&1 || break
  sleep 0.1
done
lparamsctl user add anna >/dev/null
check_names
both '=anna' user show ''
both '=USERS USERS[anna]' show USERS
both '=USERS[anna].PMP_PSK_NAME' get 'USERS[anna].PMP_PSK'
offers bash '=anna' user show \'an
lparamsctl save >/dev/null
both '=2 1' rollback ''
both '=2 1' diff --revision ''
exit "$failed"
