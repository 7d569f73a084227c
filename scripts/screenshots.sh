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

python3 - "$work" "$root/tests/support" <<'PY'
import datetime
import sys
sys.path.insert(0, sys.argv[2])
from records import Todo, write_files

def todo(days, priority, done, category, description, notes=""):
    d = datetime.date.today() + datetime.timedelta(days=days)
    return Todo(d.month, d.day, d.year, priority, done, category, description, notes)

write_files(sys.argv[1], [todo(0, 0, 0, "Work", "Send the quarterly report"),
                          todo(3, 2, 0, "Home", "Book the plumber"),
                          todo(10, 4, 0, "Errands", "Renew the library card"),
                          todo(-2, 1, 0, "Work", "Answer the auditors", "Overdue"),
                          todo(-5, 3, 1, "Home", "Water the plants"),
                          todo(1, 0, 1, "Errands", "Pick up the parcel")],
            ["Unassigned", "Work", "Home", "Errands"])
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
