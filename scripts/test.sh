#!/usr/bin/env bash
# Installs what is missing, builds DBSWEEP and runs every test.
# SANITIZE=1 builds in its own folder with AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

ensure_packages "${PACKAGES[@]}"
if [ "${SANITIZE:-0}" = 1 ]; then
  BUILD_TYPE=Debug build -DDBSWEEP_SANITIZE=ON -DDBSWEEP_BENCH=OFF
else
  build
fi
cd "$BUILD_DIR"
ctest --output-on-failure --parallel "$(nproc)" --label-exclude fuzz
