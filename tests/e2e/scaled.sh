#!/usr/bin/env bash
# The program on a high-density screen: with the desktop's scale at 2 (FLTK_SCALING_FACTOR, as
# a desktop's settings give it to FLTK 1.4), the main window and the category dialog open at
# twice their size on a private X server. FLTK 1.3 does not scale: nothing to try there.
# usage: scaled.sh PROGRAM FLTK_API [SCREENSHOT_PREFIX]   (keeps PREFIXmain.png, PREFIXdialog.png)
set -euo pipefail
if [ "$2" = 1.3 ]; then
  echo "FLTK 1.3 draws every window at one pixel per unit: there is no scale to try"
  exit 77
fi
[ -n "${PINDLE_OWN_X:-}" ] ||
  PINDLE_OWN_X=1 exec xvfb-run -a -s "-screen 0 1600x1200x24" "$0" "$@"
APP=$(realpath "$1")

fail() { echo "FAIL: $*" >&2; exit 1; }
poll() { for _ in $(seq 100); do "$@" && return 0; sleep 0.1; done; return 1; }
window() {
  xdotool search --all --onlyvisible --pid "$APP_PID" --name "^$1\$" 2>/dev/null | head -n 1 |
    grep .
}
wait_window() { poll window "$1" >/dev/null || fail "no window '$1'"; window "$1"; }
size() { xdotool getwindowgeometry --shell "$1" | sed -n 's/^\(WIDTH\|HEIGHT\)=//p' | paste -sd x; }
shot() { xwd -silent -id "$1" | convert xwd:- "$2"; }

WORK=$(mktemp -d /tmp/pindle_scaled_XXXXXX)
APP_PID=
# Under set -e a kill that fails in the trap, the program being gone already, would end the
# script with status 1 after it passed.
trap '[ -z "$APP_PID" ] || kill "$APP_PID" 2>/dev/null || true; rm -rf "$WORK"' EXIT
(cd "$WORK" && exec env FLTK_BACKEND=x11 FLTK_SCALING_FACTOR=2 "$APP" 2>/dev/null) &
APP_PID=$!

echo "== the main window at twice its size"
main=$(wait_window "To Do List")
[ "$(size "$main")" = 1280x960 ] || fail "the main window is $(size "$main")"

sleep 0.5 # mapped is not yet drawn and listening
[ $# -lt 3 ] || shot "$main" "$3main.png"

echo "== the category dialog at twice its size"
xdotool mousemove --sync --window "$main" 600 300 key n
dialog=$(wait_window "Category Edit")
[ "$(size "$dialog")" = 840x200 ] || fail "the category dialog is $(size "$dialog")"
sleep 0.5
[ $# -lt 3 ] || shot "$dialog" "$3dialog.png"
xdotool key Escape
kill "$APP_PID"
echo "scaled: both windows open at twice their size"
