#!/usr/bin/env python3
# Writes the data files the end-to-end tests start from, and prints the records of those files
# one per line so the shell scripts can compare what the program saved.
import datetime
import struct
import sys

TODO_SIZE = 32124


def todo(month, day, year, priority, done, category, description, notes=""):
    record = struct.pack(">iiiiB", month, day, year, priority, done)
    record += category.encode().ljust(50, b"\0") + description.encode().ljust(50, b"\0")
    return record + notes.encode().ljust(32000, b"\0") + b"\0" * 7


def category(name):
    return name.encode().ljust(52, b"\0") + b"\0\0\0\1"


# Four to-dos in date order, the second completed, and a category no to-do uses.
def make_small(folder):
    todos = [todo(3, 1, 2030, 0, 0, "Work", "alpha"),
             todo(3, 2, 2030, 0, 1, "Home", "beta"),
             todo(3, 3, 2030, 0, 0, "Home", "gamma"),
             todo(3, 4, 2030, 0, 0, "Work", "delta")]
    write(folder, todos, ["Unassigned", "Work", "Home", "Spare"])


# More open to-dos than the list shows at its first size, "item 01" first.
def make_long(folder):
    start = datetime.date(2030, 1, 1)
    todos = []
    for i in range(40):
        d = start + datetime.timedelta(days=i)
        todos.append(todo(d.month, d.day, d.year, 0, 0, "Unassigned", "item %02d" % (i + 1)))
    write(folder, todos, ["Unassigned"])


def write(folder, todos, names):
    with open(folder + "/pindle_todo.db", "wb") as f:
        f.write(b"".join(todos))
    with open(folder + "/cat.db", "wb") as f:
        f.write(b"".join(category(n) for n in names))


def text(field):
    return field.split(b"\0")[0].decode("latin-1")


# "M/D/YYYY priority completed category|description|notes", one line per to-do.
def show_todos(path):
    data = open(path, "rb").read()
    if len(data) % TODO_SIZE:
        sys.exit("%s: %d bytes is not a whole number of records" % (path, len(data)))
    for at in range(0, len(data), TODO_SIZE):
        r = data[at:at + TODO_SIZE]
        month, day, year, priority = struct.unpack(">iiii", r[:16])
        print("%d/%d/%d %d %d %s|%s|%s" % (month, day, year, priority, r[16], text(r[17:67]),
                                          text(r[67:117]), text(r[117:32117])))


def show_categories(path):
    data = open(path, "rb").read()
    for at in range(0, len(data), 56):
        print(text(data[at:at + 52]))


if __name__ == "__main__":
    commands = {"small": make_small, "long": make_long, "todos": show_todos,
                "categories": show_categories}
    commands[sys.argv[1]](sys.argv[2])
