#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite; without a display it runs
# under a private Xvfb server. Pass --sanitize for the AddressSanitizer/UBSan build, which leaves
# out the suites against real CalDAV servers.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh --tests
dir=$(scripts/build.sh --tests "$@" | tail -n 1)
# The toolkit's font library keeps caches it never frees; only those leaks are suppressed.
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
run=(ctest --test-dir "$dir" --output-on-failure -j"$(nproc)")
# The suites drive the windows through X (Xvfb, xdotool): FLTK 1.4 stays on its X11 back end
# even in a Wayland session. The Wayland test chooses its own.
export FLTK_BACKEND=x11
# The suites against real CalDAV servers (label "server") run in the plain build only, which CI
# runs on a brand-new machine: there they also show that the servers' packages install and
# work. Under the sanitizers pindle_sync meets servers in the hostile server's suite.
for arg in "$@"; do
  [ "$arg" != --sanitize ] || run+=(-LE server)
done
if [ -z "${DISPLAY:-}" ]; then
  # -noreset: a server reset after one test's last client leaves would refuse the next one.
  exec xvfb-run -a -s "-screen 0 1024x768x24 -noreset" "${run[@]}"
fi
exec "${run[@]}"
