"""Reads and writes the two data files byte by byte for the end-to-end tests, independently of
the program: writes the files a test starts from, prints the records, and compares them with
the state a test expects."""
import datetime
import os
import struct
import sys
import time

TODO_SIZE, CAT_SIZE = 32124, 56
TEXT_FIELDS = ((17, 50), (67, 50), (117, 32000))


def text(field):
    """The string up to its terminator; the bytes after it must all be zero."""
    end = field.find(b"\0")
    if end < 0:
        return field.decode("latin-1")
    assert field[end:] == bytes(len(field) - end), "bytes after the terminator"
    return field[:end].decode("latin-1")


def link_ok(link, last):
    return link == 0 if last else link != 0


def read_todos(path):
    data = open(path, "rb").read()
    assert len(data) % TODO_SIZE == 0, f"pindle_todo.db is {len(data)} bytes"
    count = len(data) // TODO_SIZE
    todos = []
    for i in range(count):
        r = data[i * TODO_SIZE:(i + 1) * TODO_SIZE]
        month, day, year, priority, completed = struct.unpack(">iiiiB", r[:17])
        strings = [text(r[at:at + size]) for at, size in TEXT_FIELDS]
        assert r[32117:32120] == bytes(3), f"to-do {i}: padding"
        assert link_ok(struct.unpack(">I", r[32120:])[0], i == count - 1), f"to-do {i}: link"
        todos.append("|".join(map(str, [month, day, year, priority, completed] + strings)))
    return todos


def read_categories(path):
    data = open(path, "rb").read()
    assert len(data) % CAT_SIZE == 0, f"cat.db is {len(data)} bytes"
    count = len(data) // CAT_SIZE
    names = []
    for i in range(count):
        r = data[i * CAT_SIZE:(i + 1) * CAT_SIZE]
        assert link_ok(struct.unpack(">I", r[52:])[0], i == count - 1), f"category {i}: link"
        names.append(text(r[:52]))
    return names


def expected_lines(model):
    """Model lines are "month|day|year|priority|completed|category|description|notes";
    TODAY stands for today's month|day|year."""
    t = time.localtime()
    today = f"{t.tm_mon}|{t.tm_mday}|{t.tm_year}"
    return [line.replace("TODAY", today) for line in model.split("\n") if line]


def state(folder, name, reader):
    path = os.path.join(folder, name)
    return reader(path) if os.path.exists(path) else None


def check(folder, todo_model, category_model):
    """A model of "-" means the file must not exist."""
    problems = []
    for name, reader, model in (("pindle_todo.db", read_todos, todo_model),
                                ("cat.db", read_categories, category_model)):
        try:
            found = state(folder, name, reader)
        except AssertionError as e:
            problems.append(f"{name}: {e}")
            continue
        wanted = None if model == "-" else expected_lines(model)
        if found != wanted:
            problems.append(f"{name}: expected {wanted}, found {found}")
    return problems


def write_todo(path, description):
    t = time.localtime()
    record = struct.pack(">iiiiB", t.tm_mon, t.tm_mday, t.tm_year, 0, 0)
    record += b"Unassigned".ljust(50, b"\0") + description.encode().ljust(50, b"\0")
    record += bytes(32000 + 3 + 4)
    open(path, "wb").write(record)


def todo(month, day, year, priority, done, category, description, notes=""):
    record = struct.pack(">iiiiB", month, day, year, priority, done)
    record += category.encode().ljust(50, b"\0") + description.encode().ljust(50, b"\0")
    return record + notes.encode().ljust(32000, b"\0") + b"\0" * 7


def write(folder, todos, names):
    with open(folder + "/pindle_todo.db", "wb") as f:
        f.write(b"".join(todos))
    with open(folder + "/cat.db", "wb") as f:
        f.write(b"".join(n.encode().ljust(52, b"\0") + b"\0\0\0\1" for n in names))


def make_small(folder):
    """Four to-dos in date order, the second completed, and a category no to-do uses."""
    todos = [todo(3, 1, 2030, 0, 0, "Work", "alpha"),
             todo(3, 2, 2030, 0, 1, "Home", "beta"),
             todo(3, 3, 2030, 0, 0, "Home", "gamma"),
             todo(3, 4, 2030, 0, 0, "Work", "delta")]
    write(folder, todos, ["Unassigned", "Work", "Home", "Spare"])


def make_long(folder):
    """More open to-dos than the list shows at its first size, "item 01" first."""
    start = datetime.date(2030, 1, 1)
    todos = []
    for i in range(40):
        d = start + datetime.timedelta(days=i)
        todos.append(todo(d.month, d.day, d.year, 0, 0, "Unassigned", "item %02d" % (i + 1)))
    write(folder, todos, ["Unassigned"])


def show_todos(path):
    """One line per to-do: "M/D/YYYY priority completed category|description|notes"."""
    for line in read_todos(path):
        month, day, year, priority, completed, rest = line.split("|", 5)
        print(f"{month}/{day}/{year} {priority} {completed} {rest}")


def show_categories(path):
    for name in read_categories(path):
        print(name)


def main(argv):
    makers = {"small": make_small, "long": make_long}
    if argv[1] in makers:
        makers[argv[1]](argv[2])
        return 0
    if argv[1] == "todos":
        show_todos(argv[2])
        return 0
    if argv[1] == "categories":
        show_categories(argv[2])
        return 0
    if argv[1] == "check":
        problems = check(argv[2], argv[3], argv[4])
        for p in problems:
            print(p, file=sys.stderr)
        return 1 if problems else 0
    if argv[1] == "write-todo":
        write_todo(argv[2], argv[3])
        return 0
    print(f"unknown command {argv[1]}", file=sys.stderr)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv))
