"""Fixture data files for the export tests, written byte by byte from the documented record
layout (not with the program's own code), and the values every export should carry for them."""

import codecs
import datetime
import os
import struct

INT_MAX = 2**31 - 1

# month, day, year, stored priority, completed byte, category, description, notes (raw bytes).
TODOS = [
    (12, 31, 2005, 0, 0, b"Work", b"Ship it", b"line 1\nline 2"),
    (2, 29, 2008, 8, 1, b"Home, garden", b'Say "hi"; then, go', b"a\\b;c,d\r\ne"),
    (1, 1, 2024, 4, 7, b"=cmd|' /C calc'!A0", b"+1+1", b"-minus\n@at"),
    (6, 15, 2010, 2, 0, b"Caf\xe9", b"na\xefve \xe2\x82 \xed\xa0\x80 ok \xc3\xa9",
     b"\xff\xfe valid: \xe2\x82\xac \xf0\x9f\x98\x80"),
    (3, 1, 2011, 1, 0, b"C" * 50, b"D" * 50, b"notes after a full description"),
    (13, 0, 2020, -5, 0, b"", b"bad date, low priority", b""),
    (2, 29, 2009, INT_MAX, 1, b"Work", b"Long notes",
     ("caf\u00e9 \u20ac\U0001F600 " * 30).encode() + b"\x01bell"),
    (0, 0, 0, 0, 0, b"", b"", b""),
]

CATEGORIES = [b"Unassigned", b"Work", b"Home, garden", b"Caf\xe9", b"N" * 51]


def _latin1_fallback(error):
    return error.object[error.start:error.end].decode("latin-1"), error.end


codecs.register_error("pindle-latin1", _latin1_fallback)


def text(raw):
    """What the exports should make of a field: UTF-8 where it is, Latin-1 byte by byte where not."""
    return raw.decode("utf-8", "pindle-latin1")


def field(raw, size):
    return raw[:size].ljust(size, b"\0")


def todo_bytes(month, day, year, priority, completed, category, description, notes, last):
    head = struct.pack(">iiiiB", month, day, year, priority, completed)
    body = field(category, 50) + field(description, 50) + field(notes, 32000)
    return head + body + b"\0" * 3 + struct.pack(">i", 0 if last else 1)


def write_files(folder):
    with open(os.path.join(folder, "pindle_todo.db"), "wb") as f:
        for i, todo in enumerate(TODOS):
            f.write(todo_bytes(*todo, last=i == len(TODOS) - 1))
    with open(os.path.join(folder, "cat.db"), "wb") as f:
        for i, name in enumerate(CATEGORIES):
            f.write(field(name, 52) + struct.pack(">i", 0 if i == len(CATEGORIES) - 1 else 1))


def due(month, day, year):
    try:
        return datetime.date(year, month, day)
    except ValueError:
        return None


def expected_todos():
    """Per to-do: the date (or None), shown priority, completed flag and the three texts."""
    out = []
    for month, day, year, priority, completed, category, description, notes in TODOS:
        out.append({"due": due(month, day, year), "priority": priority + 1,
                    "completed": completed != 0, "category": text(category),
                    "description": text(description), "notes": text(notes)})
    return out
