#!/usr/bin/env bash
# A user's sessions with the built program, for what only a real process shows: the messages
# of a first start, each kind of change surviving a kill right after it, large pastes from
# another program, the exit statuses, a failed save shown and ending the program with its
# reason, a second copy refused, another program's write shown within a second, and an edit of
# a to-do changed elsewhere kept beside it.
APP=$(realpath "$1")
source "$(dirname "$0")/lib.sh"
TODAY=$(day_from_today 0)

# The change just made leaves exactly these files, and a kill now loses nothing of them.
survives_kill() {
  expect_files "$1" "$2"
  kill -KILL "$APP_PID"
  wait "$APP_PID" 2>/dev/null || true
  [ "$(files)" = "$(printf '%s\n%s' "$1" "$2")" ] || fail "after the kill: $(files)"
  ! grep -q "Sanitizer\|runtime error" "$WORK/stderr.txt" || fail "$(cat "$WORK/stderr.txt")"
  launch_app
}
dialog_name() { type_at "$(wait_window "Category Edit")" "$NAME" "$1"; }

echo "== a first start, and a kill after each kind of change"
start_app
[ "$(cat "$WORK/stderr.txt")" = "could not open file pindle_todo.db
skipping over reading record
could not open file cat.db
skipping over reading record" ] || fail "a first start said: $(cat "$WORK/stderr.txt")"
# After a start the category tab shows.
todo_tab_then() { click "$MAIN" "$TODO_TAB" && click "$MAIN" "$1" && ENTRY=$(wait_window "To Do Entry"); }
category_then() { click "$MAIN" "$1" && dialog_name "$2" && click "$(window_id "Category Edit")" "$NAME_SAVE"; }
category_then "$NEW_CATEGORY" Work
survives_kill - $'Unassigned\nWork'
todo_tab_then "$NEW_TODO"
click "$ENTRY" "$CATEGORY_CHOICE" && keys "$(wait_window "")" "5 5" Down Return
type_at "$ENTRY" "$DESCRIPTION" "Buy milk" && type_at "$ENTRY" "$NOTES" "ring twice"
click "$ENTRY" "$ENTRY_SAVE"
survives_kill "$TODAY 0 0 Work|Buy milk|ring twice" $'Unassigned\nWork'
click "$MAIN" "$TODO_TAB" && click "$MAIN" "$FIRST_LINE" && click "$MAIN" "$EDIT_TODO"
ENTRY=$(wait_window "To Do Entry")
type_at "$ENTRY" "$DESCRIPTION" " now" && click "$ENTRY" "$COMPLETE" && click "$ENTRY" "$ENTRY_SAVE"
survives_kill "$TODAY 0 1 Work|Buy milk now|ring twice" $'Unassigned\nWork'
click "$MAIN" "$PURGE" && answer Return
survives_kill "" $'Unassigned\nWork'

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
TODOS=""
for size in 1000 1000000 16000000; do
  [ -z "${OWNER:-}" ] || kill "$OWNER"
  head -c "$size" "$WORK/text" >"$WORK/clipboard"
  xclip -quiet -selection clipboard -i "$WORK/clipboard" >/dev/null 2>&1 &
  OWNER=$!
  click "$MAIN" "$NEW_TODO" && ENTRY=$(wait_window "To Do Entry")
  paste_into "$NOTES" 440x180+20+200 && paste_into "$DESCRIPTION" 370x15+95+150
  click "$ENTRY" "$ENTRY_SAVE"
  notes=$(head -c $((size < 31999 ? size : 31998)) "$WORK/text")
  TODOS+="${TODOS:+$'\n'}$TODAY 0 0 Unassigned|$(head -c 50 "$WORK/text")|$notes"
  expect_files "$TODOS" $'Unassigned\nWork'
done
kill "$OWNER"
keys "$MAIN" "$ANYWHERE" Escape
wait_exit
[ "$RC" = 0 ] && [ ! -s "$WORK/stderr.txt" ] || fail "exit status $RC, said: $(cat "$WORK/stderr.txt")"

echo "== a save that fails shows why, then ends the program with status 200"
for broken in "pindle_todo.db full" "pindle_todo.db pipe" "cat.db full"; do
  set -- $broken
  rm -rf "$WORK"
  start_app "write_files(FOLDER, [Todo(1, 1, 2030, 0, 0, 'Unassigned', 'keep', '')], ['Unassigned'])"
  rm "$WORK/$1"
  case $2 in
  full) ln -s /dev/full "$WORK/$1" ;;
  pipe) mkfifo "$WORK/$1" ;; # nobody reads it: a save must not wait for a reader
  esac
  # The window reads what now stands there, as a start would: no to-do, or no category. A new
  # to-do or category then has to be saved.
  if [ "$1" = cat.db ]; then
    category_then "$NEW_CATEGORY" ""
  else
    todo_tab_then "$NEW_TODO" && click "$ENTRY" "$ENTRY_SAVE"
  fi
  expected="could not open file $1"
  [ "$2" != full ] || expected="could not write records!"
  answer Return # the alert box, shown while the program still runs
  wait_exit
  [ "$RC" = 200 ] && [ "$(tail -n 1 "$WORK/stderr.txt")" = "$expected" ] ||
    fail "$1 as $2: status $RC, said: $(cat "$WORK/stderr.txt")"
