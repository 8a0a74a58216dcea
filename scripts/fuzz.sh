#!/bin/bash
# fuzz.sh [SECONDS]: builds the fuzz targets and runs each for SECONDS, by
# default 60, from its corpus in fuzz/corpus. New inputs collect in
# build/fuzz/corpus. An input that breaks a target is left in build/fuzz/finds:
# once the fault is mended it belongs into fuzz/corpus.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

seconds=${1:-60}
[[ $# -le 1 && $seconds =~ ^[1-9][0-9]*$ ]] || die "usage: fuzz.sh [SECONDS]"

need_packages "${build_packages[@]}" "${clang_packages[@]}"
configure fuzz
build fuzz

# One process per processor.
cd "$root/build/fuzz"
mkdir -p finds
run_target() {
  local name=$1 log=$1.log
  mkdir -p "corpus/$name"
  if "bin/${name}_fuzz" -max_total_time="$seconds" -timeout=10 -malloc_limit_mb=256 \
      -artifact_prefix="finds/$name-" "corpus/$name" "$root/fuzz/corpus/$name" >"$log" 2>&1; then
    echo "$name: $(grep '^Done' "$log" || tail -n 1 "$log")"
  else
    echo "$name: FAILED"
    tail -n 60 "$log"
    return 1
  fi
}
export -f run_target
export root seconds
find bin -name '*_fuzz' -printf '%f\n' | sed 's/_fuzz$//' | sort |
  xargs -r -P "$jobs" -I '{}' bash -c 'run_target {}'
