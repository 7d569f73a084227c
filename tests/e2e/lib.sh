# Shared helpers for the end-to-end tests: start the built program in a private directory on
# the current X display and drive it with xdotool as a user would.
set -euo pipefail

fail() { echo "FAIL: $*" >&2; exit 1; }

RECORDS="$(dirname "${BASH_SOURCE[0]}")/records.py"

# Runs the program in a fresh directory, first filled with the data files records.py makes
# under the name given, if any; sets WORK, APP_PID, and MAIN (the main window's id).
start_app() {
  WORK=$(mktemp -d /tmp/pindle_e2e_XXXXXX)
  trap 'kill "$APP_PID" 2>/dev/null || true; rm -rf "$WORK"' EXIT
  [ $# -eq 0 ] || python3 "$RECORDS" "$1" "$WORK"
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

# Prints the id of the program's visible window whose title matches this regular expression
# once it is mapped (10 s at most).
wait_window() {
  local id
  for _ in $(seq 100); do
    id=$(app_windows | awk -v re="$1" '{ id = $1; sub(/^[0-9]+ /, "") } $0 ~ re { print id; exit }')
    [ -n "$id" ] && { echo "$id"; return 0; }
    sleep 0.1
  done
  fail "window '$1' never appeared"
}

wait_gone() {
  for _ in $(seq 100); do
    [ -z "$(app_windows | cut -d' ' -f2- | grep -E "$1")" ] && return 0
    sleep 0.1
  done
  fail "window '$1' never closed"
}

# Moves the pointer to window-relative coordinates; the window under it gets the keyboard.
# "mousemove --sync" waits for a motion, so it would hang if the pointer were there already.
point() {
  local X Y SCREEN WINDOW WIDTH HEIGHT px py
  eval "$(xdotool getmouselocation --shell)"
  px=$X py=$Y
  eval "$(xdotool getwindowgeometry --shell "$1")"
  [ "$px" = $((X + $2)) ] && [ "$py" = $((Y + $3)) ] && return 0
  xdotool mousemove --sync --window "$1" "$2" "$3"
}

# Clicks at window-relative coordinates. The program takes the events in the order they were
# sent, so what follows needs no pause unless it waits for a new window.
click() {
  point "$1" "$2" "$3"
  xdotool click 1
}

# Answers the question box with its Return button, which is "Yes" (10 s at most).
answer_yes() {
  local box
  box=$(wait_untitled)
  point "$box" 10 10
  xdotool key Return
  wait_untitled_gone
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

# Moves the pointer into a window, so that it gets the keyboard, and presses the keys there.
key_at() {
  point "$1" "$2" "$3"
  xdotool key --delay 40 "${@:4}"
}

# The program's visible windows, one "id name" per line. Question boxes and menus have no name.
app_windows() {
  local id
  for id in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null || true); do
    echo "$id $(xdotool getwindowname "$id" 2>/dev/null || true)"
  done
}

# Prints the id of a visible window without a name (a question box or an open menu).
wait_untitled() {
  local id
  for _ in $(seq 100); do
    id=$(app_windows | awk 'NF == 1 { print $1; exit }')
    [ -n "$id" ] && { echo "$id"; return 0; }
    sleep 0.1
  done
  fail "no question box or menu appeared"
}

wait_untitled_gone() {
  for _ in $(seq 100); do
    app_windows | awk 'NF == 1 { found = 1 } END { exit !found }' || return 0
    sleep 0.1
  done
  fail "a question box or menu stayed open"
}

# Fails unless the program shows exactly the windows named, once it has had time to react.
only_windows() {
  settle
  local shown expected
  shown=$(app_windows | cut -d' ' -f2- | sort)
  expected=$(printf '%s\n' "$@" | sort)
  [ "$shown" = "$expected" ] || fail "windows shown: $(echo "$shown" | tr '\n' ',') expected: $*"
}

# Nothing tells when the program has finished with an event that should do nothing, so checks
# that nothing happened wait this long; the program answers within a few milliseconds.
settle() { sleep 0.2; }

# Checksum of both data files, to tell that an action changed nothing.
files_sum() { cat "$WORK/pindle_todo.db" "$WORK/cat.db" 2>/dev/null | md5sum; }

unchanged_since() {
  settle
  [ "$(files_sum)" = "$1" ] || fail "the data files changed: $(todos)"
}

todos() { python3 "$RECORDS" todos "$WORK/pindle_todo.db"; }
categories() { python3 "$RECORDS" categories "$WORK/cat.db"; }

# Polls until the to-do file (or with "categories" first, the category file) lists exactly the
# lines given, in order; the program writes the file whole after each change.
expect_todos() { expect_lines todos "$@"; }
expect_categories() { expect_lines categories "$@"; }
expect_lines() {
  local reader="$1" want got
  shift
  want=$(printf '%s\n' "$@")
  for _ in $(seq 50); do
    got=$("$reader" 2>/dev/null || true)
    [ "$got" = "$want" ] && return 0
    sleep 0.1
  done
  fail "$reader are"$'\n'"$got"$'\n'"expected"$'\n'"$want"
}

# A date N days from today as the to-do file lines show it.
day_from_today() { date -d "$1 days" +%-m/%-d/%Y; }
