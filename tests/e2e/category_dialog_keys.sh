#!/usr/bin/env bash
# The category dialog's underlined letters S and C, typed with Alt from the name field and
# plainly with the focus on a button; Escape; renaming; and the dialog keeping the main window's
# mouse and keyboard.
APP="$1"
source "$(dirname "$0")/lib.sh"

TITLE="^Category Edit$"
NAME=(200 17)
names=(Unassigned Work Home Spare)

# Opens the dialog with the letter given on the main window and types into the name field.
open_typing() { # key text
  key_at "$MAIN" 300 300 "$1"
  DIALOG=$(wait_window "$TITLE")
  click "$DIALOG" "${NAME[@]}"
  xdotool key End type "$2"
}

# The keys close the dialog; then the name given is appended to the expected names, "="
# expects the names as they are, and "-" expects the files as they were.
closes() { # keys name|=|-
  local before
  before=$(files_sum)
  key_at "$DIALOG" "${NAME[@]}" $1
  wait_gone "$TITLE"
  if [ "$2" = - ]; then
    unchanged_since "$before"
  else
    [ "$2" = = ] || names+=("$2")
    expect_categories "${names[@]}"
  fi
}

start_app small

open_typing n "Cars" # plain S, C and A in the field are text
closes alt+s "Cars"
open_typing n "Boats"
closes alt+c -
# Tab moves the focus from the name to Save, then Cancel.
open_typing n "Sea"
closes "Tab s" "Sea"
open_typing n "Sky"
closes "Tab c" -
open_typing n "Fog"
closes Escape -

# E on the selected "Spare" edits it in place.
click "$MAIN" 200 165
open_typing e "2"
names[3]="Spare2"
closes alt+s =

# While the dialog is open, About, New and the list ignore the mouse, and the letters of About
# and Delete go into the name field.
open_typing n ""
xdotool windowmove --sync "$DIALOG" 540 0
click "$DIALOG" "${NAME[@]}"
before=$(files_sum)
for at in "595 17" "392 432" "200 114"; do
  click "$MAIN" $at
done
key_at "$MAIN" 300 300 a d
only_windows "To Do List" "Category Edit"
unchanged_since "$before"
closes alt+s "ad"

key_at "$MAIN" 300 300 Escape
wait_exit
[ "$RC" = 0 ] || fail "exit status $RC, stderr: $(cat "$WORK/stderr.txt")"
echo "category dialog letters, Escape and modality work"
