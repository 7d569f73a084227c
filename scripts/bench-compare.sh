#!/usr/bin/env bash
# Measures two commits against each other in one run, so that whatever else the machine is doing
# hits both alike: builds this tree's benchmark programs against each commit's program (Release,
# in build-compare/COMMIT/), then runs every chosen benchmark once for each commit in turn, the
# order swapped every round, for the given number of rounds, and prints the medians side by side
# with the load average seen.
# usage: scripts/bench-compare.sh A B [rounds] [benchmark regex]
#   e.g. scripts/bench-compare.sh 5384bf2 HEAD 5 '^(startup|reload|follow)/'
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -ge 2 ] || { sed -n '7,8p' "$0" >&2; exit 2; }
rounds=${3:-5}
filter=${4:-.}
scripts/install-deps.sh libbenchmark-dev libx11-dev xvfb python3
work=$PWD/build-compare
trap 'rm -rf "$work"/*/src' EXIT

# The commit's program with this tree's benchmarks, which use only what every version offers.
build() {
  local dir=$work/$1
  rm -rf "$dir/src"
  mkdir -p "$dir/src" "$dir/runs"
  git archive "$1" | tar -x -C "$dir/src"
  rm -rf "$dir/src/benchmarks"
  cp -r benchmarks "$dir/src/"
  cp cmake/benchmarks.cmake "$dir/src/cmake/"
  cmake -S "$dir/src" -B "$dir/build" -DCMAKE_BUILD_TYPE=Release -DPINDLE_BENCHMARKS=ON \
    -DPINDLE_BUILD_TESTS=OFF >/dev/null
  cmake --build "$dir/build" -j2 --target store_bench ui_bench >/dev/null
}
a=$(git rev-parse --short "$1")
b=$(git rev-parse --short "$2")
rm -rf "$work"
build "$a"
build "$b"

# A display of our own, whichever number is free: other X servers may share the machine.
Xvfb -displayfd 3 -screen 0 1024x768x24 -noreset -nolisten tcp 3>"$work/display" \
  >"$work/xvfb.log" 2>&1 &
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null || true; rm -rf "$work"/*/src' EXIT
for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.1; done
display=:$(cat "$work/display")

for program in store_bench ui_bench; do
  (cd "$work" && DISPLAY=$display "$work/$b/build/$program" --benchmark_list_tests 2>/dev/null) |
    grep -E -- "$filter" || true
done >"$work/names"
echo "$(wc -l <"$work/names") benchmarks, $rounds rounds; load average at the start: \
$(cut -d' ' -f1-3 /proc/loadavg)" >&2

for round in $(seq "$rounds"); do
  order=("$a" "$b")
  [ $((round % 2)) -eq 0 ] && order=("$b" "$a")
  while read -r name; do
    program=ui_bench
    "$work/$b/build/store_bench" --benchmark_list_tests | grep -qxF -- "$name" && program=store_bench
    for commit in "${order[@]}"; do
      # From a folder without data files: the window's globals load them at start.
      (cd "$work" &&
        DISPLAY=$display "$work/$commit/build/$program" --benchmark_filter="^${name}\$" \
        --benchmark_format=json --benchmark_out_format=json \
        --benchmark_out="$work/$commit/runs/$(echo "$name" | tr / _)-$round.json" \
        >/dev/null 2>>"$work/errors.log")
    done
  done <"$work/names"
  echo "round $round done, load average $(cut -d' ' -f1-3 /proc/loadavg)" >&2
done

python3 - "$work" "$a" "$b" <<'EOF'
import glob, json, os, statistics, sys

work, a, b = sys.argv[1:]
# The counters worth setting side by side, as they are reported.
counters = ["peak_mb", "floor_peak_mb", "read_mb", "disk_read_mb", "written_kb", "median_ms",
            "worst_ms", "floor_ms"]

def runs(commit):
    found = {}
    for path in glob.glob(os.path.join(work, commit, "runs", "*.json")):
        try:
            data = json.load(open(path))
        except ValueError:
            print(f"left out, not whole (a run that failed?): {path}", file=sys.stderr)
            continue
        for bench in data["benchmarks"]:
            if bench.get("run_type") == "iteration":
                found.setdefault(bench["run_name"], []).append((bench, data["context"]))
    return found

def median(values):
    return statistics.median(values) if values else float("nan")

ra, rb = runs(a), runs(b)
loads = [ctx["load_avg"][0] for rs in (ra, rb) for r in rs.values() for _, ctx in r
         if ctx.get("load_avg")]
if not loads:
    sys.exit("no benchmark ran: see " + os.path.join(work, "errors.log"))
print(f"{a} against {b}, medians of each side's runs; load average during the runs "
      f"{min(loads):.1f} to {max(loads):.1f} (median {median(loads):.1f})\n")
rows = [["benchmark", "measure", a, b, f"{b}/{a}"]]
for name in sorted(set(ra) | set(rb), key=lambda n: (n.split("/")[0], int(n.split("/")[1]))):
    def value(rs, key):
        return median([bench[key] for bench, _ in rs.get(name, []) if key in bench])
    for key in ["real_time"] + counters:
        va, vb = value(ra, key), value(rb, key)
        if va != va and vb != vb:
            continue
        unit = "ms" if key in ("real_time", "floor_ms", "median_ms", "worst_ms") else ""
        label = "time (ms)" if key == "real_time" else key
        ratio = f"{vb / va:.2f}" if va == va and vb == vb and va else "-"
        rows.append([name, label, f"{va:.4g}", f"{vb:.4g}", ratio])
widths = [max(len(row[i]) for row in rows) for i in range(5)]
for row in rows:
    print("  ".join(cell.ljust(w) for cell, w in zip(row, widths)))
EOF
