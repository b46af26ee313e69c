#!/bin/sh
# rebuild_test.sh ROOT CMAKE: in a folder with an apostrophe and a blank, what was compiled for the Mac is compiled again
# when a header changes, and only then.
set -eu
root=$1
cmake=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

project="$scratch/somebody's project"
mkdir -p "$project/folder"
cd "$project"
cat >CMakeLists.txt <<END
cmake_minimum_required(VERSION 3.25)
project(Sample LANGUAGES NONE)
include("$root/cmake/MachODylib.cmake")
from_build(here \${CMAKE_SOURCE_DIR})
clang_compile(\${CMAKE_SOURCE_DIR}/folder/sample.cpp \${CMAKE_BINARY_DIR}/objects/sample.o sample
  \${MACHO_COMPILE_FLAGS} -I\${here})
add_custom_target(sample ALL DEPENDS \${CMAKE_BINARY_DIR}/objects/sample.o)
END
echo 'constexpr int kNumber = 1;' >folder/sample.h
printf '#include "folder/sample.h"\nint number() { return kNumber; }\n' >folder/sample.cpp

expect() {
  if ! printf '%s\n' "$2" | grep -q "$1"; then
    printf 'FAILED: expected "%s" in:\n%s\n' "$1" "$2" >&2
    exit 1
  fi
}

"$cmake" -G Ninja -S . -B build/default >/dev/null
expect "Compiling sample" "$(ninja -C build/default)"
expect "no work to do" "$(ninja -C build/default)"
sleep 0.1
echo 'constexpr int kNumber = 2;' >folder/sample.h
expect "Compiling sample" "$(ninja -C build/default)"
expect "no work to do" "$(ninja -C build/default)"
echo "all is as expected"
