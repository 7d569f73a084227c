# The end-to-end suite's helpers: the built program started in a private folder on the current
# X display, driven with xdotool as a user would, its files read through the record layout.
set -euo pipefail

SUPPORT="$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)"

# Window-relative points: the main window's widgets and its list's first line, the entry
# dialog's and the category dialog's.
TODO_TAB="40 37" NEW_TODO="475 77" EDIT_TODO="532 77" PURGE="530 17" NEW_CATEGORY="392 432"
ANYWHERE="300 300" FIRST_LINE="200 120"
DESCRIPTION="200 157" NOTES="200 300" CATEGORY_CHOICE="200 122" COMPLETE="247 87"
ENTRY_SAVE="67 407" NAME="200 17" NAME_SAVE="287 77"

fail() { echo "FAIL: $*" >&2; exit 1; }

# Runs a command every tenth of a second until it succeeds; false after ten seconds.
poll() {
  for _ in $(seq 100); do "$@" && return 0; sleep 0.1; done
  return 1
}

# Starts the program in a fresh folder (WORK), after running the Python given with `records`
# imported and the folder as FOLDER; sets APP_PID and MAIN, the main window.
start_app() {
  WORK=$(mktemp -d /tmp/pindle_e2e_XXXXXX)
  trap 'kill "$APP_PID" 2>/dev/null || true; rm -rf "$WORK"' EXIT
  [ $# -eq 0 ] || records "FOLDER = '$WORK'; $1"
  launch_app
}

# Starts the program again in WORK, as a user restarting it in the same folder.
launch_app() {
  (cd "$WORK" && exec "$APP" 2>"$WORK/stderr.txt") &
  APP_PID=$!
  MAIN=$(wait_window "To Do List")
  sleep 0.5 # mapped is not yet drawn and listening
}

records() { python3 -c "import sys; sys.path.insert(0, '$SUPPORT'); from records import *; $1"; }

# The program's visible windows, one "id name" per line; question boxes and menus have no name.
app_windows() {
  local id
  for id in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null || true); do
    echo "$id $(xdotool getwindowname "$id" 2>/dev/null || true)"
  done
}
window_id() { app_windows | awk -v name="$1" '{ id = $1; sub(/^[0-9]+ ?/, "") } $0 == name { print id; exit }' | grep .; }
# The id of the window with this title ("" for a question box or a menu) once it is shown.
wait_window() { poll window_id "$1" >/dev/null || fail "no window '$1'"; window_id "$1"; }
wait_gone() { poll eval "! window_id '$1' >/dev/null" || fail "window '$1' stayed"; }

# Moves the pointer to a window-relative point, which gives that window the keyboard.
point() {
  local X Y SCREEN WINDOW WIDTH HEIGHT px py
  eval "$(xdotool getmouselocation --shell)"
  px=$X py=$Y
  eval "$(xdotool getwindowgeometry --shell "$1")"
  # "mousemove --sync" waits for a motion, so it would hang on the point it is already at.
  [ "$px" = $((X + $2)) ] && [ "$py" = $((Y + $3)) ] || xdotool mousemove --sync --window "$1" "$2" "$3"
}
click() { point "$1" $2; xdotool click 1; }
keys() { point "$1" $2; xdotool key --delay 40 "${@:3}"; }
type_at() { click "$1" "$2"; xdotool key End type --delay 20 "$3"; }

# How many of the to-do list's first six lines show any text, read off one screenshot.
listed_lines() {
  local crops=() i
  for i in 1 2 3 4 5 6; do
    crops+=("(" -clone 0 -crop "580x13+20+$((97 + 17 * i))" -format '%[fx:mean<0.99]\n' -write info: ")")
  done
  xwd -silent -id "$MAIN" | convert xwd:- "${crops[@]}" null: | grep -c 1 || true
}

# Answers the question box that appears with a key: Return is "Yes", Escape "No".
answer() { keys "$(wait_window "")" "5 5" "$1"; wait_gone ""; }

# The files as lines: "M/D/Y priority completed category|description|notes" per to-do, a name
# per category, "-" for a file that is not there; read strictly, as the program writes them.
files() {
  records "
import os
t, c = '$WORK/pindle_todo.db', '$WORK/cat.db'
print('\n'.join(f'{x.month}/{x.day}/{x.year} {x.priority} {x.completed} '
                + b'|'.join((x.category, x.description, x.notes)).decode()
                for x in read_todos(t)) if os.path.exists(t) else '-')
print('\n'.join(n.decode() for n in read_categories(c)) if os.path.exists(c) else '-')"
}
# Polls until the files hold exactly these to-dos and these categories (newline-separated).
expect_files() {
  local want
  want=$(printf '%s\n%s' "$1" "$2")
  poll eval '[ "$(files 2>/dev/null)" = "$want" ]' || fail "files are $(files 2>&1), not $want"
}

# Waits for the program to end and sets RC to its exit status.
wait_exit() { RC=0 && wait "$APP_PID" || RC=$?; }

day_from_today() { date -d "$1 days" +%-m/%-d/%Y; }
