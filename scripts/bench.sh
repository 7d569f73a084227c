#!/usr/bin/env bash
# Builds the benchmarks and prints one table of medians beside their floors, the user interface's
# under a private Xvfb. Usage: scripts/bench.sh [repetitions] [benchmark args for both programs]
set -euo pipefail
cd "$(dirname "$0")/.."
reps=${1:-5}
shift || true
scripts/build-benchmarks.sh
run=(--benchmark_repetitions="$reps" --benchmark_report_aggregates_only=true
     --benchmark_out_format=json "$@")
build-bench/store_bench "${run[@]}" --benchmark_out=build-bench/store_bench.json \
  >build-bench/store_bench.log 2>&1

# A display of our own, whichever number is free: other X servers may share the machine.
Xvfb -displayfd 3 -screen 0 1024x768x24 -noreset -nolisten tcp 3>build-bench/display \
  >build-bench/xvfb.log 2>&1 &
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null || true' EXIT
for _ in $(seq 100); do [ -s build-bench/display ] && break; sleep 0.1; done
display=:$(cat build-bench/display)
DISPLAY=$display build-bench/ui_bench "${run[@]}" --benchmark_out=build-bench/ui_bench.json \
  >build-bench/ui_bench.log 2>&1

# Times in ms or us; the kinds of save have no floor, only the bytes they wrote. Peak RSS rows: the "median" is the peak, the "floor" N x 32124 bytes. The
# start-up floor is the same program started on empty files. A single repetition has no
# aggregates, so its plain rows stand in for the medians.
jq -rs '
  def fmt: if . >= 100 then (. * 10 | round / 10) elif . >= 1 then (. * 1000 | round / 1000)
    else (. * 1e6 | round / 1e6) end | tostring;
  def time: if . >= 1 then (fmt + " ms") else ((. * 1000 | fmt) + " us") end;
  def rss($what): [$what, (.peak_mb | fmt) + " MB", (.data_mb | fmt) + " MB",
    ((.peak_ratio // .ratio) | fmt), "budget " + (.budget_mb | fmt) + " MB"];
  ["N", "measure", "median", "floor", "ratio", "note"],
  ([.[].benchmarks[]] | .[] | select(.aggregate_name == "median" or .run_type == "iteration")
   | (.run_name | split("/")) as $p
   | if $p[0] == "load_peak_rss" then [$p[1]] + rss("load peak RSS")
     elif $p[0] == "startup" then
       [$p[1], "start-up", (.real_time | time), (.floor_ms | time), (.ratio | fmt),
        "to the main window mapped"], [$p[1]] + rss("start-up peak RSS"),
       [$p[1], "start-up peak RSS, empty files", (.floor_peak_mb | fmt) + " MB", "-", "-", ""]
     else
       [$p[1], ($p[0] | sub("rebuild_all"; "rebuild, completed shown")
                      | sub("rebuild_default"; "rebuild, default")),
        (.real_time | time), (if .floor_ms then (.floor_ms | time) else "-" end),
        (if .floor_ms then (.ratio | fmt) else "-" end),
        if .worst_ms then "median " + (.median_ms | time) + ", worst " + (.worst_ms | time)
          + " of 20; the floor is a reload and rebuild"
        elif .written_kb then "wrote " + (.written_kb | fmt) + " KB"
        elif .disk_mb then "disk " + (.disk_mb | fmt) + " MB vs " + (.floor_disk_mb | fmt) + " MB"
        elif .file_mb then "read " + (.disk_read_mb | fmt) + " MB of the " + (.file_mb | fmt)
          + " MB file from the disk"
        elif .lines then (.lines | tostring) + " lines"
        else "" end]
     end)
  | @tsv' build-bench/store_bench.json build-bench/ui_bench.json | column -t -s $'\t'
