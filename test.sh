#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite; without a display it runs
# under a private Xvfb server. Pass --sanitize for the AddressSanitizer/UBSan build.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh --tests
dir=$(scripts/build.sh --tests "$@" | tail -n 1)
# The toolkit's font library keeps caches it never frees; only those leaks are suppressed.
export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
run=(ctest --test-dir "$dir" --output-on-failure -j"$(nproc)")
if [ -z "${DISPLAY:-}" ]; then
  # -noreset: a server reset after one test's last client leaves would refuse the next one.
  exec xvfb-run -a -s "-screen 0 1024x768x24 -noreset" "${run[@]}"
fi
exec "${run[@]}"
