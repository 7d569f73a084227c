#!/usr/bin/env bash
# Builds pindle_sync and times it against each server of the sync suite (1000 to-dos up, then a
# sync with nothing new) beside the floor of the same PUTs from a minimal client. Not part of the
# test suite: timings have no place there. Usage: scripts/sync-bench.sh [--https]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh --tests
cmake -S . -B build -DPINDLE_BUILD_TESTS=ON >/dev/null
cmake --build build -j"$(nproc)" --target pindle_sync >&2
exec /usr/bin/python3 benchmarks/sync_bench.py build/pindle_sync "$@"
