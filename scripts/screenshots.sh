#!/usr/bin/env bash
# Takes the screenshots under docs/: the main window with plain, overdue and completed to-dos,
# the entry dialog, and the category tab. Runs the built program on a private Xvfb display.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh" --tests
app="$root/$("$root/scripts/build.sh" | tail -n 1)/pindle_todo"

work=$(mktemp -d)
Xvfb :77 -screen 0 800x600x24 >/dev/null 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null || true; rm -rf "$work"' EXIT
export DISPLAY=:77
sleep 1

python3 - "$work" <<'PY'
import datetime, struct, sys
def rec(date, prio, done, cat, desc, notes=""):
    r = struct.pack(">iiiiB", date.month, date.day, date.year, prio, done)
    r += cat.encode().ljust(50, b"\0") + desc.encode().ljust(50, b"\0")
    return r + notes.encode().ljust(32000, b"\0") + b"\0" * 7
today = datetime.date.today()
day = datetime.timedelta(days=1)
todos = [rec(today, 0, 0, "Work", "Send the quarterly report"),
         rec(today + 3 * day, 2, 0, "Home", "Book the plumber"),
         rec(today + 10 * day, 4, 0, "Errands", "Renew the library card"),
         rec(today - 2 * day, 1, 0, "Work", "Answer the auditors", "Overdue"),
         rec(today - 5 * day, 3, 1, "Home", "Water the plants"),
         rec(today + 1 * day, 0, 1, "Errands", "Pick up the parcel")]
open(sys.argv[1] + "/pindle_todo.db", "wb").write(b"".join(todos))
cats = ["Unassigned", "Work", "Home", "Errands"]
open(sys.argv[1] + "/cat.db", "wb").write(
    b"".join(c.encode().ljust(52, b"\0") + b"\0\0\0\1" for c in cats))
PY

shot() { xwd -id "$1" -silent | convert xwd:- "$root/docs/$2"; }
(cd "$work" && exec "$app" 2>/dev/null) &
sleep 1
main=$(xdotool search --onlyvisible --name "^To Do List$" | head -n 1)
shot "$main" category-tab.png
xdotool mousemove --sync --window "$main" 40 37 click 1; sleep 0.3
xdotool mousemove --sync --window "$main" 292 17 click 1; sleep 0.3
shot "$main" screenshot.png
xdotool mousemove --sync --window "$main" 300 175 click 1 click 1; sleep 0.5
entry=$(xdotool search --onlyvisible --name "^To Do Entry$" | head -n 1)
shot "$entry" entry-dialog.png
echo "screenshots written to docs/"
