#!/bin/sh
# Runs the menu launcher beside a stand-in program that reports its working folder, and checks
# the folder the launcher picks and creates for each kind of XDG_DATA_HOME.
# Usage: launcher_test.sh LAUNCHER
set -eu
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/bin" "$scratch/home"
cp "$1" "$scratch/bin/pindle_todo-launcher"
printf '#!/bin/sh\npwd\n' >"$scratch/bin/pindle_todo"
chmod +x "$scratch/bin/pindle_todo" "$scratch/bin/pindle_todo-launcher"

status=0
check() { # XDG_DATA_HOME value, expected folder
  got=$(cd / && HOME=$scratch/home XDG_DATA_HOME=$1 "$scratch/bin/pindle_todo-launcher")
  if [ "$got" != "$2" ]; then
    echo "XDG_DATA_HOME='$1': ran in '$got', expected '$2'"
    status=1
  fi
}
check "$scratch/xdg" "$scratch/xdg/pindle_todo"
check "" "$scratch/home/.local/share/pindle_todo"
check "relative/path" "$scratch/home/.local/share/pindle_todo"
# A second start finds the folder already there.
check "$scratch/xdg" "$scratch/xdg/pindle_todo"
exit $status
