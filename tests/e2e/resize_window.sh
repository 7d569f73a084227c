#!/usr/bin/env bash
# Resizing the main window scales its widgets: after the resize, a point beyond the old window
# lies on a line of the grown list, and New sits where the scaling puts it. With a second
# argument, the resized window's picture is written there as PNG.
APP="$1"
SHOT="${2:-}"
source "$(dirname "$0")/lib.sh"

start_app long # 40 to-dos, "item 01" to "item 40"
click "$MAIN" 40 37
xdotool windowsize --sync "$MAIN" 900 700

# The list grew from 605x365 at (15,110) to about 851x532 at (21,160): (750,650) was outside
# the whole 640x480 window, and is now on a line below the 21 the list used to show.
click "$MAIN" 750 650
if [ -n "$SHOT" ]; then
  sleep 0.3 # the selection drawn
  xwd -silent -id "$MAIN" | convert xwd:- "$SHOT"
fi
key_at "$MAIN" 750 650 e
ENTRY=$(wait_window "^To Do Entry$")
click "$ENTRY" 200 157
xdotool key End type "#"
key_at "$ENTRY" 200 157 alt+s
wait_gone "^To Do Entry$"
for _ in $(seq 50); do
  line=$(todos | grep -n '|item [0-9]*#|' | cut -d: -f1 || true)
  [ -n "$line" ] && break
  sleep 0.1
done
[ -n "$line" ] || fail "no to-do was edited"
[ "$line" -gt 21 ] || fail "the click at (750,650) edited to-do $line, which the old list showed"

# New moved from (450,65) to about (633,95).
click "$MAIN" 668 112
wait_window "^To Do Entry$" >/dev/null
key_at "$MAIN" 668 112 Escape
wait_gone "^To Do Entry$"

key_at "$MAIN" 300 300 Escape
wait_exit
[ "$RC" = 0 ] || fail "exit status $RC, stderr: $(cat "$WORK/stderr.txt")"
echo "the resized window's list and buttons scaled (to-do $line edited)"
