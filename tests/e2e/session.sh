#!/usr/bin/env bash
# A user's sessions with the built program, for what only a real process shows: the messages
# of a first start, a change to each file surviving a kill right after it, large pastes from
# another program, the exit statuses, a failed save shown and ending the program with its
# reason, and a second copy refused. Following another program's writes is the in-process
# FollowFiles tests' part, on the same window. The program is started in a private folder on
# the current X display, driven with xdotool as a user would, its files read through the record
# layout.
set -euo pipefail
APP=$(realpath "$1")
TODAY=$(date +%-m/%-d/%Y)
SUPPORT="$(cd "$(dirname "${BASH_SOURCE[0]}")/../support" && pwd)"

# Window-relative points: the main window's widgets and its list's first line, the entry
# dialog's and the category dialog's.
TODO_TAB="40 37" NEW_TODO="475 77" NEW_CATEGORY="392 432" ANYWHERE="300 300"
DESCRIPTION="200 157" NOTES="200 300" CATEGORY_CHOICE="200 122"
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

# The id of the program's first visible window with this title; question boxes and menus have
# none.
window_id() {
  local id
  for id in $(xdotool search --onlyvisible --pid "$APP_PID" 2>/dev/null || true); do
    [ "$(xdotool getwindowname "$id" 2>/dev/null || true)" = "$1" ] && echo "$id" && return
  done
  return 1
}
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

# The change just made leaves exactly these files, and a kill now loses nothing of them.
survives_kill() {
  expect_files "$1" "$2"
  kill -KILL "$APP_PID"
  wait "$APP_PID" 2>/dev/null || true
  [ "$(files)" = "$(printf '%s\n%s' "$1" "$2")" ] || fail "after the kill: $(files)"
  ! grep -q "Sanitizer\|runtime error" "$WORK/stderr.txt" || fail "$(cat "$WORK/stderr.txt")"
  launch_app
}

echo "== a first start, and a kill after a change to each file"
start_app
[ "$(cat "$WORK/stderr.txt")" = "could not open file pindle_todo.db
skipping over reading record
could not open file cat.db
skipping over reading record" ] || fail "a first start said: $(cat "$WORK/stderr.txt")"
# After a start the category tab shows.
todo_tab_then() { click "$MAIN" "$TODO_TAB" && click "$MAIN" "$1" && ENTRY=$(wait_window "To Do Entry"); }
click "$MAIN" "$NEW_CATEGORY" && type_at "$(wait_window "Category Edit")" "$NAME" Work
click "$(window_id "Category Edit")" "$NAME_SAVE"
survives_kill - $'Unassigned\nWork'
todo_tab_then "$NEW_TODO"
click "$ENTRY" "$CATEGORY_CHOICE" && keys "$(wait_window "")" "5 5" Down Return
type_at "$ENTRY" "$DESCRIPTION" "Buy milk" && type_at "$ENTRY" "$NOTES" "ring twice"
click "$ENTRY" "$ENTRY_SAVE"
TODOS="$TODAY 0 0 Work|Buy milk|ring twice"
survives_kill "$TODOS" $'Unassigned\nWork'

echo "== pastes of 1 KB, 1 MB and 16 MB from another program, then Escape ends the program"
click "$MAIN" "$TODO_TAB"
# 51-byte lines after a 4-byte start put a euro sign across byte 31,999 of the notes.
records "open('$WORK/text', 'wb').write(('Hi! ' + 'Caf\u00e9 au lait, 2 \u20ac, then the next line \
of notes.\n' * 320000).encode())"
# Nothing else tells when a paste has arrived: the field given as "WxH+X+Y" stops being blank.
shows_text() {
  [ "$(xwd -silent -id "$ENTRY" | convert xwd:- -crop "$1" -format '%[fx:mean<0.99]' info:)" = 1 ]
}
paste_into() { click "$ENTRY" "$1" && xdotool key ctrl+v && poll shows_text "$2"; }
for size in 1000 1000000 16000000; do
  [ -z "${OWNER:-}" ] || kill "$OWNER"
  head -c "$size" "$WORK/text" >"$WORK/clipboard"
  xclip -quiet -selection clipboard -i "$WORK/clipboard" >/dev/null 2>&1 &
  OWNER=$!
  click "$MAIN" "$NEW_TODO" && ENTRY=$(wait_window "To Do Entry")
  paste_into "$NOTES" 440x180+20+200 && paste_into "$DESCRIPTION" 370x15+95+150
  click "$ENTRY" "$ENTRY_SAVE"
  notes=$(head -c $((size < 31999 ? size : 31998)) "$WORK/text")
  TODOS+=$'\n'"$TODAY 0 0 Unassigned|$(head -c 50 "$WORK/text")|$notes"
  expect_files "$TODOS" $'Unassigned\nWork'
done
kill "$OWNER"
keys "$MAIN" "$ANYWHERE" Escape
wait_exit
[ "$RC" = 0 ] && [ ! -s "$WORK/stderr.txt" ] || fail "exit status $RC, said: $(cat "$WORK/stderr.txt")"

echo "== a save that fails shows why, then ends the program with status 200"
# The full device only after the start: a load of it never ends. Other things in a file's place
# (a pipe, a folder) are StoreFileDeath.WhatCannotBeOpenedOrWrittenEndsASaveWithStatus200's.
rm -rf "$WORK"
start_app "write_files(FOLDER, None, ['Unassigned'])"
ln -s /dev/full "$WORK/pindle_todo.db"
todo_tab_then "$NEW_TODO" && click "$ENTRY" "$ENTRY_SAVE"
answer Return # the alert box, shown while the program still runs
wait_exit
[ "$RC" = 200 ] && [ "$(tail -n 1 "$WORK/stderr.txt")" = "could not write records!" ] ||
  fail "pindle_todo.db as /dev/full: status $RC, said: $(cat "$WORK/stderr.txt")"

echo "== one copy per folder"
rm -rf "$WORK"
start_app "write_files(FOLDER, [Todo(1, 1, 2030, 0, 0, 'Unassigned', 'mine', '')], ['Unassigned'])"
FIRST=$APP_PID MINE=$(files)
(cd "$WORK" && exec "$APP" 2>/dev/null) & APP_PID=$!
answer Return && wait_exit # "already open on the to-do files in this folder"
[ "$RC" = 1 ] && [ "$(files)" = "$MINE" ] || fail "a second copy: status $RC, files $(files)"
APP_PID=$FIRST
kill "$APP_PID"
echo "e2e: all sessions behaved"
