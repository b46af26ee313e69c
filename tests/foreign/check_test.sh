# check_test.sh CHECK COMPILER SECOND STANDIN: what core-foundation-check says of libraries over which tests can run, and
# of others.
set -eu
check=$1
compiler=$2
second=$3
standin=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"

# refused FILE WORDS
refused() {
  status=0
  "$check" "$1" >said 2>&1 || status=$?
  if [ "$status" -ne 2 ] || ! grep -qF "$1: $2" said; then
    echo "$1: status $status, and:" >&2
    cat said >&2
    exit 1
  fi
}

"$check" "$second" || {
  echo "$second is refused" >&2
  exit 1
}
refused "$standin" "is one of the stand-ins here"
echo "a letter" >letter
refused "$PWD/letter" "can't be loaded as a shared library for i386: file too short"
echo 'extern "C" void CFRetain() {}' >little.cpp
"$compiler" -shared -fPIC -o wide.so little.cpp
refused "$PWD/wide.so" "can't be loaded as a shared library for i386: wrong ELF class: ELFCLASS64"
"$compiler" -m32 -shared -fPIC -o little.so little.cpp
refused "$PWD/little.so" "lacks what the tests need:"
for name in CFRelease kCFNull _CFRuntimeRegisterClass; do
  grep -qx "  $name" said || {
    echo "$name isn't named" >&2
    exit 1
  }
done
! grep -qx "  CFRetain" said
