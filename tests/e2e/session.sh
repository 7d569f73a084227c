#!/usr/bin/env bash
# A user's sessions with the built program, for what only a real process shows: the messages
# of a first start, every change surviving a kill right after it, the keyboard letters of the
# three windows, the dialogs holding the main window still, a large paste, the exit statuses,
# a failed save shown and ending the program with its reason, a second copy refused, another
# program's write shown within a second, and an edit of a to-do changed elsewhere kept beside it.
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

echo "== a first start, and a kill after every change"
start_app
[ "$(cat "$WORK/stderr.txt")" = "could not open file pindle_todo.db
skipping over reading record
could not open file cat.db
skipping over reading record" ] || fail "a first start said: $(cat "$WORK/stderr.txt")"
# After a start the category tab shows: going to the to-do tab saves the to-dos unchanged.
todo_tab_then() { click "$MAIN" "$TODO_TAB" && click "$MAIN" "$1" && ENTRY=$(wait_window "To Do Entry"); }
category_then() { click "$MAIN" "$1" && dialog_name "$2" && click "$(window_id "Category Edit")" "$NAME_SAVE"; }
category_then "$NEW_CATEGORY" Work
survives_kill - $'Unassigned\nWork'
click "$MAIN" "$TODO_TAB"
survives_kill "" $'Unassigned\nWork'
todo_tab_then "$NEW_TODO"
click "$ENTRY" "$CATEGORY_CHOICE" && keys "$(wait_window "")" "5 5" Down Return
type_at "$ENTRY" "$DESCRIPTION" "Buy milk" && click "$ENTRY" "$ENTRY_SAVE"
survives_kill "$TODAY 0 0 Work|Buy milk|" $'Unassigned\nWork'
todo_tab_then "$NEW_TODO"
type_at "$ENTRY" "$DESCRIPTION" "Call Bob" && type_at "$ENTRY" "$NOTES" "ring twice"
click "$ENTRY" "$ENTRY_SAVE"
CALL="$TODAY 0 0 Unassigned|Call Bob|ring twice"
survives_kill "$TODAY 0 0 Work|Buy milk|"$'\n'"$CALL" $'Unassigned\nWork'
click "$MAIN" "$TODO_TAB" && click "$MAIN" "${TODO_LINES[2]}" # the later of a tie comes first
click "$MAIN" "$EDIT_TODO" && ENTRY=$(wait_window "To Do Entry")
type_at "$ENTRY" "$DESCRIPTION" " now" && click "$ENTRY" "$COMPLETE" && click "$ENTRY" "$ENTRY_SAVE"
survives_kill "$TODAY 0 1 Work|Buy milk now|"$'\n'"$CALL" $'Unassigned\nWork'
click "$MAIN" "$TODO_TAB" && click "$MAIN" "${TODO_LINES[1]}" # the completed one is hidden
click "$MAIN" "$DELETE_TODO" && answer Return
survives_kill "$TODAY 0 1 Work|Buy milk now|" $'Unassigned\nWork'
click "$MAIN" "${CATEGORY_LINES[2]}" && category_then "$EDIT_CATEGORY" " Office"
survives_kill "$TODAY 0 1 Work|Buy milk now|" $'Unassigned\nWork Office'
click "$MAIN" "$TODO_TAB"
survives_kill "$TODAY 0 1 Unassigned|Buy milk now|" $'Unassigned\nWork Office'
click "$MAIN" "$PURGE" && answer Return
survives_kill "" $'Unassigned\nWork Office'
click "$MAIN" "${CATEGORY_LINES[2]}" && click "$MAIN" "$DELETE_CATEGORY" && answer Return
survives_kill "" Unassigned
kill "$APP_PID"

echo "== the main window's letters, with the focus in a list and on a button"
start_app "write_files(FOLDER, [Todo(3, 1, 2030, 0, 0, 'Work', 'alpha', ''),
  Todo(3, 2, 2030, 0, 1, 'Home', 'beta', ''), Todo(3, 3, 2030, 0, 0, 'Home', 'gamma', ''),
  Todo(3, 4, 2030, 0, 0, 'Work', 'delta', '')], ['Unassigned', 'Work', 'Home', 'Spare'])"
