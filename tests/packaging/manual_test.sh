#!/bin/sh
# manual_test.sh BUILD VERSION: the manual has a page of the program and one of each command, with all that the help texts
# say.
set -eu
build=$1 version=$2
pages=$build/packaging/manual/man
failures=0

fail() {
  failures=$((failures + 1))
  echo "FAILED: $1" >&2
}

# The words of a page, without what only formats them.
words_of() {
  sed -E '/^\.(\\"|TH)/d; s/^\.(SH|SS|BR|PP|TP|nf|fi|nh|ad l|ss 12 0) ?//; s/\\f[BIR]//g; s/\\-/-/g; s/\\&//g; s/\\\(aq/'"'"'/g
    s/\\\(ti/~/g; s/\\\(ha/^/g; s/\\\(ga/`/g; s/\\e/\\/g' "$1" | tr -s ' \n' '\n\n'
}

# check PAGE HELP-ARGUMENT...: each paragraph of the help, option by option, stands in the page.
check() {
  page=$pages/$1.1
  shift
  [ -f "$page" ] || {
    fail "there is no $page"
    return
  }
  grep -q "^\.TH .* \"shotlight $version\"" "$page" || fail "$page is not of version $version"
  whole=" $(words_of "$page" | tr '\n' ' ')"
  pieces=0
  # A piece is what begins anew: a paragraph, a row, a line of what isn't filled.
  "$build/bin/shotlight" "$@" | awk '
    /^$/ {flush(); next}
    /^(usage:)? *shotlight|^  [^ ]|^examples?:/ || (/^[^ ]/ && last ~ /^ /) {flush()}
    {last = $0}
    {sub(/^usage:/, ""); sub(/^shotlight[^:]*: /, ""); piece = piece " " $0}
    END {flush()}
    function flush() {gsub(/ +/, " ", piece); if (piece != "") print piece; piece = ""}
  ' | sed -E 's/^ ?//; s/[.:]$//; s/^examples?$//' | grep . >"$scratch/pieces"
  while IFS= read -r piece; do
    pieces=$((pieces + 1))
    case "$whole" in
      *" $piece"*) ;;
      *) fail "$page lacks: $piece" ;;
    esac
  done <"$scratch/pieces"
  [ "$pieces" -gt 3 ] || fail "$page: the help has $pieces pieces only"
}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

check shotlight --help
commands=$("$build/bin/shotlight" --help | sed -nE 's/^  ([a-z]+)  +.*/\1/p')
for command in $commands; do check "shotlight-$command" "$command" --help; done
[ "$(ls "$pages" | wc -l)" -eq $(($(echo "$commands" | wc -w) + 1)) ] || fail "other pages than of these commands: $(ls "$pages")"

# What formats them has nothing to say about them.
if command -v man >/dev/null && command -v groff >/dev/null; then
  for page in "$pages"/*; do
    warnings=$(MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null)
    [ -z "$warnings" ] || fail "$page: $warnings"
  done
fi
[ "$failures" -eq 0 ] && echo "all is as expected"
exit $((failures > 0))
