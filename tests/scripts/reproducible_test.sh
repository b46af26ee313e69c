#!/bin/sh
# reproducible_test.sh ROOT CMAKE VERSION BUILD: the dylib of the build folder BUILD is made anew from a copy of the sources,
# in folders of other names and depths, and is the same to the byte.
set -eu
root=$1 cmake=$2 version=$3 build=$4
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

project=$scratch/a/project/elsewhere
mkdir -p "$project"
for folder in host bridge query item platform cmake; do cp -R "$root/$folder" "$project"; done
cat >"$project/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(SpotlightZNK VERSION $version LANGUAGES CXX)
list(APPEND CMAKE_MODULE_PATH \${CMAKE_SOURCE_DIR}/cmake)
foreach(tool macho-link macho-debug-elf)
  add_executable(\${tool} IMPORTED)
  set_target_properties(\${tool} PROPERTIES IMPORTED_LOCATION "$build/bin/\${tool}")
endforeach()
include(PluginSources)
include(PluginTargets)
END
"$cmake" -G Ninja -S "$project" -B "$scratch/out" -DCMAKE_CXX_COMPILER_FORCED=ON >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  exit 1
}

ninja -C "$scratch/out" --quiet SpotlightDylib
cmp "$scratch/out/lib/SpotlightZNK.dylib" "$build/lib/SpotlightZNK.dylib"
echo "all is as expected"