SMALL=$(files)
# A click below the lines first, since a click on the line already selected opens the editor;
# Tab from the list goes to the first button.
focus() { # list|button LINES line
  local lines="$2[0]" line="$2[$3]"
  click "$MAIN" "${!lines}"
  click "$MAIN" "${!line}"
  [ "$1" = list ] || keys "$MAIN" "${!line}" Tab
}
# Each letter opens its window (a question box or menu for ""), which Escape closes unused.
opens() { # LINES letter title...
  local lines=$1 letter title
  shift
  for where in list button; do
    for pair in "$@"; do
      letter=${pair%%=*} title=${pair#*=}
      focus $where "$lines" 1
      keys "$MAIN" "$ANYWHERE" "$letter"
      keys "$(wait_window "$title")" "5 5" Escape
      wait_gone "$title"
      unchanged "$SMALL"
    done
  done
}
opens CATEGORY_LINES "a=About Pindle ToDo" "n=Category Edit" "e=Category Edit" d= p=
click "$MAIN" "$TODO_TAB"
opens TODO_LINES "a=About Pindle ToDo" "n=To Do Entry" "e=To Do Entry" d= p= t=
# S shows the completed beta, P purges it, D deletes the selected line.
focus button TODO_LINES 1 && keys "$MAIN" "$ANYWHERE" s
focus list TODO_LINES 2 && keys "$MAIN" "$ANYWHERE" p && answer Return
focus button TODO_LINES 2 && keys "$MAIN" "$ANYWHERE" d && answer Return
expect_files $'3/1/2030 0 0 Work|alpha|\n3/4/2030 0 0 Work|delta|' \
  $'Unassigned\nWork\nHome\nSpare'

echo "== the dialogs' letters, from a button and from their text fields, and their modality"
kill "$APP_PID" && { wait "$APP_PID" 2>/dev/null || true; }
launch_app
click "$MAIN" "$TODO_TAB" # alpha and delta
TODOS=$'3/1/2030 0 0 Work|alpha|\n3/4/2030 0 0 Work|delta|' CATS=$'Unassigned\nWork\nHome\nSpare'
# Runs the steps in the window just opened, which they close; what it saved is appended to the
# expected files ("=": they are set already; "-": nothing may change).
in_dialog() { # title saved|- steps...
  local title=$1 saved=$2 before
  shift 2
  before=$(files)
  DIALOG=$(wait_window "$title")
  for step in "$@"; do eval "$step" || fail "$title: $step"; done
  wait_gone "$title"
  [ "$saved" != - ] || { unchanged "$before" && return; }
  [ "$saved" = "=" ] || [ "$title" != "To Do Entry" ] || TODOS+=$'\n'"$saved"
  [ "$saved" = "=" ] || [ "$title" != "Category Edit" ] || CATS+=$'\n'"$saved"
  expect_files "$TODOS" "$CATS"
}
new_todo() { keys "$MAIN" "$ANYWHERE" n; in_dialog "To Do Entry" "$@"; }
new_category() { keys "$MAIN" "$ANYWHERE" n; in_dialog "Category Edit" "$@"; }
at() { keys "$DIALOG" "$@"; }
choose() { # key entries-down
  at "5 5" "$1"
  keys "$(wait_window "")" "5 5" $(for _ in $(seq "$2"); do echo Down; done) Return
  wait_gone ""
}
# A double-click on a line opens its to-do; "!" goes at the end of its description.
point "$MAIN" ${TODO_LINES[1]}
xdotool click --repeat 2 --delay 80 1
TODOS=${TODOS/alpha/alpha!}
in_dialog "To Do Entry" = 'type_at "$DIALOG" "$DESCRIPTION" "!"' 'at "$DESCRIPTION" alt+s'
# Focus on Tomorrow: Next Week, two days on and one back; priority 3, completed, Work.
new_todo "$(day_from_today 8) 2 1 Work||" 'click "$DIALOG" "$TOMORROW"' \
  'at "$TOMORROW" n plus plus minus' 'choose p 2' 'at "$TOMORROW" e' 'choose a 1' 'at "$TOMORROW" s'
new_todo - 'click "$DIALOG" "$TOMORROW"' 'at "$TOMORROW" c'
# Focus in the description: plain letters are text, Alt+letter the buttons.
new_todo "$(day_from_today 8) 1 1 Home|cats|" 'type_at "$DIALOG" "$DESCRIPTION" cats' \
  'at "$DESCRIPTION" alt+n alt+plus alt+plus alt+minus' 'choose alt+p 1' \
  'at "$DESCRIPTION" alt+e' 'choose alt+a 2' 'at "$DESCRIPTION" alt+s'
new_todo - 'type_at "$DIALOG" "$DESCRIPTION" gone' 'at "$DESCRIPTION" alt+c'
# Focus in the notes, likewise; Today undoes the Year + clicked first.
new_todo "$(day_from_today 1) 3 1 Spare||pets" 'click "$DIALOG" "$YEAR_PLUS"' \
  'type_at "$DIALOG" "$NOTES" pets' 'at "$NOTES" alt+t alt+plus alt+plus alt+minus' \
  'choose alt+p 3' 'at "$NOTES" alt+e' 'choose alt+a 3' 'at "$NOTES" alt+s'
new_todo - 'type_at "$DIALOG" "$NOTES" x' 'at "$NOTES" Escape'
# While a dialog is open, the main window's buttons, tabs, list and letters do nothing: the
# letters go into the dialog's text field.
modal() { # dialog title, then the points of the main window to click
  xdotool windowmove --sync "$DIALOG" 540 0
  for p in "${@:2}"; do click "$MAIN" "$p"; done
  keys "$MAIN" "$ANYWHERE" n d e p a s t
  [ "$(app_windows | cut -d' ' -f2- | sort)" = "$(printf '%s\n' "$1" "To Do List" | sort)" ] ||
    fail "windows shown: $(app_windows)"
}
new_todo "$TODAY 0 0 Unassigned|ndepast|" 'click "$DIALOG" "$DESCRIPTION"' \
  'modal "To Do Entry" "$NEW_TODO" "$EDIT_TODO" "$PURGE" "595 17" "292 17" "100 37" "${TODO_LINES[1]}"' \
  'at "$DESCRIPTION" alt+s'
# The category dialog: S and C with Alt from the name, plainly after Tab; Escape; E renames.
click "$MAIN" "100 37"
new_category Cars 'dialog_name Cars' 'at "$NAME" alt+s'
new_category - 'dialog_name Boats' 'at "$NAME" alt+c'
new_category Sea 'dialog_name Sea' 'at "$NAME" Tab s'
new_category - 'dialog_name Fog' 'at "$NAME" Escape'
new_category ndepast 'click "$DIALOG" "$NAME"' \
  'modal "Category Edit" "595 17" "$NEW_CATEGORY" "${CATEGORY_LINES[1]}"' 'at "$NAME" alt+s'
click "$MAIN" "${CATEGORY_LINES[4]}"
keys "$MAIN" "$ANYWHERE" e
CATS=${CATS/Spare/Spare2}
in_dialog "Category Edit" = 'dialog_name 2' 'at "$NAME" alt+s'

echo "== pastes of 1 KB, 1 MB and 16 MB from another program, then Escape ends the program"
click "$MAIN" "$TODO_TAB" # Spare is no more: its to-do becomes Unassigned
TODOS=${TODOS/Spare||pets/Unassigned||pets}
# 51-byte lines after a 4-byte start put a euro sign across byte 31,999 of the notes.
records "open('$WORK/text', 'wb').write(('Hi! ' + 'Caf\u00e9 au lait, 2 \u20ac, then the next line \
of notes.\n' * 320000).encode())"
# Nothing else tells when a paste has arrived: the field given as "WxH+X+Y" stops being blank.
shows_text() {
  [ "$(xwd -silent -id "$DIALOG" | convert xwd:- -crop "$1" -format '%[fx:mean<0.99]' info:)" = 1 ]
}
paste_into() { click "$DIALOG" "$1" && xdotool key ctrl+v && poll shows_text "$2"; }
for size in 1000 1000000 16000000; do
  [ -z "${OWNER:-}" ] || kill "$OWNER"
  head -c "$size" "$WORK/text" >"$WORK/clipboard"
  xclip -quiet -selection clipboard -i "$WORK/clipboard" >/dev/null 2>&1 &
  OWNER=$!
  notes=$(head -c $((size < 31999 ? size : 31998)) "$WORK/text")
  new_todo "$TODAY 0 0 Unassigned|$(head -c 50 "$WORK/text")|$notes" \
    'paste_into "$NOTES" 440x180+20+200' 'paste_into "$DESCRIPTION" 370x15+95+150' \
    'at "$NOTES" alt+s'
done
click "$MAIN" "100 37"
new_category "$(head -c 50 "$WORK/text")" 'paste_into "$NAME" 330x15+75+10' 'at "$NAME" alt+s'
kill "$OWNER"
keys "$MAIN" "$ANYWHERE" Escape
wait_exit
[ "$RC" = 0 ] && [ ! -s "$WORK/stderr.txt" ] || fail "exit status $RC, said: $(cat "$WORK/stderr.txt")"

echo "== a save that fails shows why, then ends the program with status 200"
for broken in "pindle_todo.db folder" "pindle_todo.db full" "pindle_todo.db pipe" "cat.db full"; do
  set -- $broken
  rm -rf "$WORK"
  start_app "write_files(FOLDER, [Todo(1, 1, 2030, 0, 0, 'Unassigned', 'keep', '')], ['Unassigned'])"
  rm "$WORK/$1"
  case $2 in
  folder) mkdir "$WORK/$1" ;;
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
click "$MAIN" "${TODO_LINES[1]}" && click "$MAIN" "$EDIT_TODO" && ENTRY=$(wait_window "To Do Entry")
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
