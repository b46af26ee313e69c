#!/bin/sh
# release_test.sh ROOT FOLDER: ./release makes the same bytes of two clones, in other folders, at other times, under other
# umasks, locales, time zones and environments and, where root can become somebody else, by other users. What it makes is as
# promised. It is left in FOLDER for other tests.
set -eu
root=$1 folder=$2
scratch=$(readlink -f "$(mktemp -d)")
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch"
unset GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE

fail() {
  echo "FAILED: $1" >&2
  exit 1
}

# The sources as they are now become a commit of another repository.
mkdir "$scratch/origin"
cd "$root"
if [ "$(git rev-parse --show-prefix 2>&1)" = "" ]; then
  git ls-files -z --cached --others --exclude-standard >"$scratch/files"
else
  find . -path ./build -prune -o ! -type d -print0 >"$scratch/files"
fi
tar --null --ignore-failed-read -T "$scratch/files" -c 2>/dev/null | tar -x --no-same-owner -C "$scratch/origin"
cd "$scratch/origin"
git init -q
git add .
GIT_AUTHOR_NAME=somebody GIT_AUTHOR_EMAIL=somebody@example.org GIT_COMMITTER_NAME=somebody \
  GIT_COMMITTER_EMAIL=somebody@example.org GIT_AUTHOR_DATE="1321000000 +0000" GIT_COMMITTER_DATE="1321000000 +0000" \
  git commit -qm "What is tested"
commit=$(git rev-parse HEAD | cut -c -12)
# Git takes nothing from somebody else's repository, but from a file of his.
git bundle create -q "$scratch/bundle" HEAD --all
chmod 644 "$scratch/bundle"

# as_other COMMAND...
as_other() {
  if [ "$(id -u)" -eq 0 ]; then
    setpriv --reuid=65534 --regid=65534 --clear-groups env HOME=/nonexistent USER=nobody LOGNAME=nobody "$@"
  else
    "$@"
  fi
}

# The first clone installs what is missing, which takes root.
cat >"$scratch/make" <<'END'
set -eu
umask "$1"
git clone -q "$2" "$3"
cd "$3"
./release
END
first=$scratch/first second="$scratch/a longer way/to another folder/second"
mkdir -p "$scratch/a longer way/to another folder"
chmod 777 "$scratch/a longer way/to another folder"
env LC_ALL=C TZ=WEST8 sh "$scratch/make" 022 "$scratch/bundle" "$first" >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  fail "the first release"
}
locale=$(locale -a | grep -vE '^(C|POSIX)' | head -n 1)
as_other env LC_ALL="${locale:-C.UTF-8}" TZ=EAST-9 CXXFLAGS=-g PATH="$PATH:/nowhere" sh "$scratch/make" 077 \
  "$scratch/bundle" "$second" >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  fail "the second release"
}

