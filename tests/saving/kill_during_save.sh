#!/usr/bin/env bash
# SIGKILL at random moments during saves of thousands of to-dos: after each kill the file must
# still hold every to-do that the change being saved was not about. Deleting the first to-do
# moves every record, so its save rewrites the whole file.
# usage: kill_during_save.sh SAVE_DRIVER [TO-DOS] [TRIALS PER CHANGE]
set -euo pipefail
driver=$1 n=${2:-3000} trials=${3:-8}
# On a memory file system where there is one: the pristine copy made before each trial would
# otherwise leave the save's closing fdatasync a hundred megabytes to flush, and the kills would
# mostly land there, after the last write. Writes reach the page cache alike on either.
shm=/tmp
[ -d /dev/shm ] && [ -w /dev/shm ] && shm=/dev/shm
work=$(mktemp -d "$shm/pindle_kill_XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"
"$driver" fill "$n" >/dev/null 2>&1
cp pindle_todo.db pristine.db
RANDOM=11 # the same moments on every run

kills=0 lost=0
for change in delete-first purge append edit delete-last; do
  cp pristine.db pindle_todo.db
  length=$("$driver" "$change" "$n" | cut -d' ' -f2)
  for _ in $(seq "$trials"); do
    cp pristine.db pindle_todo.db
    delay=$(((RANDOM * 32768 + RANDOM) % (length + 1)))
    [ -z "$("$driver" "$change" "$n" "$delay" || true)" ] && kills=$((kills + 1))
    report=$("$driver" check "$change" "$n") || echo "$change killed at $delay us: $report"
    lost=$((lost + ${report% lost}))
  done
  echo "$change: a save takes $length us; $kills killed so far, $lost to-dos lost"
done
echo "$kills of $((5 * trials)) saves killed; $lost to-dos lost"
[ "$lost" -eq 0 ] && [ "$kills" -gt 0 ]
