#!/usr/bin/env bash
# The program in a Wayland session with no X server at all: a headless sway (wlroots) on a
# private runtime folder, without Xwayland. The main window opens as a native xdg-shell window
# of 640x480 and is drawn; keys open and close the category dialog, and Escape ends the program
# with status 0, having said nothing but what a first start says. With FLTK 1.3, which draws
# through X11 only, there is nothing to try. Not weston's headless back end: it offers no seat,
# and FLTK 1.4.3 ends with a segmentation fault on a compositor without one.
# usage: wayland.sh PROGRAM FLTK_API [SCREENSHOT]   (SCREENSHOT: where to keep the session's)
set -euo pipefail
APP=$(realpath "$1")
if [ "$2" = 1.3 ]; then
  echo "FLTK 1.3 draws through X11 only: no Wayland session to open the window in"
  exit 77
fi
for tool in sway grim wtype; do
  command -v $tool >/dev/null ||
    { echo "FAIL: no $tool (scripts/install-deps.sh --tests)" >&2; exit 1; }
done

fail() { echo "FAIL: $*" >&2; exit 1; }
poll() { for _ in $(seq 100); do "$@" && return 0; sleep 0.1; done; return 1; }

RUNTIME=$(mktemp -d /tmp/pindle_wayland_XXXXXX) # private: mode 0700, as a runtime folder must be
WORK=$RUNTIME/folder
mkdir "$WORK"
SWAY= APP_PID=
# Under set -e a kill that fails in the trap, its process being gone already, would end the
# script with status 1 after it passed.
trap '[ -z "$APP_PID" ] || kill "$APP_PID" 2>/dev/null || true
      [ -z "$SWAY" ] || kill "$SWAY" 2>/dev/null || true
      wait; rm -rf "$RUNTIME"' EXIT
# Windows keep the size they ask for, as on a stacking desktop.
cat >"$RUNTIME/sway.conf" <<'EOF'
output HEADLESS-1 resolution 1024x768 position 0 0
xwayland disable
for_window [title=".*"] floating enable
EOF
session=(env -u DISPLAY -u WAYLAND_DISPLAY -u SWAYSOCK XDG_RUNTIME_DIR="$RUNTIME")
"${session[@]}" WLR_BACKENDS=headless WLR_RENDERER=pixman WLR_LIBINPUT_NO_DEVICES=1 \
  sway -c "$RUNTIME/sway.conf" >"$RUNTIME/sway.log" 2>&1 &
SWAY=$!
socket() {
  compgen -G "$RUNTIME/wayland-[0-9]" >/dev/null && compgen -G "$RUNTIME/sway-ipc.*.sock" >/dev/null
}
poll socket || fail "sway did not start: $(cat "$RUNTIME/sway.log")"
session+=(WAYLAND_DISPLAY="$(basename "$(compgen -G "$RUNTIME/wayland-[0-9]")")"
          SWAYSOCK="$(compgen -G "$RUNTIME/sway-ipc.*.sock")")
swaymsg() { "${session[@]}" swaymsg "$@"; }

# FLTK_BACKEND=wayland: the toolkit fails rather than look for an X server.
(cd "$WORK" && exec "${session[@]}" FLTK_BACKEND=wayland "$APP" 2>"$WORK/stderr") &
APP_PID=$!

# The program's window with this title, as sway sees it: "shell x y width height" of its content.
window() {
  swaymsg -r -t get_tree | python3 -c '
import json, sys
def nodes(n):
    yield n
    for c in n.get("nodes", []) + n.get("floating_nodes", []):
        yield from nodes(c)
for n in nodes(json.load(sys.stdin)):
    if n.get("pid") == int(sys.argv[1]) and n.get("name") == sys.argv[2]:
        r, w = n["rect"], n["window_rect"]
        print(n["shell"], r["x"] + w["x"], r["y"] + w["y"], w["width"], w["height"])
        sys.exit(0)
sys.exit(1)' "$APP_PID" "$1"
}
wait_window() {
  poll window "$1" >/dev/null || fail "no window '$1': $(cat "$WORK/stderr")"
  window "$1"
}
# Whether the window's content is drawn: the desktop behind it is black, the toolkit's grey is not.
drawn() {
  grim -g "$1,$2 ${3}x$4" "$RUNTIME/shot.png" 2>/dev/null &&
    [ "$(convert "$RUNTIME/shot.png" -format '%[fx:mean>0.5]' info:)" = 1 ]
}
grim() { "${session[@]}" grim "$@"; }

echo "== the main window opens natively and is drawn"
read -r shell x y w h < <(wait_window "To Do List")
[ "$shell $w $h" = "xdg_shell 640 480" ] || fail "the main window is $shell, ${w}x$h"
poll drawn "$x" "$y" "$w" "$h" || fail "the main window was never drawn"

echo "== keys: N opens the category dialog, Escape closes it, then the main window"
# The session has no input device of its own: wtype brings a keyboard for each call, which the
# window must first be given before the keys reach it.
keys() { "${session[@]}" wtype -s 300 "$@" -s 100; }
keys n
read -r shell x y w h < <(wait_window "Category Edit")
[ "$shell $w $h" = "xdg_shell 420 100" ] || fail "the category dialog is $shell, ${w}x$h"
poll drawn "$x" "$y" "$w" "$h" || fail "the category dialog was never drawn"
[ $# -lt 3 ] || grim "$3"
keys -k Escape
poll eval '! window "Category Edit" >/dev/null' || fail "Escape left the category dialog open"
keys -k Escape
status=0 && wait "$APP_PID" || status=$?
APP_PID=
[ "$status" = 0 ] || fail "exit status $status: $(cat "$WORK/stderr")"
[ "$(cat "$WORK/stderr")" = "could not open file pindle_todo.db
skipping over reading record
could not open file cat.db
skipping over reading record" ] || fail "the program said: $(cat "$WORK/stderr")"
[ ! -e "$WORK/cat.db" ] || fail "the category dialog, closed unsaved, saved a category"
echo "wayland: the window opened natively and closed cleanly"
