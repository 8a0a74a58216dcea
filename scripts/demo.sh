#!/bin/bash
# demo.sh [FILE.sdf]: builds examples/typical_run and runs it on an SD file, by
# default the one in examples/data. The QXB files it writes go to
# build/release/demo.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[[ $# -le 1 ]] || die "usage: demo.sh [FILE.sdf]"
file=${1:-$root/examples/data/small.sdf}

need_packages "${build_packages[@]}"
echo "Building the library and examples/typical_run" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { configure release && build release --target typical_run; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
mkdir -p "$root/build/release/demo"
"$root/build/release/bin/typical_run" "$file" "$root/build/release/demo"
