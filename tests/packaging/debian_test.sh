#!/bin/sh
# debian_test.sh FOLDER: the Debian package in FOLDER is installed in a fresh minimal Debian for x86-64, works there without
# and with what it recommends, has its manual and its completions, and leaves nothing behind when it is removed. Ends with
# status 77 where no such Debian can be made.
set -eu
deb=$(echo "$1"/*.deb)

skip() {
  echo "skipped: $1"
  exit 77
}
fail() {
  echo "FAILED: $1" >&2
  exit 1
}
[ "$(id -u)" -eq 0 ] || skip "a Debian of its own takes root"
command -v mmdebstrap >/dev/null || skip "mmdebstrap isn't installed"
# The rest is run where what is mounted is gone at the end.
[ "${2:-}" = unshared ] || {
  unshare --mount true 2>/dev/null || skip "nothing may be mounted here"
  status=0
  unshare --mount "$0" "$1" unshared || status=$?
  exit $status
}

scratch=$(mktemp -d)
debian=$scratch/debian
trap 'umount "$debian/proc" "$debian/dev/pts" 2>/dev/null; rm -rf --one-file-system "$scratch"' EXIT
codename=$(. /etc/os-release && echo "$VERSION_CODENAME")
# shellcheck disable=SC2016
mirror=$(apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
  sed -n "s/^Debian $codename //p" | head -n 1)
[ "$mirror" ] || skip "apt knows no mirror of Debian $codename"
mmdebstrap --mode=root --variant=minbase --architectures=amd64,i386 "$codename" "$debian" "$mirror" >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  skip "mmdebstrap made no Debian of $mirror"
}
mount -t proc proc "$debian/proc"
mount -t devpts -o newinstance,ptmxmode=666 devpts "$debian/dev/pts"
cp "$deb" "$debian/shotlight.deb"
[ ! -e /etc/resolv.conf ] || cat /etc/resolv.conf >"$debian/etc/resolv.conf"

# in_debian COMMAND...
in_debian() {
  env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root TERM=dumb LC_ALL=C.UTF-8 \
    XDG_CACHE_HOME=/tmp/cache ${http_proxy:+http_proxy="$http_proxy"} chroot "$debian" "$@"
}
install() {
  in_debian env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@" >"$scratch/log" 2>&1 || {
    cat "$scratch/log" >&2
    fail "installing $*"
  }
}
# All files, without what package managers and the linker note of theirs.
files() {
  (cd "$debian" && find . -xdev \( -path ./proc -o -path ./dev -o -path ./tmp -o -path ./var/cache -o -path ./var/lib/apt \
    -o -path ./var/lib/dpkg -o -path ./var/log -o -path ./etc/ld.so.cache \) -prune -o -print | LC_ALL=C sort)
}
# expect WHAT TEXT COMMAND...: it succeeds, and the text is in what it prints.
expect() {
  what=$1 text=$2
  shift 2
  in_debian "$@" >"$scratch/output" 2>"$scratch/errors" </dev/null && grep -qF -- "$text" "$scratch/output" || {
    cat "$scratch/output" "$scratch/errors" >&2
    fail "$what: it failed, or did not print '$text'"
  }
}
# complains WHAT TEXT COMMAND...: it ends with status 3, and the text is in its errors.
complains() {
  what=$1 text=$2 status=0
  shift 2
  in_debian "$@" >"$scratch/output" 2>"$scratch/errors" </dev/null || status=$?
  [ "$status" -eq 3 ] && grep -qF -- "$text" "$scratch/errors" || {
    cat "$scratch/output" "$scratch/errors" >&2
    fail "$what: status $status, without '$text'"
  }
}
examples=/usr/share/doc/shotlight/examples
library=$examples/library

in_debian apt-get update >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  skip "the mirror doesn't tell that Debian its packages"
}
# Which apt-get keeps once it is there.
install libc6:i386
files >"$scratch/before"
install /shotlight.deb
expect "the version" "shotlight " shotlight --version
expect "a search" "2011 diary.txt" shotlight find 'kMDItemFSName == "*.txt"' --in $library
expect "attributes" 'kMDItemDisplayName' shotlight attrs "$library/Notes/2011 diary.txt"
expect "the schema" "kMDItemTitle	String" shotlight schema kMDItemTitle
in_debian shotlight program $examples/programs/first-query.txt $library >"$scratch/output"
cmp "$scratch/output" "$debian$examples/programs/first-query.expected"
for document in "Summer regatta.docx" "Club rules.odt" "Minutes of May.rtf" "Opening hours.html"; do
  expect "the text of $document" "$document" shotlight find --in "$library/Documents" --show kMDItemFSName \
    "kMDItemTextContent == \"*\" && kMDItemFSName == \"$document\""
done
complains "a PDF without pdftotext" "poppler-utils" shotlight find 'kMDItemTextContent == "*"' --in "$library/Documents"
complains "a photo without exiftool" "libimage-exiftool-perl" shotlight find 'kMDItemISOSpeed > 0' --in "$library/Photos"
in_debian apt-get purge -y shotlight >"$scratch/log" 2>&1
in_debian apt-get autoremove --purge -y >"$scratch/log" 2>&1
files >"$scratch/after"
diff "$scratch/before" "$scratch/after" || fail "the package left the files above, or took others along"

# With what it recommends, and what shows the manual and completes command lines.
recommended=$(dpkg-deb -f "$deb" Recommends | tr -d ,)
# shellcheck disable=SC2086
install /shotlight.deb $recommended man-db bash-completion zsh fish
expect "a PDF" "Harbour report.pdf" shotlight find 'kMDItemTextContent == "*"' --in "$library/Documents"
expect "a photo" "Fog.heic" shotlight find 'kMDItemISOSpeed > 1000' --in "$library/Photos"
for command in "" -find -attrs -schema -keys -program -store -window; do
  expect "the manual" "shotlight$command - " man "shotlight$command"
done
expect "the manual" "--exclude GLOB" man shotlight-find

# typed SHELL LINE...: on a terminal, line by line; there is time for each to be read.
typed() {
  shell=$1
  shift
  { for line in "$@" exit; do sleep 1 && printf "$line" && printf '\n'; done; sleep 1; } |
    in_debian script -qec "$shell" /dev/null >"$scratch/output" 2>&1
}
# Where command, options, keys and folder are completed, the query is explained; otherwise an error is told.
check_typed() {
  grep -q '^query .*kMDItemDisplayName' "$scratch/output" && grep -q '^in  */usr/share' "$scratch/output" &&
    ! grep -q '^shotlight: ' "$scratch/output" || {
    cat "$scratch/output" >&2
    fail "completion by $1"
  }
}
typed "bash --norc -i" ". /usr/share/bash-completion/bash_completion" \
  'shotlight fi\tharbour --expl\t --show kMDItemFSNa\t,kMDItemFSSi\t --i\t/usr/sha\t'
check_typed bash
typed "zsh -f -i" "autoload -Uz compinit && compinit -u" \
  'shotlight fi\tharbour --expl\t --show kMDItemFSNa\t,kMDItemFSSi\t --in /usr/sha\t'
check_typed zsh
expect "completion by fish" "--show" fish -c "complete -C 'shotlight find any --sh'"
expect "completion by fish" "kMDItemFSName,kMDItemFSSize" fish -c "complete -C 'shotlight find any --show kMDItemFSName,kMDItemFSSi'"
expect "completion by fish" "/usr/share/" fish -c "complete -C 'shotlight find any --in /usr/sha'"
expect "completion by fish" "attrs" fish -c "complete -C 'shotlight '"

in_debian apt-get purge -y shotlight >"$scratch/log" 2>&1
left=$(in_debian find / -xdev \( -path /tmp -o -path /proc -o -path /shotlight.deb \) -prune -o \
  \( -iname '*shotlight*' -o -iname '*spotlightznk*' \) -print | grep -vE '^/var/(log|cache)/' || true)
[ -z "$left" ] || fail "removed, the package leaves $left"
echo "all is as expected"
