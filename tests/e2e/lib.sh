# Shared helpers for the end-to-end tests: start the built program in a private directory on
# the current X display and drive it with xdotool as a user would.
set -euo pipefail

fail() { echo "FAIL: $*" >&2; exit 1; }

# Runs the program in a fresh directory; sets WORK, APP_PID, and MAIN (the main window's id).
start_app() {
  WORK=$(mktemp -d /tmp/pindle_e2e_XXXXXX)
  trap 'kill "$APP_PID" 2>/dev/null || true; rm -rf "$WORK"' EXIT
  launch_app
}

# Runs the program again in WORK, as a user restarting it in the same folder.
launch_app() {
  (cd "$WORK" && exec "$APP" 2>"$WORK/stderr.txt") &
  APP_PID=$!
  MAIN=$(wait_window "^To Do List$")
  sleep 0.5 # mapped is not yet drawn and listening
}

# Ends the program as a power cut would: no chance to write anything more.
kill_app() {
  kill -KILL "$APP_PID"
  wait "$APP_PID" 2>/dev/null || true
  wait_gone "^To Do List$"
}

# Prints the id of the visible window with this title once it is mapped (10 s at most).
wait_window() {
  local id
  for _ in $(seq 100); do
    id=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | head -n 1 || true)
    [ -n "$id" ] && { echo "$id"; return 0; }
    sleep 0.1
  done
  fail "window '$1' never appeared"
}

wait_gone() {
  for _ in $(seq 100); do
    xdotool search --onlyvisible --name "$1" >/dev/null 2>&1 || return 0
    sleep 0.1
  done
  fail "window '$1' never closed"
}

# Clicks at window-relative coordinates; the pointer also gives that window the keyboard.
# The first move makes sure the pointer is elsewhere: --sync waits for the pointer to move, and
# waits long when it is already on the spot.
click() {
  xdotool mousemove --window "$1" $(($2 + 5)) $(($3 + 5))
  xdotool mousemove --sync --window "$1" "$2" "$3" click 1
  sleep 0.2
}

# Prints the id of a question box: a visible window without a title that is not as wide as
# the screen (the X server may hold such a window of its own).
find_box() {
  local id geometry
  for id in $(xdotool search --onlyvisible --name '^$' 2>/dev/null); do
    geometry=$(xdotool getwindowgeometry "$id" | sed -n 's/.*Geometry: //p')
    [ "${geometry%%x*}" -lt 1000 ] && { echo "$id"; return 0; }
  done
  return 1
}

# Answers the question box with its Return button, which is "Yes" (10 s at most).
answer_yes() {
  local box=""
  for _ in $(seq 100); do
    box=$(find_box) && break
    sleep 0.1
  done
  [ -n "$box" ] || fail "no question box appeared"
  xdotool mousemove --sync --window "$box" 10 10 key Return
  sleep 0.2
}

# Waits for the program to end (10 s at most) and sets RC to its exit status.
wait_exit() {
  for _ in $(seq 100); do
    kill -0 "$APP_PID" 2>/dev/null || break
    sleep 0.1
  done
  RC=0
  wait "$APP_PID" || RC=$?
}
