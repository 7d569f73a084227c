#!/usr/bin/env bash
# Nothing saved is lost: a run of changes through the window, each followed by SIGKILL, a check
# of both files' bytes against the state the change should leave, and a restart in that folder.
APP="$1"
source "$(dirname "$0")/lib.sh"
RECORDS="$(dirname "$0")/records.py"

# Expected files, one record per line: "month|day|year|priority|completed|category|description
# |notes" for to-dos, a name for categories; "-" while the file should not exist.
TODOS="-"
CATS="-"
STEP=""

# The change is saved before its dialog closes, but give the program a moment to get there;
# then kill it and hold the files to the model exactly.
expect_saved() {
  for _ in $(seq 30); do
    python3 "$RECORDS" check "$WORK" "$TODOS" "$CATS" 2>/dev/null && break
    sleep 0.1
  done
  kill_app
  python3 "$RECORDS" check "$WORK" "$TODOS" "$CATS" || fail "after '$STEP'"
  if grep -q "Sanitizer\|runtime error" "$WORK/stderr.txt"; then
    fail "after '$STEP': $(cat "$WORK/stderr.txt")"
  fi
  echo "ok: $STEP"
}

step() {
  STEP="$1"
  [ -n "${WORK:-}" ] && launch_app || start_app
}

todo_tab() { click "$MAIN" 40 37; }

# Line n of the category or to-do list (lines are 18 pixels apart).
category_line() { click "$MAIN" 150 $((114 + 18 * ($1 - 1))); }
todo_line() { click "$MAIN" 300 $((119 + 18 * ($1 - 1))); }

category_dialog() {
  local dialog
  dialog=$(wait_window "^Category Edit$")
  click "$dialog" 200 17
  xdotool key ctrl+a && xdotool type --delay 20 "$1"
  click "$dialog" 287 77 # "&Save"
  wait_gone "^Category Edit$"
}

entry_dialog() {
  ENTRY=$(wait_window "^To Do Entry$")
}

entry_save() {
  click "$ENTRY" 67 407
  wait_gone "^To Do Entry$"
}

step "new category"
click "$MAIN" 392 432
category_dialog "Work"
CATS=$'Unassigned\nWork'
expect_saved

step "tab switch with no to-dos"
todo_tab
TODOS=""
expect_saved

step "new to-do in the second category"
todo_tab
click "$MAIN" 475 77
entry_dialog
click "$ENTRY" 200 122 # the category choice: the next entry
xdotool key Down Return
click "$ENTRY" 200 157
xdotool type --delay 20 "Buy milk"
entry_save
TODOS="TODAY|0|0|Work|Buy milk|"
expect_saved

step "new to-do with notes"
todo_tab
click "$MAIN" 475 77
entry_dialog
click "$ENTRY" 200 157
xdotool type --delay 20 "Call Bob"
click "$ENTRY" 200 290
xdotool type --delay 20 "ring twice"
entry_save
TODOS+=$'\nTODAY|0|0|Unassigned|Call Bob|ring twice'
expect_saved

# Same date and priority: the later record is listed first.
step "edit the description"
todo_tab
todo_line 2
click "$MAIN" 532 77
entry_dialog
click "$ENTRY" 200 157
xdotool key ctrl+a && xdotool type --delay 20 "Buy oat milk"
entry_save
TODOS=$'TODAY|0|0|Work|Buy oat milk|\nTODAY|0|0|Unassigned|Call Bob|ring twice'
expect_saved

step "mark complete"
todo_tab
todo_line 2
click "$MAIN" 532 77
entry_dialog
click "$ENTRY" 247 87
entry_save
TODOS=$'TODAY|0|1|Work|Buy oat milk|\nTODAY|0|0|Unassigned|Call Bob|ring twice'
expect_saved

step "delete a to-do"
todo_tab
todo_line 1 # the completed one is not listed
click "$MAIN" 592 77
answer_yes
TODOS="TODAY|0|1|Work|Buy oat milk|"
expect_saved

step "rename a category"
category_line 2
click "$MAIN" 467 432
category_dialog "Office"
CATS=$'Unassigned\nOffice'
expect_saved

step "tab switch reassigns the vanished category"
todo_tab
TODOS="TODAY|0|1|Unassigned|Buy oat milk|"
expect_saved

step "purge"
click "$MAIN" 530 17
answer_yes
TODOS=""
expect_saved

step "delete a category"
category_line 2
click "$MAIN" 542 432
answer_yes
CATS="Unassigned"
expect_saved
