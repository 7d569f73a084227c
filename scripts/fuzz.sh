#!/usr/bin/env bash
# Builds the fuzz targets (the to-do file's loader, runs of saves in place, and the reading of a
# CalDAV server's replies) with clang in build-fuzz/ and runs each for a bounded time (seconds,
# default 60), printing libFuzzer's final figures; exits non-zero on any finding.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
scripts/install-deps.sh --companions clang-14 libclang-rt-14-dev python3
dir=$PWD/build-fuzz
cmake -S . -B "$dir" -DCMAKE_CXX_COMPILER=clang++-14 -DPINDLE_FUZZ=ON -DPINDLE_BUILD_TESTS=OFF \
  >/dev/null
cmake --build "$dir" -j"$(nproc)" --target todo_file_fuzzer save_sequence_fuzzer \
  server_reply_fuzzer

# A few small, valid files to start from, so that fuzzing need not discover the record sizes.
python3 - "$dir/fuzz-seeds/todo" <<'PY'
import os
import sys
sys.path.insert(0, "tests/support")
from records import Todo, todos_bytes

milk = Todo(1, 1, 2005, 0, 0, "Home", "Buy milk", "two litres")
seeds = {
    "empty": [],
    "one": [milk],
    "two": [milk, milk._replace(completed=1)],
    "odd_numbers": [Todo(-2**31, -1, 2**31 - 1, 1000, 255, "", "", "")],
    "unterminated": [Todo(1, 1, 2005, 0, 0, "C" * 50, "D" * 50, "N" * 32000)],
    "junk_after_terminators": [Todo(1, 1, 2005, 0, 0, b"Work\0old", b"Call\0x", b"\0left")],
}
os.makedirs(sys.argv[1], exist_ok=True)
for name, todos in seeds.items():
    with open(os.path.join(sys.argv[1], name), "wb") as f:
        f.write(todos_bytes(todos) + (b"partial" if name == "two" else b""))
PY

# The targets rewrite their data file on every input; on a memory file system they run about ten
# times faster than with /tmp on disk. A target that crashes leaves its directory behind, so all
# of them go in one that is removed at the end.
shm=/tmp
if [ -d /dev/shm ] && [ -w /dev/shm ]; then
  shm=/dev/shm
fi
TMPDIR=$(mktemp -d "$shm/pindle_fuzz_run_XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# Each run starts from the generated seeds alone, so its figures do not depend on earlier runs.
# Paths are absolute because the targets work in a private directory of their own.
failed=0
rm -rf "$dir/fuzz-findings"
fuzz() {
  local target=$1 seeds=$2 max_len=$3 seed_dir=$4
  shift 4
  local corpus=$dir/fuzz-corpus/$seeds log=$dir/fuzz-logs/$target.log
  rm -rf "$corpus"
  mkdir -p "$corpus" "$dir/fuzz-logs" "$dir/fuzz-findings"
  echo "== fuzzing $target for ${seconds}s"
  if "$dir/$target" "$corpus" "$seed_dir" -max_total_time="$seconds" \
    -max_len="$max_len" -timeout=30 -print_final_stats=1 \
    -artifact_prefix="$dir/fuzz-findings/$target-" "$@" >"$log" 2>&1; then
    grep -E '^#[0-9]+[[:space:]]+DONE|^stat::' "$log"
  else
    tail -n 40 "$log"
    echo "FINDING in $target: full log in $log, input saved under $dir/fuzz-findings/"
    failed=1
  fi
}
fuzz todo_file_fuzzer todo 100000 "$dir/fuzz-seeds/todo"
# Any bytes are a run of operations, so this one starts from nothing, at full length at once.
mkdir -p "$dir/fuzz-seeds/none"
fuzz save_sequence_fuzzer none 256 "$dir/fuzz-seeds/none" -len_control=0
fuzz server_reply_fuzzer server_reply 65536 "$PWD/fuzz/server_reply_seeds"
exit "$failed"
