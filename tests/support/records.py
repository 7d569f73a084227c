"""The two data files' record layout, written out once for every Python test and script, from
the documented format rather than the program's code: big-endian 32124-byte to-do records and
56-byte category records, each ending in a link slot that is zero only in the last record."""

import struct
from collections import namedtuple

TODO_SIZE, CATEGORY_SIZE = 32124, 56
# Offset and size of the text fields: a to-do's category, description and notes; a name.
TODO_TEXTS, NAME = ((17, 50), (67, 50), (117, 32000)), (0, 52)

# Texts are bytes as the file holds them, up to the terminator (a field without one, whole).
Todo = namedtuple("Todo", "month day year priority completed category description notes")


def _field(text, size):
    return (text.encode() if isinstance(text, str) else text)[:size].ljust(size, b"\0")


def _link(i, count):
    return struct.pack(">i", 0 if i == count - 1 else 1)


def todos_bytes(todos):
    """A whole to-do file; each to-do a Todo or a tuple in its order, texts as str or bytes."""
    out = b""
    for i, t in enumerate(map(Todo._make, todos)):
        out += struct.pack(">iiiiB", t.month, t.day, t.year, t.priority, t.completed)
        out += b"".join(_field(text, size) for text, (_, size) in
                        zip((t.category, t.description, t.notes), TODO_TEXTS))
        out += bytes(3) + _link(i, len(todos))
    return out


def categories_bytes(names):
    return b"".join(_field(n, 52) + _link(i, len(names)) for i, n in enumerate(names))


def write_files(folder, todos, names):
    """Writes pindle_todo.db and cat.db into `folder`; None leaves that file alone."""
    for name, items, encode in (("pindle_todo.db", todos, todos_bytes),
                                ("cat.db", names, categories_bytes)):
        if items is not None:
            with open(f"{folder}/{name}", "wb") as f:
                f.write(encode(items))


def _text(record, at_size):
    at, size = at_size
    field = record[at:at + size]
    end = field.find(b"\0")
    if end >= 0 and field[end:] != bytes(size - end):
        raise ValueError(f"bytes after the terminator at offset {at}")
    return field if end < 0 else field[:end]


def _records(path, size):
    with open(path, "rb") as f:
        data = f.read()
    if len(data) % size:
        raise ValueError(f"{len(data)} bytes is not a whole number of {size}-byte records")
    count = len(data) // size
    for i in range(count):
        record = data[i * size:(i + 1) * size]
        if record[-4:] != _link(i, count):
            raise ValueError(f"record {i}: link slot")
        yield record


def read_todos(path):
    """The to-dos of a file as Todo tuples; the file must be exactly as the program writes it
    (whole records, zeros after every terminator and in the padding, links right)."""
    todos = []
    for record in _records(path, TODO_SIZE):
        if record[32117:32120] != bytes(3):
            raise ValueError(f"to-do {len(todos)}: padding")
        numbers = struct.unpack(">iiiiB", record[:17])
        todos.append(Todo(*numbers, *(_text(record, f) for f in TODO_TEXTS)))
    return todos


def read_categories(path):
    return [_text(r, NAME) for r in _records(path, CATEGORY_SIZE)]
