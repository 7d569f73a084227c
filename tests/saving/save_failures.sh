#!/usr/bin/env bash
# Saves that cannot be made: on a full file system (a small loop-mounted ext4), to a file made
# immutable (root ignores file modes), and over a file whose replacement the kernel refuses (a
# mount point). Each must say why on stderr, end with status 200 and leave the list exactly as it
# was. On the full file system even an edit fails: its journal needs room before the file is
# touched; the torn journal is thrown away at the next opening. An append whose journal fits but
# whose growth does not leaves its whole journal, finished once there is room again. A version
# another program wrote is never gone over without its copy kept.
# usage: save_failures.sh CRASH_DRIVER. Needs root and a free loop device; skips (77) without.
set -euo pipefail
driver=$1
[ "$(id -u)" -eq 0 ] || { echo "SKIP: mounting a test file system needs root"; exit 77; }
losetup -f >/dev/null 2>&1 || { echo "SKIP: no free loop device"; exit 77; }
work=$(mktemp -d /tmp/pindle_fail_XXXXXX)
mnt=$work/mnt
trap 'set +e; cd /; chattr -i "$mnt/pindle_todo.db" 2>/dev/null; umount "$work/room/pindle_todo.db" 2>/dev/null
  umount "$mnt"; rm -rf "$work"' EXIT

# The list before and after the edit, then an append, made where there is room.
mkdir "$work/room"
(cd "$work/room" && "$driver" prepare 200 && "$driver" show . >"$work/old" &&
  "$driver" act edit && "$driver" show . >"$work/edited" &&
  "$driver" act append && "$driver" show . >"$work/appended")

truncate -s 12M "$work/fs.img"
mkfs.ext4 -q -F -m 0 "$work/fs.img"
mkdir "$mnt"
mount -o loop "$work/fs.img" "$mnt"
cd "$mnt"
"$driver" prepare 200
# Twelve blocks: room for an append's journal (eight), not for the file's growth besides.
dd if=/dev/zero of=spare bs=4k count=12 2>/dev/null
dd if=/dev/zero of=filler bs=4k 2>/dev/null || true
sync

# expect CHANGE STATUS LIST [LAST STDERR LINE]: LIST is what the folder must show afterwards,
# "-" where it cannot be shown until there is room again.
expect() {
  local change=$1 want=$2 list=$3 message=${4:-} status=0
  "$driver" act "$change" 2>"$work/stderr" || status=$?
  if [ "$status" -ne "$want" ] || [ "$(tail -n 1 "$work/stderr")" != "$message" ] ||
    { [ "$list" != - ] && ! "$driver" show . 2>/dev/null | cmp -s - "$work/$list"; }; then
    echo "FAIL: $change: status $status, stderr '$(cat "$work/stderr")', the list not as $list"
    exit 1
  fi
  echo "ok: $change: status $status${message:+, $message}"
}

expect append 200 old "could not write records!"
expect edit 200 old "could not write records!"
[ ! -e .pindle_save.journal ] || { echo "FAIL: a torn journal was left after the check"; exit 1; }
chattr +i pindle_todo.db
expect edit 200 old "could not open file pindle_todo.db"
chattr -i pindle_todo.db
# The journal written, copying the new record out of it fails: the journal, whole, stays, and
# the first opening with room again finishes the append.
rm spare
expect append 200 - "could not write records!"
[ -e .pindle_save.journal ] || { echo "FAIL: the append's whole journal is gone"; exit 1; }
rm filler
expect edit 0 appended "finished the last save, which had been cut short"
# Full again: another program's version of the file, written while the list was loaded, finds
# no room to be kept beside it, and the save stops before going over it, leaving no part copy.
dd if=/dev/zero of=filler bs=4k 2>/dev/null || true
expect edit-after-another 200 - \
  "could not keep a copy of pindle_todo.db, which another program changed"
! ls | grep -q changed-elsewhere || { echo "FAIL: part of a copy was left"; exit 1; }
# A file that is a mount point cannot be replaced: the rename after a whole rewrite is refused.
# Out of the small file system, which has no room for a second copy of the file.
cd "$work/room"
mount --bind pindle_todo.db pindle_todo.db
expect delete-first 200 appended "could not write records!"
