#!/bin/sh
# install_test.sh ROOT CMAKE BUILD: what is installed of the folder BUILD works wherever it is moved, by itself: it gives
# what the program in BUILD gives, and takes nothing from there.
set -eu
root=$1 cmake=$2 build=$3
scratch=$(readlink -f "$(mktemp -d)")
# The list of what somebody installed from there, maybe as root, stays as it is.
manifest=$build/install_manifest.txt
trap '[ ! -e "$scratch/manifest" ] || mv -f "$scratch/manifest" "$manifest"; rm -rf "$scratch"' EXIT
export XDG_CACHE_HOME="$scratch/cache"

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

[ ! -e "$manifest" ] || mv "$manifest" "$scratch/manifest"
"$cmake" --install "$build" --prefix "$scratch/prefix" >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  exit 1
}
rm "$manifest"
[ "$(cd "$scratch/prefix" && echo * bin/* lib/*)" = "bin lib share bin/shotlight lib/shotlight" ] ||
  fail "installed elsewhere: $(cd "$scratch/prefix" && echo * bin/* lib/*)"
foreign=$(find "$scratch/prefix" -iname '*test*' -o -name '*.a' -o -name '*.h')
[ -z "$foreign" ] || fail "installed, and of no use there: $foreign"

mkdir "$scratch/somewhere else"
moved="$scratch/somewhere else/moved"
mv "$scratch/prefix" "$moved"
ln -s "somewhere else/moved/bin/shotlight" "$scratch/linked"
documents=$moved/share/doc/shotlight
library=$documents/examples/library
for document in "$documents"/docs/*.md; do
  grep -oE '\]\([^)#:]+' "$document" | cut -c 3- >"$scratch/targets" || true
  while IFS= read -r target; do
    [ -e "$documents/docs/$target" ] || fail "$document leads to $target, which isn't installed"
  done <"$scratch/targets"
done

# both WHAT ARGUMENT...: the installed program, through a link and by the search path, says what the built one says.
both() {
  what=$1
  shift
  "$build/bin/shotlight" "$@" >"$scratch/expected" || fail "$what: status $? of what was built"
  "$scratch/linked" "$@" >"$scratch/output" || fail "$what: status $?"
  cmp "$scratch/expected" "$scratch/output" || fail "$what is otherwise when installed"
  (cd / && PATH="$moved/bin:$PATH" && shotlight "$@") >"$scratch/output" || fail "$what: status $? on the search path"
  cmp "$scratch/expected" "$scratch/output" || fail "$what is otherwise on the search path"
}
both "the version" --version
both "a search" find 'kMDItemFSName == "*.txt"' --in "$library"
both "the attributes of a text" attrs "$library/Notes/2011 diary.txt" --json
both "the schema" schema
both "a program" program "$documents/examples/programs/first-query.txt" "$library"
cmp "$scratch/output" "$root/examples/programs/first-query.expected"
# By a reader of documents of its own, not by what the built one kept of them.
XDG_CACHE_HOME=$scratch/other "$scratch/linked" find 'kMDItemTextContent == "regatta*"c && kMDItemFSName == "*.docx"' \
  --in "$library" --show kMDItemFSName >"$scratch/output"
grep -q 'Summer regatta.docx' "$scratch/output" || fail "the text of a document"

# without FILE EXPECTED ARGUMENT...: it is the installed file that is used.
without() {
  file=$1 expected=$2
  shift 2
  mv "$moved/lib/shotlight/$file" "$scratch/aside"
  status=0
  "$scratch/linked" "$@" >"$scratch/output" 2>&1 || status=$?
  mv "$scratch/aside" "$moved/lib/shotlight/$file"
  [ "$status" -ne 0 ] || fail "$file isn't needed"
  grep -qF "$expected" "$scratch/output" || {
    cat "$scratch/output" >&2
    fail "without $file: expected $expected"
  }
}
without lib/SpotlightZNK.dylib "$moved/lib/shotlight/lib/SpotlightZNK.dylib" keys
for library_file in libStandinGate libCoreFoundation libStandinSystem libCoreServices libApplicationServices libCarbon; do
  without lib/$library_file.so $library_file.so keys
done
without libexec/document-text document-text find --no-store 'kMDItemTextContent == "regatta"' --in "$library/Documents"
"$scratch/linked" keys >/dev/null
echo "all is as expected"
