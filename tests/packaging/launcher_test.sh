#!/bin/sh
# Runs the menu launcher beside a stand-in program that reports its working folder, and checks
# the folder the launcher picks and creates for each kind of XDG_DATA_HOME, and its mode.
# Usage: launcher_test.sh LAUNCHER
set -eu
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/bin" "$scratch/home"
cp "$1" "$scratch/bin/pindle_todo-launcher"
printf '#!/bin/sh\npwd\n' >"$scratch/bin/pindle_todo"
chmod +x "$scratch/bin/pindle_todo" "$scratch/bin/pindle_todo-launcher"

status=0
fail() { echo "$*"; status=1; }
# XDG_DATA_HOME's value, the folder the launcher should run in, then "path:mode" of folders.
check() {
  got=$(cd / && umask 022 && HOME=$scratch/home XDG_DATA_HOME=$1 "$scratch/bin/pindle_todo-launcher")
  [ "$got" = "$2" ] || fail "XDG_DATA_HOME='$1': ran in '$got', expected '$2'"
  shift 2
  for want in "$@"; do
    got=$(stat -c %a "${want%:*}")
    [ "$got" = "${want##*:}" ] || fail "${want%:*}: mode $got, expected ${want##*:}"
  done
}
# Every folder the launcher makes is private, the missing XDG_DATA_HOME itself included.
check "$scratch/xdg" "$scratch/xdg/pindle_todo" "$scratch/xdg:700" "$scratch/xdg/pindle_todo:700"
check "" "$scratch/home/.local/share/pindle_todo" "$scratch/home/.local/share/pindle_todo:700"
check "relative/path" "$scratch/home/.local/share/pindle_todo"
# Folders that are already there keep their modes, the data folder's own on a second start.
mkdir -m 755 "$scratch/shared"
check "$scratch/shared" "$scratch/shared/pindle_todo" "$scratch/shared:755"
chmod 750 "$scratch/shared/pindle_todo"
check "$scratch/shared" "$scratch/shared/pindle_todo" "$scratch/shared/pindle_todo:750"
exit $status
