#!/bin/bash
# completions_test.sh BUILD: what bash offers for shotlight's command line is what the program takes. The files for zsh and
# fish are looked at where these shells are there.
set -u
build=$1
shotlight=$build/bin/shotlight
files=$build/packaging/manual
failures=0
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export XDG_CACHE_HOME=$scratch

fail() {
  failures=$((failures + 1))
  echo "FAILED: $1" >&2
}

source "$files/bash/shotlight" || exit 1
[[ $(complete -p shotlight) == 'complete -F _shotlight shotlight' ]] || fail "nothing completes shotlight"

# complete_line LINE: what is offered at its end. Where bash itself goes on, fallback says how.
compopt() { fallback=$2; }
complete_line() {
  COMP_LINE=$1 COMP_POINT=${#1} COMPREPLY=() fallback=''
  _shotlight
}
# offers LINE WORD...: exactly these, in any order.
offers() {
  local line=$1
  shift
  complete_line "$line"
  local offered expected
  offered=$(printf '%s\n' "${COMPREPLY[@]}" | sort)
  expected=$(printf '%s\n' "$@" | sort)
  [[ $offered == "$expected" ]] || fail "after '$line': $(diff <(echo "$expected") <(echo "$offered"))"
}
# falls_back LINE OPTION: to what bash has of its own.
falls_back() {
  complete_line "$1"
  [[ ${#COMPREPLY[@]} -eq 0 && $fallback == "$2" ]] || fail "after '$1': '$fallback' ${COMPREPLY[*]}"
}

mapfile -t commands < <("$shotlight" --help | sed -nE 's/^  ([a-z]+)  +.*/\1/p')
mapfile -t keys < <({ "$shotlight" keys; "$shotlight" schema | cut -f1; } | sort -u)
((${#commands[@]} > 5 && ${#keys[@]} >= 169)) || fail "the program tells no commands or keys"

offers 'shotlight ' "${commands[@]}" help --help --version
offers 'shotlight help ' "${commands[@]}"
offers 'shotlight fi' find
for command in "${commands[@]}"; do
  mapfile -t options < <("$shotlight" "$command" --help | grep -oE '^  -[^ ]+(, -[^ ]+)*' | tr -d ' ' | tr , '\n' | grep -vx -e --)
  offers "shotlight $command -" "${options[@]}"
  offers "shotlight $command any other -" "${options[@]}"
done
offers 'shotlight find -- -'

for option in '--show ' '--show=' '--sort ' '--values '; do offers "shotlight find any $option" "${keys[@]}"; done
offers 'shotlight attrs --keys ' "${keys[@]}"
offers 'shotlight schema ' "${keys[@]}"
for option in --show --sort; do
  offers "shotlight find $option kMDItemFSName,kMDItemFSSi" kMDItemFSName,kMDItemFSSize
  offers "shotlight find $option=kMDItemFSName,kMDItemFSSi" kMDItemFSName,kMDItemFSSize
done
# Bash takes : for the end of a word.
offers 'shotlight find --sort kMDItemFSSize:' desc
offers 'shotlight find --sort kMDItemFSSize:desc,kMDItemFSNa' desc,kMDItemFSName
falls_back 'shotlight find --in ' dirnames
falls_back 'shotlight find any --in=exa' dirnames
falls_back 'shotlight find --plugin ' default
falls_back 'shotlight attrs any' default
falls_back 'shotlight attrs --json -- -' default
falls_back 'shotlight program ' default
offers 'shotlight find --limit '
offers 'shotlight keys '

# The program takes the words that are offered, and names no others.
complete_line 'shotlight find --scope '
scopes=("${COMPREPLY[@]}")
complete_line 'shotlight find --color '
colors=("${COMPREPLY[@]}")
for option in scope color; do
  if [[ $option == scope ]]; then words=("${scopes[@]}"); else words=("${colors[@]}"); fi
  ((${#words[@]} >= 3)) || fail "--$option: ${words[*]}"
  for word in "${words[@]}"; do
    HOME=/ "$shotlight" find any --"$option" "$word" --explain >/dev/null || fail "--$option $word is refused"
  done
  named=$("$shotlight" find any --"$option" '' 2>&1 | grep -oE ', | or ' | wc -l)
  ((named + 1 == ${#words[@]})) || fail "--$option: the program names $((named + 1)) words, offered are ${words[*]}"
done
offers 'shotlight find --scope home,computer-i' home,computer-indexed

if command -v zsh >/dev/null; then zsh -n "$files/zsh/_shotlight" || fail "zsh doesn't read its file"; fi
if command -v fish >/dev/null; then fish --no-execute "$files/fish/shotlight.fish" || fail "fish doesn't read its file"; fi
((failures == 0)) && echo "all is as expected"
exit $((failures > 0))
