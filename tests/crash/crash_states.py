"""Crash states of every kind of save: each change is made once with its file system calls
traced by strace, then every state a crash could leave is built from the trace and
opened with the project's own loader, recovery included; each must show the list as it was
before the change or as it is after it, never anything else. Once the change is over, a power
cut must leave it whole: every state it could leave then must show the list as it is after.

The model of a crash, per file: what was written before the file's last sync is on the disk; of
what was written since, any subset of the 4 KiB pages may be, the others holding what they held
at that sync (zeros past its end). Creations, truncations, renames and removals happen in order.
States are taken just before each sync or metadata call and at the end; where more than 10 pages
are pending, none, all and a fixed number of subsets drawn with a fixed seed. After the change,
the folder's own changes since its last sync are on the disk in any subset, as file systems
promise no order between them.

usage: crash_states.py CRASH_DRIVER [--only CHANGE]
Prints changes by states (old, new, other) and states after it that are not new (lost); exits 1
if any state is other or lost."""

import argparse
import os
import pathlib
import random
import re
import shutil
import subprocess
import sys
import tempfile

PAGE = 4096
SIZES = (10, 200)  # to-dos in the folder
SAMPLES = 24  # subsets drawn where more than 10 pages are pending


class File:
    def __init__(self, data=b""):
        self.current = bytearray(data)
        self.durable = bytearray(data)
        self.pending = set()  # pages written since the last sync

    def write(self, offset, data):
        end = offset + len(data)
        self.current.extend(bytes(max(0, end - len(self.current))))
        self.current[offset:end] = data
        self.pending.update(range(offset // PAGE, (end - 1) // PAGE + 1))

    def truncate(self, length):
        self.current = self.current[:length].ljust(length, b"\0")
        self.durable = self.durable[:length].ljust(length, b"\0")
        self.pending = {p for p in self.pending if p * PAGE < length}

    def sync(self):
        self.durable = bytearray(self.current)
        self.pending = set()

    def crashed(self, persisted):
        """The bytes after a crash in which the pages `persisted` of those pending made it."""
        data = self.durable.ljust(len(self.current), b"\0")  # a new bytearray
        for page in persisted:
            data[page * PAGE:(page + 1) * PAGE] = self.current[page * PAGE:(page + 1) * PAGE]
        return bytes(data)


class Folder:
    """The folder as the traced calls leave it: names to files, and descriptors to the files they
    were opened as (a descriptor keeps its file through a rename)."""

    def __init__(self, snapshot):
        self.names = {name: File(data) for name, data in snapshot.items()}
        self.opened = {}
        self.synced_names = dict(self.names)  # the folder as its last sync left it
        self.unsynced = []  # the folder's own changes since then, which a power cut may undo

    def apply(self, op):
        kind, args = op[0], op[1:]
        if kind == "open":
            fd, name = args
            if name != "." and name not in self.names:
                self.names[name] = File()
                self.unsynced.append(("create", name, self.names[name]))
            self.opened[fd] = self.names.get(name)
        elif kind == "write":
            self.opened[args[0]].write(args[1], args[2])
        elif kind == "copy":
            source, at, fd, offset, size = args
            self.opened[fd].write(offset, bytes(self.opened[source].current[at:at + size]))
        elif kind == "truncate":
            self.opened[args[0]].truncate(args[1])
        elif kind == "sync" and self.opened[args[0]] is not None:
            self.opened[args[0]].sync()
        elif kind == "sync":  # the folder's own
            self.synced_names, self.unsynced = dict(self.names), []
        elif kind == "rename":
            self.names[args[1]] = self.names.pop(args[0])
            self.unsynced.append(op)
        elif kind == "unlink":
            self.names.pop(args[0])
            self.unsynced.append(op)

    def states(self, rng):
        """Each state a crash now could leave, as {name: bytes}."""
        pending = [(name, page) for name, f in self.names.items() for page in sorted(f.pending)]
        if len(pending) <= 10:
            choices = [[p for i, p in enumerate(pending) if mask >> i & 1]
                       for mask in range(1 << len(pending))]
        else:
            choices = [[], pending] + [[p for p in pending if rng.random() < 0.5]
                                       for _ in range(SAMPLES)]
        for chosen in choices:
            yield {name: f.crashed({page for n, page in chosen if n == name})
                   for name, f in self.names.items()}


    def after_power_cut(self):
        """Each state a power cut once the change is over could leave: what was not synced
        lost, of the folder's own changes too, any of which may have reached the disk."""
        for mask in range(1 << len(self.unsynced)):
            names = dict(self.synced_names)
            for kind, *args in (op for i, op in enumerate(self.unsynced) if mask >> i & 1):
                if kind == "create":
                    names[args[0]] = args[1]
                elif kind == "rename" and args[0] in names:
                    names[args[1]] = names.pop(args[0])
                elif kind == "unlink":
                    names.pop(args[0], None)
            yield {name: f.crashed(()) for name, f in names.items()}


TRACED = "openat,close,write,pwrite64,copy_file_range,ftruncate,fsync,fdatasync,rename,unlink"
SUCCEEDED = re.compile(r"^(\w+)\((.*)\)\s+= (\d+)")


def text(arg):
    """A string argument as strace -xx shows it: every byte in hex."""
    return bytes.fromhex(arg.strip('"').replace("\\x", ""))


def trace(driver, change, folder, log):
    """The calls on the folder's files one change makes, as the model's operations. Names
    without a slash are in the folder, the driver's current directory; other files are ignored.
    strace -xx writes every string in hex, so ", " only ever separates arguments."""
    env = dict(os.environ, ASAN_OPTIONS="detect_leaks=0")  # LeakSanitizer refuses ptrace
    subprocess.run(["strace", "-o", log, "-xx", "-s", "1000000000", "-e", "signal=none",
                    "-e", f"trace={TRACED}", driver, "act", change],
                   cwd=folder, env=env, check=True)
    ops, names, position = [], {}, {}
    with open(log) as f:
        calls = [m.groups() for m in map(SUCCEEDED.match, f) if m]
    for call, args, result in calls:
        a, result = args.split(", "), int(result)
        if call in ("rename", "unlink"):
            paths = [text(p).decode() for p in a]
            if not any("/" in p for p in paths):
                ops.append((call, *paths))
            continue
        if call == "openat":
            name = text(a[1]).decode()
            names.pop(result, None)
            if "/" not in name:
                names[result], position[result] = name, 0
                ops.append(("open", result, name))
                if "O_TRUNC" in a[2]:
                    ops.append(("truncate", result, 0))
            continue
        fd = int(a[2] if call == "copy_file_range" else a[0])
        if call == "close" or fd not in names:
            names.pop(fd, None)  # a descriptor the folder does not own
        elif call in ("write", "pwrite64"):
            at = int(a[3]) if call == "pwrite64" else position[fd]
            ops.append(("write", fd, at, text(a[1])[:result]))
            if call == "write":
                position[fd] = at + result
        elif call == "copy_file_range":
            source_at, at = (int(re.match(r"\[(\d+)", x).group(1)) for x in (a[1], a[3]))
            ops.append(("copy", int(a[0]), source_at, fd, at, result))
        elif call == "ftruncate":
            ops.append(("truncate", fd, int(a[1])))
        else:
            ops.append(("sync", fd))
    return ops


def snapshot(folder):
    return {path.name: path.read_bytes() for path in pathlib.Path(folder).iterdir()}


def show_states(driver, work, states):
    """What the program's loader makes of each state, after its recovery: written out as folders,
    64 at a time, each shown by one process which ends each folder's listing by a line of its
    own."""
    for start in range(0, len(states), 64):
        batch = states[start:start + 64]
        folders = [os.path.join(work, f"state{n}") for n in range(len(batch))]
        for path, state in zip(folders, batch):
            shutil.rmtree(path, ignore_errors=True)
            os.mkdir(path)
            for name, data in state.items():
                pathlib.Path(path, name).write_bytes(data)
        result = subprocess.run([driver, "show", *folders], stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL)
        shown = result.stdout.split(b"--\n")[:-1]
        if result.returncode != 0 or len(shown) != len(folders):
            raise RuntimeError(f"crash_driver show failed ({result.returncode})")
        yield from shown


def crash_states(driver, change, size):
    """(old, new, other) counts of the states a crash during one change at one size could
    leave, and how many of those a power cut after it could leave are not new (lost); with the
    number of calls traced."""
    work = tempfile.mkdtemp(prefix="pindle_crash_")
    try:
        folder = os.path.join(work, "folder")
        os.mkdir(folder)
        subprocess.run([driver, "prepare", str(size)], cwd=folder, check=True)
        before = snapshot(folder)
        ops = trace(driver, change, folder, os.path.join(work, "trace"))
        after = snapshot(folder)
        model = Folder(before)
        rng = random.Random(f"{change}/{size}")
        seen, states = set(), []
        for i in range(len(ops) + 1):
            # Points just before each sync and metadata call hold every state between them.
            if i in (0, len(ops)) or ops[i][0] not in ("write", "copy", "open"):
                for state in model.states(rng):
                    key = tuple(sorted(state.items()))
                    if key not in seen:
                        seen.add(key)
                        states.append(state)
            if i < len(ops):
                model.apply(ops[i])
        # A call the trace missed would leave the model short of what the change did.
        if {name: bytes(f.current) for name, f in model.names.items()} != after:
            raise RuntimeError(f"{change}: the traced calls do not make the folder it left")
        # The folder before and after the change, then the states during it and after it.
        old, new, *listings = show_states(driver, work, [before, after, *states,
                                                         *model.after_power_cut()])
        counts = [0, 0, 0, 0]
        for n, shown in enumerate(listings):
            if n >= len(states):
                counts[3] += shown != new
            else:
                counts[0 if shown == old else 1 if shown == new else 2] += 1
        return counts, len(ops)
    finally:
        shutil.rmtree(work)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("driver")
    parser.add_argument("--only")
    args = parser.parse_args()
    changes = subprocess.run([args.driver, "changes"], stdout=subprocess.PIPE, text=True,
                             check=True).stdout.split()
    if args.only:
        changes = [c for c in changes if c == args.only]
    print(f"{'change':30} {'N':>4} {'calls':>6} {'old':>5} {'new':>5} {'other':>5} {'lost':>5}")
    bad = 0
    for change in changes:
        for size in SIZES:
            (old, new, other, lost), calls = crash_states(args.driver, change, size)
            print(f"{change:30} {size:>4} {calls:>6} {old:>5} {new:>5} {other:>5} {lost:>5}",
                  flush=True)
            bad += other + lost
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
