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
check() { # XDG_DATA_HOME value, expected folder
  got=$(cd / && umask 022 && HOME=$scratch/home XDG_DATA_HOME=$1 "$scratch/bin/pindle_todo-launcher")
  [ "$got" = "$2" ] || fail "XDG_DATA_HOME='$1': ran in '$got', expected '$2'"
}
mode_is() { # folder, expected octal mode
  got=$(stat -c %a "$1")
  [ "$got" = "$2" ] || fail "$1: mode $got, expected $2"
}
# Every folder the launcher makes is private, the missing XDG_DATA_HOME itself included.
check "$scratch/xdg" "$scratch/xdg/pindle_todo"
mode_is "$scratch/xdg" 700
mode_is "$scratch/xdg/pindle_todo" 700
check "" "$scratch/home/.local/share/pindle_todo"
mode_is "$scratch/home/.local/share/pindle_todo" 700
check "relative/path" "$scratch/home/.local/share/pindle_todo"
# Folders that are already there keep their modes, the data folder's own on a second start.
mkdir -m 755 "$scratch/shared"
check "$scratch/shared" "$scratch/shared/pindle_todo"
mode_is "$scratch/shared" 755
chmod 750 "$scratch/shared/pindle_todo"
check "$scratch/shared" "$scratch/shared/pindle_todo"
mode_is "$scratch/shared/pindle_todo" 750
exit $status
