#!/bin/sh
# scripts_test.sh ROOT: ./run and ./test, as people start them, on a copy of the scripts. What they start is replaced by
# programs that note how they were called, so that nothing is built.
set -u
root=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
chmod 755 "$scratch"
failures=0

fail() {
  failures=$((failures + 1))
  echo "FAILED: $1: status $status" >&2
  sed 's/^/  /' "$scratch/output" >&2
}

# try NAME COMMAND...: what it prints, and its status, are there for the checks below.
try() {
  name=$1
  shift
  "$@" >"$scratch/output" 2>&1
  status=$?
}
expect_status() { [ "$status" -eq "$1" ] || fail "$name: expected status $1"; }
expect() { grep -qF -- "$1" "$scratch/output" || fail "$name: expected '$1'"; }
refuse() { ! grep -qF -- "$1" "$scratch/output" || fail "$name: unexpected '$1'"; }

program() {
  printf '#!/bin/sh\n%s\n' "$2" >"$scratch/bin/$1"
  chmod 755 "$scratch/bin/$1"
}

# make_project FOLDER
make_project() {
  mkdir -p "$1/cmake" "$1/.ci"
  cp "$root/run" "$root/test" "$1"
  cp "$root/cmake/packages.sh" "$1/cmake"
  cp "$root/.ci/run" "$1/.ci"
  cp -R "$root/fuzz" "$1"
}

mkdir "$scratch/bin"
program dpkg-query 'echo "ii "'
program nproc 'echo 1'
program cmake 'case "$*" in *ListSuites* | *ListTests*) exit ;; esac
echo "configured $2"
mkdir -p "build/$2/bin"
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >"build/$2/CMakeCache.txt"
echo "#!/bin/sh
case \"\$*\" in
*crashing*) kill -SEGV \$\$ ;;
*letter*) echo no plug-in >&2; exit 2 ;;
esac
echo \"shotlight of $PWD in \$PWD: \$*\"" >"build/$2/bin/shotlight"
sed "s/no plug-in/no Core Foundation/; s/shotlight of/with \$LD_LIBRARY_PATH checked in/" "build/$2/bin/shotlight" \
  >"build/$2/bin/core-foundation-check"
chmod 755 "build/$2/bin/shotlight" "build/$2/bin/core-foundation-check"
: >"build/$2/build.ninja"'
program ninja '[ -z "${NINJA_FAILS:-}" ] || { echo "the new failure"; exit 1; }
[ -f "$2/build.ninja" ]'
program ctest 'case "$*" in
*--show-only*) echo "Total Tests: 1" ;;
*) echo "tested in $PWD: $*" ;;
esac'
PATH=$scratch/bin:$PATH
export PATH
unset CDPATH NINJA_FAILS

project="$scratch/the project's own"
make_project "$project"
mkdir "$scratch/elsewhere"

cd "$project" || exit 2
try "run in its folder" ./run keys
expect_status 0
expect "shotlight of $project in $project: keys"
try "run again" ./run keys
refuse "configuring"
try "run by sh" sh run keys
expect_status 0
try "test in its folder" ./test plugin
expect_status 0
expect "tested in $project: --test-dir build/sanitize"
refuse "build/fuzz"
try "test of the slow tier" ./test --long plugin
expect_status 0
expect "tested in $project: --test-dir build/fuzz"

for target in nothing pack ""; do
  try "a fuzz target that is not there" fuzz/run "$target"
  expect_status 2
  expect "there is no target '$target'"
  expect "targets: text_patterns queries"
done
try "a fuzz target for no time" fuzz/run --built queries tomorrow
expect_status 2
expect "tomorrow is neither a number of seconds nor a file"
mkdir -p build/fuzz/bin
printf '#!/bin/sh\necho "fuzzed: $*"\n: >build/fuzz/findings/queries/crash-1\nexit 77\n' >build/fuzz/bin/fuzz-queries
chmod 755 build/fuzz/bin/fuzz-queries
try "a finding" fuzz/run --built queries 5
expect_status 77
expect "-max_total_time=5"
expect "build/fuzz/corpus/queries fuzz/seeds/queries"
expect "repeat it with: fuzz/run queries $project/build/fuzz/findings/queries/crash-1"
rm -rf build/fuzz

# A file is named from where the command is given.
cd "$scratch/elsewhere" || exit 2
for file in "a plug-in.dylib" crashing letter; do echo >"$file"; done
for option in "--plugin" "--plugin="; do
  if [ "$option" = --plugin ]; then set -- --plugin "a plug-in.dylib"; else set -- "--plugin=a plug-in.dylib"; fi
  try "test $option" "$project/test" "$@" Query
  expect_status 0
  expect "testing a plug-in.dylib (shotlight of $project in $project: --version --plugin $PWD/a plug-in.dylib)"
  expect "tested in $project: --test-dir build/plugin-file"
  expect "--tests-regex Query"
  refuse "build/sanitize"
