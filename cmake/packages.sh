# Sourced by ./run, ./test and ./release: brings a Debian 12 machine to where the project builds.

required_packages="cmake ninja-build g++-multilib clang-14 clang-tidy-14 libclang-rt-14-dev llvm-14 googletest findutils
  libicu-dev libicu72:i386 libsqlite3-dev libsqlite3-0:i386 libarchive-dev libxml2-dev poppler-utils
  nlohmann-json3-dev libimage-exiftool-perl libarchive-zip-perl"

# What ./release needs besides.
release_packages="git xz-utils file dpkg-dev binutils libxml2:i386 libarchive13:i386 pandoc"

is_installed() {
  dpkg-query -W -f='${db:Status-Abbrev}' "$1" 2>/dev/null | grep -q '^ii'
}

as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    echo "$0: packages must be installed, which takes root: run as root, or install sudo" >&2
    exit 2
  fi
}

# apt_install [OPTION...]: what is missing. Nothing that is there makes room for it.
apt_install() {
  # shellcheck disable=SC2086
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-remove --no-install-recommends \
    "$@" $missing
}

# install_packages [PACKAGE...]: what the build needs, and these.
install_packages() {
  command -v dpkg-query >/dev/null || {
    echo "$0: this machine has no dpkg; the project builds on Debian 12 (see README.md)" >&2
    exit 2
  }
  missing=
  for package in $required_packages "$@"; do
    is_installed "$package" || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0

  echo "$0: installing$missing" >&2
  log=$(mktemp)
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    echo "$0: adding the i386 architecture to dpkg" >&2
    as_root dpkg --add-architecture i386
  fi
  # A package list that can't be fetched whole (a mirror in the middle of its update) need not matter.
  as_root apt-get update >"$log" 2>&1 || echo "$0: apt-get update reported errors; going on with what it got" >&2
  # Where that concerns the updates of one architecture, the release itself has versions that fit together.
  if ! apt_install >>"$log" 2>&1 && ! apt_install --target-release "$(. /etc/os-release && echo "$VERSION_CODENAME")" \
    >>"$log" 2>&1; then
    cat "$log" >&2
    echo "$0: apt-get could not install$missing; the lines above say why" >&2
    exit 2
  fi
  rm -f "$log"
}

# logged LOG WHAT COMMAND...: the command prints to build/LOG.log, which is shown if it fails.
logged() {
  log=build/$1.log
  what=$2
  shift 2
  # One that somebody else wrote can't be written, and must not be taken for this one.
  rm -f "$log"
  "$@" >"$log" 2>&1 || {
    cat "$log" >&2
    echo "$0: $what failed; the lines above say why" >&2
    exit 2
  }
}

# Ends where another user built here, whose files this one can't change.
check_writable() {
  for folder in build "build/$1"; do
    if [ -e "$folder" ] && [ ! -w "$folder" ]; then
      echo "$0: $PWD/$folder belongs to $(stat -c %U "$folder") and can't be written; run this as that user, or remove" \
        "the folder and try again" >&2
      exit 2
    fi
  done
}

# A build folder names the folder of its sources. In a copy it would go on building the original.
remove_copied() {
  sources=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "build/$1/CMakeCache.txt" 2>/dev/null) || return 0
  [ -n "$sources" ] && [ ! "$sources" -ef . ] || return 0
  echo "$0: build/$1 was made of $sources; making it anew" >&2
  rm -rf "build/$1"
}

# configure NAME [ARGUMENT...]: build/NAME, with the preset of that name, or with those arguments of cmake. Quiet unless it
# fails.
configure() {
  name=$1
  shift
  [ $# -gt 0 ] || set -- --preset "$name"
  check_writable "$name"
  remove_copied "$name"
  [ -f "build/$name/build.ninja" ] && return 0
  echo "$0: configuring build/$name" >&2
  mkdir -p build
  logged "configure-$name" "configuring build/$name" cmake "$@"
}
