#!/bin/sh
# version_test.sh ROOT BUILD VERSION OBJDUMP: it is the same version everywhere: that of the project. The dylib doesn't
# depend on the commit.
set -eu
root=$1 build=$2 version=$3 objdump=$4

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

grep -q "^project(SpotlightZNK VERSION $version " "$root/CMakeLists.txt" || fail "CMakeLists.txt"
"$build/bin/shotlight" --version | grep -qE "^shotlight $version( \(commit [0-9a-f]{12}(, changed)?\))?$" ||
  fail "$("$build/bin/shotlight" --version)"
"$objdump" --macho --private-headers "$build/lib/SpotlightZNK.dylib" | sed -n '/LC_ID_DYLIB/,/Load command/p' |
  grep -q "current version $version$" || fail "the dylib's current version"
# The last that was published, or is being made.
newest=$(grep -E '^## \[[0-9]' "$root/CHANGELOG.md" | head -n 1)
echo "$newest" | grep -qE "^## \[$version\] - [0-9]{4}-[0-9]{2}-[0-9]{2}$" || fail "CHANGELOG.md has $newest"
grep -q "\"${newest##* }\" \"shotlight $version\"" "$build/packaging/manual/man/shotlight.1" || fail "the manual"
# Where the program's own version is named, it is this one.
others=$(grep -nE '(SpotlightZNK|shotlight)[-_ ][0-9]+\.[0-9]+\.[0-9]+' "$root"/README.md "$root"/docs/*.md "$root"/shotlight/help.cpp |
  grep -vE "(SpotlightZNK|shotlight)[-_ ]$(echo "$version" | sed 's/\./\\./g')" || true)
[ -z "$others" ] || fail "another version: $others"

commit=$("$build/bin/shotlight" --version | sed -nE 's/.*commit ([0-9a-f]{12}).*/\1/p')
[ -z "$commit" ] || ! grep -q "$commit" "$build/lib/SpotlightZNK.dylib" || fail "the dylib has the commit"
echo "all is as expected"
