#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite; without a display it runs
# under a private Xvfb server. Pass --sanitize for the AddressSanitizer/UBSan build.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh
dir=$(scripts/build.sh "$@" | tail -n 1)
run=(ctest --test-dir "$dir" --output-on-failure -j"$(nproc)")
if [ -z "${DISPLAY:-}" ]; then
  exec xvfb-run -a -s "-screen 0 1024x768x24" "${run[@]}"
fi
exec "${run[@]}"
