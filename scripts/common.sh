# Shared by the scripts: install what is missing, configure and build.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORA_BUILD_DIR:-$ROOT/build}"
PACKAGES=(cmake ninja-build g++ openjdk-17-jdk-headless libgtest-dev libgmock-dev pkgconf python3-pytest python3-venv)
# The commands those packages provide, checked where apt-get is not available.
TOOLS=(cmake ninja c++ javac pkg-config)

install_missing_packages() {
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    local absent=()
    for t in "${TOOLS[@]}"; do command -v "$t" >/dev/null || absent+=("$t"); done
    if [ ${#absent[@]} -ne 0 ]; then
      echo "No apt-get here and missing: ${absent[*]}. Install them (and GoogleTest)" \
        "with the system's package manager, or use the plain CMake route in README.md." >&2
      exit 1
    fi
    echo "No apt-get here: skipping the package step (${TOOLS[*]} present)."
    return 0
  fi
  local missing=()
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  echo "Installing: ${missing[*]}"
  local sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq "${missing[@]}"
}

# Configures $BUILD with the tests and the benchmark on, whatever an earlier
# configuration left in its cache, and builds the targets named (all without
# a name).
configure_and_build() {
  cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DVELMORA_BUILD_TESTS=ON -DVELMORA_BUILD_BENCH=ON >/dev/null
  if [ $# -eq 0 ]; then
    cmake --build "$BUILD" -j "$(nproc)"
  else
    cmake --build "$BUILD" -j "$(nproc)" --target "$@"
  fi
}
