#!/usr/bin/env bash
# The to-do entry dialog as a user drives it: opening a to-do from the list, the underlined
# letters N + - T P E A S C with the focus on a button and in both text fields (Alt held
# there), Escape, and the dialog keeping mouse and keyboard from the main window.
APP="$1"
source "$(dirname "$0")/lib.sh"

TITLE="^To Do Entry$"
DESCRIPTION=(200 157)
NOTES=(200 300)
saved=("3/1/2030 0 0 Work|alpha|" "3/2/2030 0 1 Home|beta|" "3/3/2030 0 0 Home|gamma|"
       "3/4/2030 0 0 Work|delta|")

open_new() {
  key_at "$MAIN" 300 300 n
  ENTRY=$(wait_window "$TITLE")
}

# Opens a choice's menu with the key and moves the given number of entries down in it.
choose() { # key downs
  key_at "$ENTRY" 5 5 "$1"
  local menu downs=()
  menu=$(wait_untitled)
  for _ in $(seq "$2"); do downs+=(Down); done
  key_at "$menu" 5 5 "${downs[@]}" Return
  wait_untitled_gone
}

# The key closes the dialog; then the record given is appended to the expected lines, "="
# expects the lines as they are, and "-" expects the files as they were.
closes() { # key record|=|-
  local before
  before=$(files_sum)
  key_at "$ENTRY" "${DESCRIPTION[@]}" "$1"
  wait_gone "$TITLE"
  if [ "$2" = - ]; then
    unchanged_since "$before"
  else
    [ "$2" = = ] || saved+=("$2")
    expect_todos "${saved[@]}"
  fi
}

start_app small
click "$MAIN" 40 37 # the to-do tab: alpha, gamma, delta

# A double-click on a line, or a click on the line already selected, opens that to-do.
point "$MAIN" 200 137
xdotool click --repeat 2 --delay 80 1
ENTRY=$(wait_window "$TITLE")
click "$ENTRY" "${DESCRIPTION[@]}"
xdotool key End type "!"
saved[2]="3/3/2030 0 0 Home|gamma!|"
closes alt+s =
click "$MAIN" 200 154
click "$MAIN" 200 154
ENTRY=$(wait_window "$TITLE")
click "$ENTRY" "${DESCRIPTION[@]}"
xdotool key End type "?"
closes Escape -

# Focus on a button. Tomorrow, then Next Week, two days on and one back: 8 days from today.
open_new
click "$ENTRY" 340 22 # "Tomorrow"
key_at "$ENTRY" 340 22 n plus plus minus
choose p 2
key_at "$ENTRY" 340 22 e
choose a 1
closes s "$(day_from_today 8) 2 1 Work||"
open_new
click "$ENTRY" 265 52 # "Year +"
key_at "$ENTRY" 265 52 t minus
closes s "$(day_from_today -1) 0 0 Unassigned||"
open_new
click "$ENTRY" 340 22
closes c -

# Focus in the description: plain letters are text, Alt+letter the buttons.
open_new
click "$ENTRY" "${DESCRIPTION[@]}"
xdotool type "cats"
key_at "$ENTRY" "${DESCRIPTION[@]}" alt+n alt+plus alt+plus alt+minus
choose alt+p 1
key_at "$ENTRY" "${DESCRIPTION[@]}" alt+e
choose alt+a 2
closes alt+s "$(day_from_today 8) 1 1 Home|cats|"
open_new
click "$ENTRY" 265 52
click "$ENTRY" "${DESCRIPTION[@]}"
xdotool type "x"
key_at "$ENTRY" "${DESCRIPTION[@]}" alt+t alt+minus
closes alt+s "$(day_from_today -1) 0 0 Unassigned|x|"
open_new
click "$ENTRY" "${DESCRIPTION[@]}"
xdotool type "gone"
closes alt+c -

# Focus in the notes, likewise; Today undoes the "Year +" clicked first.
open_new
click "$ENTRY" 265 52
click "$ENTRY" "${NOTES[@]}"
xdotool type "pets"
key_at "$ENTRY" "${NOTES[@]}" alt+t alt+plus alt+plus alt+minus
choose alt+p 3
key_at "$ENTRY" "${NOTES[@]}" alt+e
choose alt+a 3
closes alt+s "$(day_from_today 1) 3 1 Spare||pets"
open_new
click "$ENTRY" "${NOTES[@]}"
xdotool type "x"
key_at "$ENTRY" "${NOTES[@]}" alt+n
closes alt+s "$(day_from_today 7) 0 0 Unassigned||x"
open_new
click "$ENTRY" "${NOTES[@]}"
xdotool type "x"
closes alt+c -

# Escape leaves without saving.
open_new
click "$ENTRY" "${DESCRIPTION[@]}"
xdotool type "zzz"
closes Escape -

# While the dialog is open, the main window's buttons, tabs, list and letters do nothing; the
# letters are typed into the dialog's description, which holds the keyboard.
open_new
xdotool windowmove --sync "$ENTRY" 540 0
click "$ENTRY" "${DESCRIPTION[@]}"
before=$(files_sum)
# New, Edit, Delete, Purge, About, "Show Completed", the category tab, a line of the list.
for at in "475 77" "530 77" "590 77" "530 17" "595 17" "292 17" "100 37" "200 137"; do
  click "$MAIN" $at
done
only_windows "To Do List" "To Do Entry"
key_at "$MAIN" 300 300 n d e p a s t
only_windows "To Do List" "To Do Entry"
unchanged_since "$before"
closes alt+s "$(day_from_today 0) 0 0 Unassigned|ndepast|"

key_at "$MAIN" 300 300 Escape
wait_exit
[ "$RC" = 0 ] || fail "exit status $RC, stderr: $(cat "$WORK/stderr.txt")"
echo "entry dialog letters, Escape, double-click and modality work"