made=$first/build/release
version=$(sed -n 's/^project(SpotlightZNK VERSION \([0-9.]*\) .*/\1/p' "$root/CMakeLists.txt")
name=SpotlightZNK-$version deb=shotlight_${version}_i386.deb
[ "$(cd "$made" && echo *)" = "SHA256SUMS $name.tar.xz $name.zip $deb" ] || fail "made: $(ls "$made")"
for file in "$made"/*; do
  cmp "$file" "$second/build/release/${file##*/}" || fail "${file##*/} is otherwise in the second release"
done
(cd "$made" && sha256sum --check --strict --quiet SHA256SUMS)
[ "$(wc -l <"$made/SHA256SUMS")" -eq 3 ] || fail "sums of other files"

# The zip: one folder, everything readable, and the dylib that a build gives.
mkdir "$scratch/zip"
(umask 022 && cd "$scratch/zip" && unzip -q "$made/$name.zip")
[ "$(ls "$scratch/zip")" = "$name" ] || fail "the zip has $(ls "$scratch/zip")"
unzip -Z "$made/$name.zip" >"$scratch/listing"
[ "$(grep -cE '^-rwxr-xr-x' "$scratch/listing")" -eq 1 ] && grep -qE "^-rwxr-xr-x.* $name/SpotlightZNK.dylib$" "$scratch/listing" ||
  fail "modes in the zip: $(grep -E '^-rwx' "$scratch/listing")"
if grep -E '^[-dl]' "$scratch/listing" | grep -vE '^(drwxr-xr-x|-rwxr-xr-x|-rw-r--r--) '; then fail "modes in the zip"; fi
/usr/bin/python3 -c "import sys, zipfile
for entry in zipfile.ZipFile(sys.argv[1]).infolist(): assert entry.flag_bits & 0x800, entry.filename" "$made/$name.zip" ||
  fail "a name that isn't marked as UTF-8"
cd "$scratch/zip/$name"
sha256sum --check --strict --quiet SHA256SUMS
[ "$(find . -type f | wc -l)" -eq $(($(wc -l <SHA256SUMS) + 1)) ] || fail "the zip has files without a sum"
for file in LICENSE CHANGELOG.md README.txt documents/guide.html documents/reference.html documents/keys.html documents/host-programs.html \
  examples/programs/first-query.txt examples/programs/first-query.expected; do
  [ -s "$file" ] || fail "the zip lacks $file"
done
grep -q '^Audit: all is as it should be$' report.txt || fail "the report has findings"
cmp "$first/build/release-work/$name/build/package/lib/SpotlightZNK.dylib" SpotlightZNK.dylib

# The package: everything root's, stripped, for i386, and nothing in it that tells where it was made.
dpkg-deb --fsys-tarfile "$made/$deb" | tar -tv --numeric-owner >"$scratch/listing"
if grep -v ' 0/0 ' "$scratch/listing"; then fail "files that aren't root's"; fi
if grep -vE '^(drwxr-xr-x|-rwxr-xr-x|-rw-r--r--|lrwxrwxrwx) ' "$scratch/listing"; then fail "modes in the package"; fi
if grep -iE 'test|\.a$|\.h$' "$scratch/listing"; then fail "what nobody needs is in the package"; fi
dpkg-deb -x "$made/$deb" "$scratch/package"
[ "$(cd "$scratch/package" && echo * usr/*)" = "usr usr/bin usr/lib usr/share" ] ||
  fail "the package has files elsewhere: $(cd "$scratch/package" && echo * usr/*)"
programs=0
for file in "$scratch"/package/usr/lib/shotlight/*/*; do
  case "$(file -b "$file")" in
    ELF*) ;;
    *) continue ;;
  esac
  programs=$((programs + 1))
  readelf -h "$file" | grep -q 'Intel 80386' || fail "$file is for another machine"
  if readelf -SW "$file" | grep -E '\.(symtab|debug)'; then fail "$file isn't stripped"; fi
done
[ "$programs" -eq 8 ] || fail "$programs programs and libraries in the package"
if grep -rlF "$scratch" "$scratch/package"; then fail "the files above name the folder in which they were made"; fi
dpkg-deb -f "$made/$deb" >"$scratch/control"
for word in libc6 'libicu[0-9]+' libsqlite3-0 libxml2 libarchive13; do
  grep -qE "^Depends:.*\b$word\b" "$scratch/control" || fail "the package doesn't depend on $word: $(cat "$scratch/control")"
done
grep -q '^Recommends: libimage-exiftool-perl, poppler-utils$' "$scratch/control" || fail "what is recommended"
"$scratch/package/usr/bin/shotlight" --version | grep -qx "shotlight $version (commit $commit)" ||
  fail "$("$scratch/package/usr/bin/shotlight" --version)"

# What reads documents is for i386 here alone.
ninja -C "$first/build/release-work/$name/build/package" --quiet documents-tests
GTEST_BRIEF=1 "$first/build/release-work/$name/build/package/bin/documents-tests"

rm -rf "$folder"
mkdir -p "$folder"
cp "$made"/* "$folder"
(cd "$folder" && stat -c '%9s  %n' -- * && cat SHA256SUMS)
echo "all is as expected"
