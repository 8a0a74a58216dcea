# What the scripts share; sourced, not run. Sets `root`, the repository.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)

die() {
  echo "$(basename "$0"): $*" >&2
  exit 1
}

# need_packages PACKAGE...: installs what is missing with apt. Without apt the
# tools are taken to be there; the build says what is not.
need_packages() {
  command -v dpkg-query >/dev/null && command -v apt-get >/dev/null || return 0
  local package missing=() as_root=()
  for package in "$@"; do
    [[ $(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null) == ii* ]] ||
      missing+=("$package")
  done
  [[ ${#missing[@]} -gt 0 ]] || return 0

  if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null ||
      die "missing packages: ${missing[*]}
Install them as root (apt-get install ${missing[*]}), or run this with sudo available."
    as_root=(sudo)
  fi
  echo "Installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -q </dev/null
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y -q --no-install-recommends "${missing[@]}" </dev/null
}

build_packages=(cmake ninja-build g++ pkg-config rapidjson-dev zlib1g-dev libzstd-dev
                libgtest-dev libbenchmark-dev libpng-dev)
clang_packages=(clang libclang-rt-14-dev llvm)

# configure PRESET [CMAKE-ARGUMENT...]: with ccache where there is one.
configure() {
  local launcher=()
  if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
  (cd "$root" && cmake --preset "$1" "${launcher[@]}" "${@:2}")
}

# build PRESET [ARGUMENT...]
build() { (cd "$root" && cmake --build --preset "$1" -j "$jobs" "${@:2}"); }

# run_tests PRESET [CTEST-ARGUMENT...]: ends with CTest's summary.
run_tests() { (cd "$root" && ctest --preset "$1" -j "$jobs" "${@:2}"); }
