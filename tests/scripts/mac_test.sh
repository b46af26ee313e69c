#!/bin/sh
# mac_test.sh ROOT CMAKE CLANG OBJDUMP DYLIB: what the `mac` preset has a Mac do, as far as that can be told without one.
# Its link makes a dylib of the same name, versions, libraries and export as DYLIB, which was built here; its flags
# compile every source with a system that calls everything deprecated.
set -eu
root=$1 cmake=$2 clang=$3 objdump=$4 dylib=$5
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# CMake looks for a Mac's tools; none of them is run.
printf '#!/bin/sh\n' >"$scratch/install_name_tool"
chmod 755 "$scratch/install_name_tool"
PATH=$scratch:$PATH
(cd "$root" && "$cmake" --preset mac -B "$scratch/build" -G Ninja -DCMAKE_SYSTEM_NAME=Darwin -DCMAKE_OSX_SYSROOT=/ \
  -DCMAKE_CXX_COMPILER="$clang" -DCMAKE_CXX_COMPILER_FORCED=ON -DCMAKE_CXX_COMPILER_ID=Clang) >"$scratch/log" 2>&1 || {
  cat "$scratch/log" >&2
  exit 1
}
ninja -C "$scratch/build" -t commands >"$scratch/commands"
link=$(grep -e -dynamiclib "$scratch/commands")
"$objdump" --macho --private-headers "$dylib" >"$scratch/headers"
# of_own_name FIELD: its value in the load command of the dylib's own name.
of_own_name() {
  sed -n '/LC_ID_DYLIB/,/Load command/s/^ *'"$1"' //p' "$scratch/headers"
}

expect() {
  case "$link" in
    *"$1"*) ;;
    *)
      printf 'FAILED: expected "%s" in:\n%s\n' "$1" "$link" >&2
      exit 1
      ;;
  esac
}
name=$(of_own_name name | sed 's/ .*//')
[ "$name" ] || exit 1
expect "-install_name $name "
expect "-current_version $(of_own_name 'current version') "
expect "-compatibility_version $(of_own_name 'compatibility version') "
expect "-mmacosx-version-min=$(sed -n '/LC_VERSION_MIN_MACOSX/,/sdk/s/^ *version //p' "$scratch/headers") "
expect "-arch i386 "
expect "-o lib/${name#@executable_path/} "
for symbol in $("$objdump" --macho --exports-trie "$dylib" | sed -n 's/^0x[0-9A-F]* *//p'); do
  expect "-Wl,-exported_symbol,$symbol "
done
# The libraries in this order: the first one that has a symbol is the one that it is taken from.
frameworks=$(awk '/cmd LC_LOAD_WEAK/ {flag = "-weak_framework"} /cmd LC_LOAD_DYLIB/ {flag = "-framework"}
  flag && /name .*\.framework/ {sub(".*/", "", $2); printf "  %s %s", flag, $2; flag = ""}' "$scratch/headers")
[ "$frameworks" ] || exit 1
expect "$frameworks"
case "$(cat "$scratch/headers")" in *libstdc++*) expect " -stdlib=libstdc++ " ;; esac

# Every function and constant of the system is deprecated, as many are for a later one.
cp -R "$root/platform" "$scratch/platform"
grep -rlE '#define C[A-Z]*_EXPORT extern' "$scratch/platform" >"$scratch/marked"
[ -s "$scratch/marked" ]
xargs sed -i -E 's/(#define C[A-Z]*_EXPORT extern "C")/\1 __attribute__((deprecated))/' <"$scratch/marked"
sed -n "s/ -arch i386 / -target i386-apple-macosx10.6 -std=c++17 /;s/ -isysroot [^ ]*//;s/ -MD .* -c / -c /
  / -c .*\.cpp\$/p" "$scratch/commands" >"$scratch/compilations"
sources=$(find "$root/host" "$root/bridge" "$root/query" "$root/item" -name '*.cpp' | wc -l)
[ "$(wc -l <"$scratch/compilations")" -eq "$sources" ]
while read -r command; do
  eval "$command" -Qunused-arguments -ffreestanding -nostdinc++ -nostdlibinc \
    -isystem '"$scratch/platform/freestanding"' -I'"$scratch/platform"' -fsyntax-only
done <"$scratch/compilations"
echo "all is as expected"
