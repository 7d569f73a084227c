#!/usr/bin/env bash
# A first run as a user meets it: open the "Todo List" tab, add one to-do through the entry
# dialog, close the window with Escape; then check exit status, stderr and the file's bytes.
APP="$1"
source "$(dirname "$0")/lib.sh"

start_app
click "$MAIN" 40 37          # the "Todo List" tab
click "$MAIN" 475 77         # "&New"
ENTRY=$(wait_window "^To Do Entry$")
click "$ENTRY" 200 157       # the description field
xdotool type --delay 20 "Buy milk"
click "$ENTRY" 67 407        # "&Save"
wait_gone "^To Do Entry$"
xdotool mousemove --sync --window "$MAIN" 300 300 key Escape
wait_exit
[ "$RC" = 0 ] || fail "exit status $RC, stderr: $(cat "$WORK/stderr.txt")"

expected_err=$'could not open file pindle_todo.db\nskipping over reading record\ncould not open file cat.db\nskipping over reading record'
[ "$(cat "$WORK/stderr.txt")" = "$expected_err" ] || fail "stderr was: $(cat "$WORK/stderr.txt")"

python3 - "$WORK/pindle_todo.db" <<'PY'
import struct, sys, time
data = open(sys.argv[1], "rb").read()
t = time.localtime()
expected = struct.pack(">iiiiB", t.tm_mon, t.tm_mday, t.tm_year, 0, 0)
expected += b"Unassigned".ljust(50, b"\0") + b"Buy milk".ljust(50, b"\0")
expected += b"\0" * 32000 + b"\0" * 3 + b"\0" * 4
assert len(data) == 32124, len(data)
assert data == expected, "record bytes differ"
PY
echo "first to-do saved as expected"
