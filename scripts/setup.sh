# Shared by test.sh and run.sh: installs the Debian packages DBSWEEP needs and builds it.
# Source it; it sets BUILD_DIR.

# Packages the build and the tests need; run.sh adds a Japanese font.
# poppler-utils and a Japanese font: the print tests read their PDF back. libedit-dev: line
# editing in dbsweep-sql.
PACKAGES=(cmake ninja-build g++ qt6-base-dev qt6-base-dev-tools libsqlite3-dev libedit-dev poppler-utils
  fonts-ipafont-gothic)

ensure_packages() {
  local missing=()
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  if [ "$(id -u)" -eq 0 ]; then
    echo "Installing: ${missing[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
  else
    echo "DBSWEEP needs these Debian packages. Install them with:" >&2
    echo "  sudo apt-get install -y ${missing[*]}" >&2
    exit 1
  fi
}

# build [extra cmake arguments...]: configures BUILD_DIR the first time, then builds into it. Later
# builds leave the configuration alone: the build itself re-runs CMake when a CMakeLists.txt changed.
build() {
  if [ ! -f "$BUILD_DIR/build.ninja" ]; then
    cmake -S "$ROOT" -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" "$@"
  fi
  cmake --build "$BUILD_DIR" --parallel
}

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
if [ "${SANITIZE:-0}" = 1 ]; then
  BUILD_DIR="$ROOT/build/sanitize"
else
  BUILD_DIR="$ROOT/build/release"
fi
