#!/bin/bash
# Installs the build into a DESTDIR staging folder and checks that every installed file is
# there, the programs and launcher executable, the icon a 48x48 PNG, and the sync's and the
# reminder's systemd user units as systemd-analyze verifies them (run on the staged programs
# and manual pages).
# Usage: install_test.sh CMAKE BUILD_DIR APP_ID
set -eu
cmake=$1 build=$2 app_id=$3
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

DESTDIR=$stage "$cmake" --install "$build" --prefix /usr/local >/dev/null
root=$stage/usr/local
status=0
for f in bin/pindle_{todo,todo-launcher,export,sync,remind}; do
  [ -x "$root/$f" ] || { echo "missing or not executable: $f"; status=1; }
done
for f in share/{applications/$app_id.desktop,metainfo/$app_id.metainfo.xml} \
         share/icons/hicolor/{scalable/apps/pindle_todo.svg,48x48/apps/pindle_todo.png} \
         share/man/man1/pindle_{todo,export,sync,remind}.1 \
         lib/systemd/user/pindle-{sync,remind}{.service,.timer,.path,-soon.timer}; do
  [ -s "$root/$f" ] || { echo "missing or empty: $f"; status=1; }
done
png=$root/share/icons/hicolor/48x48/apps/pindle_todo.png
# The PNG signature, then the IHDR chunk whose first eight bytes are width and height.
header=$(od -An -tx1 -N24 "$png" | tr -d ' \n')
case $header in
89504e470d0a1a0a0000000d49484452000000300000003*) ;;
*) echo "not a 48x48 PNG: $header"; status=1 ;;
esac

units=$stage/units
mkdir -m 700 "$units" "$stage/runtime"
for unit in "$root"/lib/systemd/user/*; do
  sed "s|^ExecStart=/usr/local/|ExecStart=$root/|" "$unit" >"$units/${unit##*/}"
done
said=$(cd "$units" && MANPATH=$root/share/man XDG_RUNTIME_DIR=$stage/runtime \
  systemd-analyze --user verify ./* 2>&1) || status=1
[ -z "$said" ] || { echo "systemd-analyze verify: $said"; status=1; }
exit $status
