#!/bin/sh
# commit_test.sh ROOT CMAKE: which commit a program is told to be built from, in a repository, in an archive of one, and
# where there is neither.
set -eu
root=$1 cmake=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
export GIT_AUTHOR_NAME=somebody GIT_AUTHOR_EMAIL=somebody@example.org
export GIT_COMMITTER_NAME=somebody GIT_COMMITTER_EMAIL=somebody@example.org
unset GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE

# expect WHAT SOURCES LITERAL
expect() {
  "$cmake" -DSOURCES="$2" -DOUTPUT="$scratch/commit.inc" -P "$root/cmake/WriteCommit.cmake"
  [ "$(cat "$scratch/commit.inc")" = "$3" ] || {
    echo "FAILED: $1: expected $3, got $(cat "$scratch/commit.inc")" >&2
    exit 1
  }
}

project="$scratch/somebody's project"
mkdir -p "$project/cmake"
cp "$root/cmake/commit.txt" "$project/cmake"
cp "$root/.gitattributes" "$project"
expect "no repository" "$project" '""'

cd "$project"
git init -q
expect "a repository without a commit" "$project" '""'
git add .
git commit -qm first
commit=$(git rev-parse HEAD | cut -c -12)
expect "a commit" "$project" "\" (commit $commit)\""
touch -d "1 hour ago" "$scratch/commit.inc"
before=$(stat -c %Y "$scratch/commit.inc")
expect "the same commit" "$project" "\" (commit $commit)\""
[ "$(stat -c %Y "$scratch/commit.inc")" = "$before" ] || {
  echo "FAILED: the file was written again, so that it would be compiled again" >&2
  exit 1
}
echo >new
expect "a file that git doesn't know" "$project" "\" (commit $commit)\""
echo >>.gitattributes
expect "a changed file" "$project" "\" (commit $commit, changed)\""
git checkout -q .gitattributes

git archive --prefix=archive/ HEAD | tar -xC "$scratch"
expect "an archive" "$scratch/archive" "\" (commit $commit)\""
git archive --prefix=within/ HEAD | tar -xC "$project"
git commit -q --allow-empty -m second
expect "an archive within a repository" "$project/within" "\" (commit $commit)\""
cp "$root/cmake/commit.txt" "$project/within/cmake"
expect "a folder within another repository" "$project/within" '""'
echo "all is as expected"
