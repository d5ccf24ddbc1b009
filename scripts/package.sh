#!/usr/bin/env bash
# Builds the Debian package of DBSWEEP in build/package and prints where it is, its size and
# what it holds. Install it with: apt-get install ./build/package/dbsweep_*.deb
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

ensure_packages "${PACKAGES[@]}" dpkg-dev
BUILD_DIR="$ROOT/build/package"
if [ ! -f "$BUILD_DIR/build.ninja" ]; then
  cmake -S "$ROOT" -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DDBSWEEP_BENCH=OFF -DCPACK_STRIP_FILES=ON
fi
cmake --build "$BUILD_DIR" --parallel --target dbsweep dbsweep-tray dbsweep-sql
(cd "$BUILD_DIR" && cpack -G DEB > cpack.log) || { cat "$BUILD_DIR/cpack.log" >&2; exit 1; }
package=$(ls -t "$BUILD_DIR"/dbsweep_*.deb | head -1)
echo "$package: $(du -h "$package" | cut -f1)"
dpkg -c "$package"