done
[ "$(readlink -f "$project/build/plugin-file/plugin")" = "$PWD/a plug-in.dylib" ] || fail "the file that is tested"
try "test of a file that is not there" "$project/test" --plugin nowhere.dylib
expect_status 2
expect "nowhere.dylib: there is no such file; name the plug-in's dylib"
try "test of a folder" "$project/test" --plugin "$project"
expect_status 2
expect "$project: is no file that can be read; name the plug-in's dylib"
try "test of no plug-in" "$project/test" --plugin letter
expect_status 2
expect "no plug-in"
refuse "tested in"
try "test of a plug-in that crashes" "$project/test" --plugin crashing
expect_status 2
expect "crashing: its start ended the host by signal 11"
refuse "tested in"
for word in --plugin --plugin=; do
  try "test $word without a file" "$project/test" "$word"
  expect_status 2
  expect "name the plug-in's dylib"
  expect "usage: ./test [--long] [--plugin FILE | --core-foundation LIBRARY] [NAME...]"
done

for option in "--core-foundation" "--core-foundation="; do
  if [ "$option" = --core-foundation ]; then set -- "$option" "a library.so"; else set -- "${option}a library.so"; fi
  echo >"a library.so"
  try "test $option" "$project/test" "$@" Query
  expect_status 0
  expect "checked in $project in $project: $PWD/a library.so"
  expect "testing over a library.so"
  expect "tested in $project: --test-dir build/core-foundation"
  expect "--tests-regex Query"
  refuse "build/sanitize"
  try "test $option without a library" "$project/test" "$option"
  expect_status 2
  expect "name an i386 Core Foundation"
  expect "usage: ./test"
done
[ "$(readlink -f "$project/build/core-foundation/libOtherCoreFoundation.so")" = "$PWD/a library.so" ] ||
  fail "the library that is tested"
mkdir "$scratch/beside it"
ln -s "$PWD/a library.so" "$scratch/beside it/link.so"
try "test over a library behind a link" "$project/test" --core-foundation "$scratch/beside it/link.so"
expect_status 0
expect "with $scratch/beside it:$PWD checked in"
for file in nowhere.so .; do
  try "test over $file" "$project/test" --core-foundation "$file"
  expect_status 2
  expect "$file: is no file that can be read; name an i386 Core Foundation"
done
try "test over no library" "$project/test" --core-foundation letter
expect_status 2
expect "no Core Foundation"
refuse "tested in"
try "test over a library that crashes" "$project/test" --core-foundation crashing
expect_status 2
expect "crashing: loading it ended by signal 11"
refuse "tested in"
try "test of a plug-in over a library" "$project/test" --core-foundation letter --plugin letter
expect_status 2
expect "choose different tests"
# Nothing is installed or built for a wrong number.
for numbers in x 0 -1 "5 x" "5 99999999999" "5 6 7"; do
  # shellcheck disable=SC2086
  try "test --mutants $numbers" "$project/test" --mutants $numbers
  expect_status 2
  expect "test: --mutants"
  expect "       ./test --mutants [N [SEED]]"
  refuse "building"
done
for option in --mutants --coverage; do
  try "test $option with tests" "$project/test" Query $option
  expect_status 2
  expect "$option must be the first argument"
done
try "test --coverage with a test" "$project/test" --coverage Query
expect_status 2
expect "--coverage takes nothing else; 'Query' is too much"

for script in run test; do ln -s "../the project's own/$script" "$scratch/elsewhere/$script-link"; done
ln -s run-link second-link
try "run through a link" ./run-link keys
expect_status 0
expect "shotlight of $project in $scratch/elsewhere: keys"
try "run through two links" ./second-link keys
expect_status 0
try "test through a link" ./test-link
expect_status 0
expect "tested in $project"

# A folder of the same name is where CDPATH leads.
cd "$scratch" || exit 2
mkdir -p "$scratch/elsewhere/the project's own/.ci"
CDPATH=$scratch/elsewhere
export CDPATH
try "run with CDPATH" "the project's own/run" keys
expect_status 0
expect "shotlight of $project in $scratch: keys"
try "test with CDPATH" "the project's own/test"
expect_status 0
try ".ci/run with CDPATH" "the project's own/.ci/run"
expect_status 0
expect "tested in $project"
unset CDPATH

cp -R "$project" "$scratch/copy"
cd "$scratch/copy" || exit 2
try "run in a copy" ./run keys
expect_status 0
expect "build/default was made of $project; making it anew"
expect "shotlight of $scratch/copy in $scratch/copy: keys"
try "run in a copy again" ./run keys
refuse "making it anew"
try "test in a copy" ./test
expect "build/sanitize was made of $project; making it anew"
refuse "build/default was made"
mv "$scratch/copy" "$scratch/moved"
cd "$scratch/moved" || exit 2
try "run where the folder was moved" ./run keys
expect "shotlight of $scratch/moved in $scratch/moved: keys"

# As another user, whom permissions concern.
as_other() {
  if [ "$(id -u)" -eq 0 ]; then
    setpriv --reuid=65534 --regid=65534 --clear-groups "$@"
  else
    "$@"
  fi
}
cd "$project" || exit 2
echo "an old failure" >build/build-default.log
chmod 444 build/build-default.log
chmod 555 build build/default
for script in ./run ./test; do
  try "$script where another user built" as_other $script
  expect_status 2
  expect "$project/build belongs to $(id -un) and can't be written; run this as that user, or remove the folder"
  refuse "an old failure"
done
chmod 777 build build/default
NINJA_FAILS=yes
export NINJA_FAILS
try "run beside another user's log" as_other ./run keys
expect_status 2
expect "the new failure"
expect "building failed; the lines above say why"
refuse "an old failure"
unset NINJA_FAILS

[ "$failures" -eq 0 ] && echo "all is as expected"
exit "$((failures > 0))"
