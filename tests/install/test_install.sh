#!/usr/bin/env bash
# Installs the build into a temporary prefix and checks what a user would find there: the
# programs in their folder with the demo and the name-master files beside them, links in bin,
# the desktop entry and its icon; then the installed console creates a fresh embedded instance
# and answers a query on it.
#   test_install.sh BUILD_DIR
set -euo pipefail
build=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
prefix=$scratch/usr
cmake --install "$build" --prefix "$prefix" > "$scratch/install.log"

fail() { echo "FAIL: $*" >&2; exit 1; }
for f in lib/dbsweep/dbsweep lib/dbsweep/dbsweep-tray lib/dbsweep/dbsweep-sql; do
  [ -x "$prefix/$f" ] || fail "$f is not installed as a program"
done
for f in lib/dbsweep/demo/demo.sql lib/dbsweep/demo/TBTBLM.dat lib/dbsweep/demo/TBCLMM.dat \
         lib/dbsweep/TBTBLM.dat lib/dbsweep/TBCLMM.dat \
         lib/dbsweep/manual/index.html \
         share/applications/dbsweep.desktop share/icons/hicolor/scalable/apps/dbsweep.svg; do
  [ -f "$prefix/$f" ] || fail "$f is missing"
done
for p in dbsweep dbsweep-tray dbsweep-sql; do
  [ "$(readlink "$prefix/bin/$p")" = "../lib/dbsweep/$p" ] || fail "bin/$p does not lead to the program"
done
grep -qx 'Exec=dbsweep' "$prefix/share/applications/dbsweep.desktop" || fail "the desktop entry does not start dbsweep"
grep -qx 'Icon=dbsweep' "$prefix/share/applications/dbsweep.desktop" || fail "the desktop entry has no icon"
# Nothing of the build or the tests goes along.
extra=$(find "$prefix" -type f | grep -Ev '/lib/dbsweep/|/share/(applications|icons)/' || true)
[ -z "$extra" ] || fail "unexpected files installed: $extra"

# The installed console, reached through its link, on a fresh instance in the scratch folder.
export DBSWEEP_DATA_DIR=$scratch/data DBSWEEP_CONFIG_DIR=$scratch/config
instance=local:$scratch/instance
printf 'secret\nsecret\n' | "$prefix/bin/dbsweep-sql" --create-instance "$instance" > "$scratch/create.log" 2>&1 \
  || fail "creating an instance: $(cat "$scratch/create.log")"
answer=$(printf "select 'installed ' || (6 * 7) from dual;\n" | "$prefix/bin/dbsweep-sql" --csv "system/secret@$instance" 2>&1) \
  || fail "querying the instance: $answer"
echo "$answer" | grep -q 'installed 42' || fail "unexpected answer: $answer"
echo "1 passed, 0 failed"
