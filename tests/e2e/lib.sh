# Shared helpers for the end-to-end tests: start the built program in a private directory on
# the current X display and drive it with xdotool as a user would.
set -euo pipefail

fail() { echo "FAIL: $*" >&2; exit 1; }

# Runs the program in a fresh directory; sets WORK, APP_PID, and MAIN (the main window's id).
start_app() {
  WORK=$(mktemp -d /tmp/pindle_e2e_XXXXXX)
  trap 'kill "$APP_PID" 2>/dev/null || true; rm -rf "$WORK"' EXIT
  (cd "$WORK" && exec "$APP" 2>"$WORK/stderr.txt") &
  APP_PID=$!
  MAIN=$(wait_window "^To Do List$")
  sleep 0.5 # mapped is not yet drawn and listening
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
click() {
  xdotool mousemove --sync --window "$1" "$2" "$3" click 1
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
