#!/usr/bin/env bash
# Configures and builds into a build folder: build/ by default, build-sanitize/ with --sanitize.
set -euo pipefail
cd "$(dirname "$0")/.."

dir=build
flags=()
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-sanitize
  flags+=(-DPINDLE_SANITIZE=ON)
fi
cmake -S . -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j"$(nproc)"
echo "$dir"
