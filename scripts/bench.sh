#!/usr/bin/env bash
# Builds the benchmarks (Release, in build-bench/) and prints, per list size and measure, the
# median over repetitions beside its floor. Usage: scripts/bench.sh [repetitions] [benchmark args]
set -euo pipefail
cd "$(dirname "$0")/.."
reps=${1:-5}
shift || true
scripts/install-deps.sh libbenchmark-dev jq
cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DPINDLE_BENCHMARKS=ON \
  -DPINDLE_BUILD_TESTS=OFF >/dev/null
cmake --build build-bench -j"$(nproc)" --target store_bench >/dev/null
out=build-bench/store_bench.json
build-bench/store_bench --benchmark_repetitions="$reps" --benchmark_report_aggregates_only=true \
  --benchmark_out="$out" --benchmark_out_format=json "$@" >build-bench/store_bench.log 2>&1

# Times in ms or us; for the peak RSS row the "median" is the peak and the "floor" is N x 32124 bytes.
# A single repetition has no aggregates, so its plain rows stand in for the medians.
jq -r '
  def fmt: if . >= 100 then (. * 10 | round / 10) elif . >= 1 then (. * 1000 | round / 1000)
    else (. * 1e6 | round / 1e6) end | tostring;
  def time: if . >= 1 then (fmt + " ms") else ((. * 1000 | fmt) + " us") end;
  ["N", "measure", "median", "floor", "ratio", "note"],
  (.benchmarks[] | select(.aggregate_name == "median" or .run_type == "iteration")
   | (.run_name | split("/")) as $p
   | if $p[0] == "load_peak_rss" then
       [$p[1], "load peak RSS", (.peak_mb | fmt) + " MB", (.data_mb | fmt) + " MB",
        (.ratio | fmt), "budget " + (.budget_mb | fmt) + " MB"]
     else
       [$p[1], $p[0], (.real_time | time), (.floor_ms | time), (.ratio | fmt),
        if .disk_mb then "disk " + (.disk_mb | fmt) + " MB vs " + (.floor_disk_mb | fmt) + " MB"
        else "" end]
     end)
  | @tsv' "$out" | column -t -s $'\t'
