#!/usr/bin/env bash
# A save that fails is reported, not passed over: the data file is taken away after start-up
# (a folder in its place, or a full device behind it), a change is made, and the program must
# end with status 200 and say why as its last words on stderr.
APP="$1"
source "$(dirname "$0")/lib.sh"
RECORDS="$(dirname "$0")/records.py"

# Each case: the file to break, how, the action that saves it, the expected last stderr line.
run_case() {
  local file="$1" breakage="$2" action="$3" expected="$4"
  start_app_with_todo
  rm -f "$WORK/$file"
  case "$breakage" in
    folder) mkdir "$WORK/$file" ;;
    full) ln -s /dev/full "$WORK/$file" ;;
  esac
  case "$action" in
    tab) click "$MAIN" 40 37 ;;
    category)
      click "$MAIN" 392 432
      local dialog
      dialog=$(wait_window "^Category Edit$")
      click "$dialog" 287 77
      ;;
  esac
  wait_exit
  [ "$RC" = 200 ] || fail "$file as $breakage: exit status $RC"
  local last
  last=$(tail -n 1 "$WORK/stderr.txt")
  [ "$last" = "$expected" ] || fail "$file as $breakage: stderr ended with '$last'"
  echo "ok: $file as $breakage: $expected"
  rm -rf "$WORK"
}

# A to-do to keep, so the save has something to write; and a category file, so the start is
# quiet.
start_app_with_todo() {
  WORK=$(mktemp -d /tmp/pindle_e2e_XXXXXX)
  trap 'kill "$APP_PID" 2>/dev/null || true; rm -rf "$WORK"' EXIT
  python3 "$RECORDS" write-todo "$WORK/pindle_todo.db" "keep me"
  printf 'Unassigned' >"$WORK/cat.db"
  truncate -s 56 "$WORK/cat.db" # zeros: the name's end, and a last record's link
  launch_app
}

run_case pindle_todo.db folder tab "could not open file pindle_todo.db"
run_case pindle_todo.db full tab "could not write records!"
run_case cat.db folder category "could not open file cat.db"
run_case cat.db full category "could not write records!"
