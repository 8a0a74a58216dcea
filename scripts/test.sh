#!/bin/bash
# Builds the library with its tests, benchmarks and examples, and runs the
# tests. On Debian 12 it first installs what that needs.
set -euo pipefail
. "$(dirname "$0")/lib.sh"

need_packages "${build_packages[@]}"
configure release
build release
run_tests release
