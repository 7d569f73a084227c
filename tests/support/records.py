"""The two data files' record layout, written out once for every Python test and script, from
the documented format rather than the program's code: big-endian 32124-byte to-do records and
56-byte category records, each ending in a link slot that is zero only in the last record."""

import struct
from collections import namedtuple

TODO_SIZE, CATEGORY_SIZE = 32124, 56
# Offset and size of the three text fields of a to-do record.
CATEGORY_FIELD, DESCRIPTION_FIELD, NOTES_FIELD = (17, 50), (67, 50), (117, 32000)
NAME_FIELD = (0, 52)

# Texts are bytes as the file holds them, up to the terminator (a field without one, whole).
Todo = namedtuple("Todo", "month day year priority completed category description notes")


def _raw(text):
    return text.encode() if isinstance(text, str) else text


def _field(text, size):
    return _raw(text)[:size].ljust(size, b"\0")


def _link(last):
    return struct.pack(">i", 0 if last else 1)


def todo_bytes(todo, last=True):
    """One record; `todo` is a Todo or a tuple in its order, texts as str or bytes."""
    t = Todo(*todo)
    head = struct.pack(">iiiiB", t.month, t.day, t.year, t.priority, t.completed)
    texts = (_field(t.category, 50) + _field(t.description, 50) + _field(t.notes, 32000))
    return head + texts + bytes(3) + _link(last)


def category_bytes(name, last=True):
    return _field(name, 52) + _link(last)


def todos_bytes(todos):
    return b"".join(todo_bytes(t, i == len(todos) - 1) for i, t in enumerate(todos))


def categories_bytes(names):
    return b"".join(category_bytes(n, i == len(names) - 1) for i, n in enumerate(names))


def write_files(folder, todos, names):
    """Writes pindle_todo.db and cat.db into `folder`; None leaves that file alone."""
    if todos is not None:
        with open(f"{folder}/pindle_todo.db", "wb") as f:
            f.write(todos_bytes(todos))
    if names is not None:
        with open(f"{folder}/cat.db", "wb") as f:
            f.write(categories_bytes(names))


def _text(record, at_size, strict):
    at, size = at_size
    field = record[at:at + size]
    end = field.find(b"\0")
    if end < 0:
        return field
    if strict and field[end:] != bytes(size - end):
        raise ValueError(f"bytes after the terminator at offset {at}")
    return field[:end]


def _records(data, size, strict):
    if strict and len(data) % size:
        raise ValueError(f"{len(data)} bytes is not a whole number of {size}-byte records")
    count = len(data) // size
    for i in range(count):
        record = data[i * size:(i + 1) * size]
        if strict and (struct.unpack(">i", record[-4:])[0] == 0) != (i == count - 1):
            raise ValueError(f"record {i}: link slot")
        yield record


def read_todos(path, strict=True):
    """The to-dos of a file as Todo tuples. Strict: the file must be exactly as the program
    writes it (whole records, zeros after every terminator and in the padding, links right)."""
    data = open(path, "rb").read()
    todos = []
    for record in _records(data, TODO_SIZE, strict):
        if strict and record[32117:32120] != bytes(3):
            raise ValueError(f"to-do {len(todos)}: padding")
        numbers = struct.unpack(">iiiiB", record[:17])
        texts = [_text(record, f, strict) for f in (CATEGORY_FIELD, DESCRIPTION_FIELD, NOTES_FIELD)]
        todos.append(Todo(*numbers, *texts))
    return todos


def read_categories(path, strict=True):
    data = open(path, "rb").read()
    return [_text(r, NAME_FIELD, strict) for r in _records(data, CATEGORY_SIZE, strict)]
