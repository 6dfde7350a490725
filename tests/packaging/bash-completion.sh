#!/usr/bin/env bash
# Drives akvo-lipsync's bash completion as bash does when TAB is pressed, and
# checks what it offers: subcommands, the options of the program or of the
# subcommand at hand, file names for a path, nothing for a number; and every
# subcommand that --help lists. Usage: bash-completion.sh COMPLETION PROGRAM
set -euo pipefail
completion=$1 program=$2
# shellcheck source=/dev/null
source "$completion"
work=$(mktemp -d /tmp/akvo-completion.XXXXXX)
trap 'rm -rf "$work"' EXIT
touch "$work/sock" "$work/socket"

status=0
offered() { # offered WORD... : what TAB after the last word offers, sorted as bash shows it
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _akvo_lipsync
  [ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\n' "${COMPREPLY[@]}" | sort | paste -sd' '
}
check() { # check EXPECTED WORD...
  local expected=$1 actual
  shift
  actual=$(offered "$@")
  if [ "$actual" != "$expected" ]; then
    printf '%s\n  expected: %s\n  actual:   %s\n' "$*" "$expected" "$actual"
    status=1
  fi
}

check "timestamps" akvo-lipsync ti
check "--json" akvo-lipsync --js
check "caps" akvo-lipsync --socket /tmp/lipsync ca
check "caps" akvo-lipsync --socket = /tmp/lipsync ca
check "--count --csv" akvo-lipsync --json timestamps --c
check "$work/sock $work/socket" akvo-lipsync --socket "$work/so"
check "$work/sock $work/socket" akvo-lipsync --socket = "$work/so"
check "" akvo-lipsync timestamps --count ""
check "" akvo-lipsync set-margin ""
subcommands=$("$program" --help | awk '/^Subcommands:$/ { on = 1; next } /^[^ ]/ { on = 0 } on && /^  [a-z]/ { print $1 }')
check "$(sort <<<"$subcommands" | paste -sd' ')" akvo-lipsync ""
[ $status -eq 0 ] && echo "bash completion: subcommands, options and paths as --help lists them"
exit $status
