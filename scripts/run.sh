#!/usr/bin/env bash
# Installs what is missing, builds DBSWEEP and starts it. Arguments go to the program
# (user, password and host log on at once); without any it logs on to the demo instance.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/setup.sh"

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "No display: DISPLAY and WAYLAND_DISPLAY are not set." >&2
  echo "Run it from a desktop session, or on a virtual screen:" >&2
  echo "  Xvfb :99 -screen 0 1280x1024x24 & DISPLAY=:99 scripts/run.sh" >&2
  exit 2
fi
ensure_packages "${PACKAGES[@]}" fonts-noto-cjk
build
[ $# -gt 0 ] || set -- QUIL QTJL local:demo
exec "$BUILD_DIR/src/dbsweep" "$@"
