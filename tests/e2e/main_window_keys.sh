#!/usr/bin/env bash
# The main window's underlined letters S, P, A, N, D, E and T on both tabs, pressed with the
# focus in a list and on a button, each checked by the window it opens or the file it changes.
APP="$1"
source "$(dirname "$0")/lib.sh"

# Lines of the lists, window-relative, each 17 pixels high; index 0 is a point below the lines.
CAT_LINE=("200 350" "200 114" "200 131" "200 148" "200 165")
TODO_LINE=("200 450" "200 120" "200 137" "200 154" "200 171")

# Gives the focus to the list by selecting a line, or to the first button after the list by
# selecting the line and pressing Tab. A click on the line already selected would open the
# editor, so a click below the lines clears the selection first.
focus() { # list|button line lines
  local empty="$3[0]" line="$3[$2]"
  click "$MAIN" ${!empty}
  click "$MAIN" ${!line}
  [ "$1" = list ] || key_at "$MAIN" ${!line} Tab
}

# The key opens the titled window, Escape closes it, and no file changed.
opens() { # key title
  local before
  before=$(files_sum)
  key_at "$MAIN" 300 300 "$1"
  local id
  id=$(wait_window "^$2\$")
  key_at "$id" 5 5 Escape
  wait_gone "^$2\$"
  unchanged_since "$before"
}

# The key asks a question; Escape answers no and no file changed.
asks() { # key
  local before box
  before=$(files_sum)
  key_at "$MAIN" 300 300 "$1"
  box=$(wait_untitled)
  key_at "$box" 5 5 Escape
  wait_untitled_gone
  unchanged_since "$before"
}

# Opens the selected to-do with E and appends a mark to its description before saving.
mark_selected() { # mark
  key_at "$MAIN" 300 300 e
  local entry
  entry=$(wait_window "^To Do Entry$")
  click "$entry" 200 157
  xdotool key End type "$1"
  key_at "$entry" 200 157 alt+s
  wait_gone "^To Do Entry$"
}

start_app small

# Category tab, where the program opens.
for where in list button; do
  focus $where 2 CAT_LINE
  opens a "About Pindle ToDo"
  focus $where 2 CAT_LINE
  opens n "Category Edit"
  focus $where 2 CAT_LINE
  opens e "Category Edit"
  focus $where 2 CAT_LINE
  asks d
  focus $where 2 CAT_LINE
  asks p
done
focus button 4 CAT_LINE # "Spare"
key_at "$MAIN" 300 300 d
key_at "$(wait_untitled)" 5 5 Return
expect_categories Unassigned Work Home

# To-do tab. Completed to-dos are hidden, so the lines are alpha, gamma, delta.
click "$MAIN" 40 37
for where in list button; do
  focus $where 1 TODO_LINE
  opens a "About Pindle ToDo"
  focus $where 1 TODO_LINE
  opens n "To Do Entry"
  focus $where 1 TODO_LINE
  opens e "To Do Entry"
  focus $where 1 TODO_LINE
  asks d
  focus $where 1 TODO_LINE
  asks p
  # T opens the category filter's menu; Escape closes it and leaves the filter alone.
  focus $where 1 TODO_LINE
  key_at "$MAIN" 300 300 t
  key_at "$(wait_untitled)" 5 5 Escape
  wait_untitled_gone
done

# S shows the completed "beta" on the second line, and S again hides it.
focus list 1 TODO_LINE
key_at "$MAIN" 300 300 s
focus list 2 TODO_LINE
mark_selected "1"
expect_todos "3/1/2030 0 0 Work|alpha|" "3/2/2030 0 1 Home|beta1|" \
  "3/3/2030 0 0 Home|gamma|" "3/4/2030 0 0 Work|delta|"
focus button 1 TODO_LINE
key_at "$MAIN" 300 300 s
focus list 2 TODO_LINE
mark_selected "2"
expect_todos "3/1/2030 0 0 Work|alpha|" "3/2/2030 0 1 Home|beta1|" \
  "3/3/2030 0 0 Home|gamma2|" "3/4/2030 0 0 Work|delta|"

# T and the arrow keys choose "Home" (All, Unassigned, Work, Home): gamma is now first.
focus button 1 TODO_LINE
key_at "$MAIN" 300 300 t
key_at "$(wait_untitled)" 5 5 Down Down Down Return
wait_untitled_gone
focus list 1 TODO_LINE
mark_selected "3"
expect_todos "3/1/2030 0 0 Work|alpha|" "3/2/2030 0 1 Home|beta1|" \
  "3/3/2030 0 0 Home|gamma23|" "3/4/2030 0 0 Work|delta|"

# Answered with Return: P purges the completed beta, D deletes the selected gamma.
key_at "$MAIN" 300 300 p
key_at "$(wait_untitled)" 5 5 Return
expect_todos "3/1/2030 0 0 Work|alpha|" "3/3/2030 0 0 Home|gamma23|" "3/4/2030 0 0 Work|delta|"
focus button 1 TODO_LINE
key_at "$MAIN" 300 300 d
key_at "$(wait_untitled)" 5 5 Return
expect_todos "3/1/2030 0 0 Work|alpha|" "3/4/2030 0 0 Work|delta|"

key_at "$MAIN" 300 300 Escape
wait_exit
[ "$RC" = 0 ] || fail "exit status $RC, stderr: $(cat "$WORK/stderr.txt")"
[ ! -s "$WORK/stderr.txt" ] || fail "stderr: $(cat "$WORK/stderr.txt")"
echo "main window letters work on both tabs"