done

echo "== one copy per folder; another program's writes shown at once and kept; a pipe"
rm -rf "$WORK"
start_app "write_files(FOLDER, [Todo(1, 1, 2030, 0, 0, 'Unassigned', 'mine', '')], ['Unassigned'])"
FIRST=$APP_PID MINE=$(files)
(cd "$WORK" && exec "$APP" 2>/dev/null) & APP_PID=$!
answer Return && wait_exit # "already open on the to-do files in this folder"
[ "$RC" = 1 ] && [ "$(files)" = "$MINE" ] || fail "a second copy: status $RC, files $(files)"
APP_PID=$FIRST
click "$MAIN" "$TODO_TAB"
poll eval '[ "$(listed_lines)" = 1 ]' || fail "the list shows $(listed_lines) lines, not 1"
THEIRS="Todo(1, 2, 2030, 0, 0, 'Unassigned', 'theirs', '')"
records "write_files('$WORK', [Todo(1, 1, 2030, 0, 0, 'Unassigned', 'mine', ''), $THEIRS], None)"
since=$(date +%s%N)
# The time of the screenshot that first shows it.
while shot=$(date +%s%N) && [ "$(listed_lines)" != 2 ]; do
  [ $((shot - since)) -lt 10000000000 ] || fail "the list did not show their to-do"
done
took=$(((shot - since) / 1000000))
[ "$took" -lt 1000 ] || fail "their to-do took $took ms to show"
# An edit of a to-do that another program completes meanwhile is kept beside that version.
click "$MAIN" "$FIRST_LINE" && click "$MAIN" "$EDIT_TODO" && ENTRY=$(wait_window "To Do Entry")
records "write_files('$WORK', [Todo(1, 1, 2030, 0, 1, 'Unassigned', 'mine', ''), $THEIRS], None)"
type_at "$ENTRY" "$DESCRIPTION" " edited" && click "$ENTRY" "$ENTRY_SAVE"
expect_files "1/1/2030 0 1 Unassigned|mine|
1/2/2030 0 0 Unassigned|theirs|
1/1/2030 0 0 Unassigned|mine edited|" Unassigned
grep -q "^the to-do \"mine\" was changed or deleted by another program .*both versions are kept$" \
  "$WORK/stderr.txt" || fail "said: $(cat "$WORK/stderr.txt")"
[ "$(find "$WORK" -name '*changed-elsewhere*')" = "" ] || fail "a copy was kept: $(ls "$WORK")"
kill "$APP_PID" && rm "$WORK/pindle_todo.db" && mkfifo "$WORK/pindle_todo.db"
launch_app # would wait for a writer for ever if it opened the pipe to read
grep -qx "could not open file pindle_todo.db" "$WORK/stderr.txt" || fail "$(cat "$WORK/stderr.txt")"
kill "$APP_PID"
echo "e2e: all sessions behaved"
