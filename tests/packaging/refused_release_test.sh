#!/bin/sh
# refused_release_test.sh ROOT: ./release makes nothing of what is no commit, and says why.
set -eu
root=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export GIT_AUTHOR_NAME=somebody GIT_AUTHOR_EMAIL=somebody@example.org
export GIT_COMMITTER_NAME=somebody GIT_COMMITTER_EMAIL=somebody@example.org
unset GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE

project="$scratch/somebody's project"
mkdir -p "$project/cmake" "$project/tests"
for file in release CMakeLists.txt CHANGELOG.md .gitignore cmake/packages.sh tests/CMakeLists.txt; do
  cp "$root/$file" "$project/$file"
done
cd "$project"

# refuses WHAT MESSAGE ARGUMENT...
refuses() {
  what=$1 message=$2
  shift 2
  status=0
  ./release "$@" >"$scratch/output" 2>&1 || status=$?
  if [ "$status" -ne 2 ] || ! grep -qF -- "$message" "$scratch/output" || [ -e build ]; then
    cat "$scratch/output" >&2
    echo "FAILED: $what: status $status; expected 2, '$message', and no folder 'build'" >&2
    exit 1
  fi
}

refuses "an argument" "takes no arguments; '2.0' was given" 2.0
refuses "no repository" "is not a git checkout with a commit"
git init -q
refuses "no commit" "is not a git checkout with a commit"
git add .
git commit -qm first
mkdir within
cp -R release cmake CHANGELOG.md CMakeLists.txt within
(cd within && refuses "a folder within another repository" "is not a git checkout with a commit")
refuses "files that git doesn't know" "?? within/"
rm -r within
echo >tests/new_test.cpp
refuses "a new test" "?? tests/new_test.cpp"
rm tests/new_test.cpp
echo >>tests/CMakeLists.txt
refuses "a changed file" " M tests/CMakeLists.txt"
refuses "a changed file" "commit them, or put them aside"
git add .
refuses "a change that isn't committed yet" "M  tests/CMakeLists.txt"
git commit -qm second
sed -i 's/^## \[[0-9].*/## [0.1.0] - 2020-02-02/' CHANGELOG.md
git commit -qam third
refuses "a version without an entry" "CHANGELOG.md has no \"## ["
echo "all is as expected"
