#!/usr/bin/env bash
# Installs what is missing, builds, and starts Pindle ToDo in the current directory, where it
# keeps its two data files.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
"$here/scripts/install-deps.sh"
dir=$("$here/scripts/build.sh" | tail -n 1)
exec "$here/$dir/pindle_todo"
