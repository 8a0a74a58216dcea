#!/bin/bash
# Checks an installation from outside, one step per call:
#   run.sh install BUILD PREFIX       installs BUILD into the empty PREFIX
#   run.sh contents PREFIX SOURCE     the installed files are the right ones
#   run.sh symbols PREFIX             the libraries export nothing but our names
#   run.sh find_package PREFIX WORK   a CMake project builds against it and runs
#   run.sh pkg_config PREFIX WORK     a compiler call does the same, with the README's program too
# CXX names the compiler; it defaults to c++.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
cxx=${CXX:-c++}

fail() { echo "$*" >&2; exit 1; }

libdir() { dirname "$(find "$1" -name 'libqxsystem.so.3' -print -quit)"; }

# expect OUTPUT PROGRAM: both output streams together.
expect() {
  local output
  output=$("$2" 2>&1) || fail "$2 ends with status $?: $output"
  [[ $output == "$1" ]] || fail "$2 prints: $output"
}
consumer_output=$'title\ncharges\natoms\n3 atoms'

# compile SOURCE PROGRAM PREFIX: as pkg-config tells it.
compile() {
  local flags=()
  # pkg-config quotes its answer for a shell.
  eval "flags=($(PKG_CONFIG_PATH="$(libdir "$3")/pkgconfig" pkg-config --cflags --libs qxsystem))"
  "$cxx" -std=c++17 "$1" -o "$2" "${flags[@]}"
}

install_into() {
  rm -rf "$2"
  cmake --install "$1" --prefix "$2" >/dev/null
}

contents() {
  local lib name soname missing
  lib=$(libdir "$1")
  for name in qxplatform qxsystem; do
    soname=$(objdump -p "$lib/lib$name.so" | awk '$1 == "SONAME" { print $2 }')
    [[ $soname == "lib$name.so.3" ]] || fail "lib$name.so has the soname '$soname'"
  done
  # Every public header and no private one.
  missing=$(diff <(cd "$2" && find qxsystem -name '*.h' ! -name '*_private.h' | sort) \
                 <(cd "$1/include" && find . -type f | sed 's,^\./,,' | sort)) ||
    fail "public headers (<) and installed files (>) differ:"$'\n'"$missing"
}

# Exported may be: what stands in our namespaces, with its tables and thunks and
# the type information of pointers to it; and definitions of the standard
# library's templates, which the compiler emits weak wherever they are used.
symbols() {
  local ours name lib bad
  ours='^_Z(T[VTISHW]|T[hv][n0-9_]+|GV|GR)?Z?P?K?N?[rVKRO]*(8QXSystem|10QXPlatform|6QXMath|10QXDataFlow)'
  lib=$(libdir "$1")
  for name in qxplatform qxsystem; do
    bad=$(nm -D --defined-only "$lib/lib$name.so" | awk -v ours="$ours" '
      $3 ~ ours { next }
      $2 ~ /^[WVu]$/ && $3 ~ /^_Z(T[VTIS]|GV|GR)?Z?N?[rVKRO]*(S[tabsiod]|9__gnu_cxx)/ { next }
      { print $2, $3 }' | c++filt)
    [[ -z $bad ]] || fail "lib$name.so exports foreign names:"$'\n'"$bad"
  done
}

find_package() {
  rm -rf "$2"
  cmake -S "$here" -B "$2" -G Ninja -DCMAKE_PREFIX_PATH="$1" -DCMAKE_CXX_COMPILER="$cxx" \
    -DCMAKE_BUILD_TYPE=Release
  cmake --build "$2"
  expect "$consumer_output" "$2/consumer"
}

pkg_config() {
  rm -rf "$2" && mkdir -p "$2"
  compile "$here/main.cpp" "$2/consumer" "$1"
  export LD_LIBRARY_PATH
  LD_LIBRARY_PATH=$(libdir "$1")
  expect "$consumer_output" "$2/consumer"

  # The first program of the README.
  awk '/^```/ { inside = $0 == "```cpp"; next } inside' "$here/../../README.md" >"$2/first.cpp"
  compile "$2/first.cpp" "$2/first" "$1"
  expect $'51 bytes\ntitle\natoms\nradii\n3 atoms' "$2/first"
}

step=$1
shift
case $step in
  install) install_into "$@" ;;
  contents | symbols | find_package | pkg_config) "$step" "$@" ;;
  *) fail "unknown step '$step'" ;;
esac
