#!/bin/bash
# demo.sh [FILE.sdf]: builds examples/typical_run and runs it on an SD file, by
# default the one in examples/data: to QXB, to QXB with more values, and a look at
# what became of the rest. The files it writes go to build/release/demo.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

[[ $# -le 1 ]] || die "usage: demo.sh [FILE.sdf]"
file=$(realpath -- "${1:-$root/examples/data/small.sdf}")

need_packages "${build_packages[@]}"
echo "Building the library and examples/typical_run" >&2
log=$(mktemp)
trap 'rm -f "$log"' EXIT
if ! { configure release && build release --target typical_run; } >"$log" 2>&1; then
  cat "$log" >&2
  exit 1
fi
mkdir -p "$root/build/release/demo" && cd "$root/build/release/demo"
PATH=$root/build/release/bin:$PATH
run() { echo "+ $*" && "$@"; }
run typical_run -task convert -in "$file" -out molecules.qxb
run typical_run molecules.qxb annotated.qxb
run typical_run -task compare -in annotated.qxb -with molecules.qxb
