#!/usr/bin/env bash
# Builds the fuzz targets (the two file loaders, runs of saves in place, and the reading of a
# CalDAV server's replies) with clang in build-fuzz/ and runs each for a bounded time (seconds,
# default 60), printing libFuzzer's final figures; exits non-zero on any finding.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-60}
scripts/install-deps.sh --companions clang-14 libclang-rt-14-dev
dir=$PWD/build-fuzz
cmake -S . -B "$dir" -DCMAKE_CXX_COMPILER=clang++-14 -DPINDLE_FUZZ=ON -DPINDLE_BUILD_TESTS=OFF \
  >/dev/null
cmake --build "$dir" -j"$(nproc)" --target todo_file_fuzzer category_file_fuzzer \
  save_sequence_fuzzer server_reply_fuzzer fuzz_seeds

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
fuzz category_file_fuzzer category 1024 "$dir/fuzz-seeds/category"
# Any bytes are a run of operations, so this one starts from nothing, at full length at once.
mkdir -p "$dir/fuzz-seeds/none"
fuzz save_sequence_fuzzer none 256 "$dir/fuzz-seeds/none" -len_control=0
fuzz server_reply_fuzzer server_reply 65536 "$PWD/fuzz/server_reply_seeds"
exit "$failed"
