#!/usr/bin/env bash
# Builds the benchmark programs (Release, in build-bench/) without running them; CI uses it to
# keep them compiling, scripts/bench.sh before it measures.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh libbenchmark-dev libx11-dev jq
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DPINDLE_BENCHMARKS=ON \
  -DPINDLE_BUILD_TESTS=OFF >/dev/null
cmake --build build-bench -j"$(nproc)" --target store_bench ui_bench >/dev/null
