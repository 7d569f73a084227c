"""Reads pindle_export's output back with independent parsers (the csv and json modules,
python3-icalendar) and checks every field of every fixture to-do arrives intact.
Usage: roundtrip_test.py PINDLE_EXPORT"""

import csv
import datetime
import io
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

import icalendar

import fixtures

PROGRAM = None
STAMP = 1136073600


def export(folder, fmt, stamp=STAMP):
    env = dict(os.environ, SOURCE_DATE_EPOCH=str(stamp))
    return subprocess.run([PROGRAM, "--format", fmt, "--dir", folder], env=env, check=True,
                          stdout=subprocess.PIPE).stdout


def ics_text(value):
    """iCalendar text keeps line breaks as LF and drops other control characters but tab."""
    value = value.replace("\r\n", "\n").replace("\r", "\n")
    return re.sub("[\x00-\x08\x0b-\x1f\x7f]", "", value)


def csv_cell(value):
    return "'" + value if value[:1] in ("=", "+", "-", "@", "\t", "\r") else value


class RoundTrip(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.dir = tempfile.TemporaryDirectory()
        fixtures.write_files(cls.dir.name)
        cls.expected = fixtures.expected_todos()

    @classmethod
    def tearDownClass(cls):
        cls.dir.cleanup()

    def test_csv_fields(self):
        data = export(self.dir.name, "csv")
        self.assertTrue(data.endswith(b"\r\n"))
        rows = list(csv.reader(io.StringIO(data.decode("utf-8"), newline="")))
        self.assertEqual(rows[0], ["due", "priority", "completed", "category", "description",
                                   "notes"])
        self.assertEqual(len(rows), len(self.expected) + 1)
        for row, todo in zip(rows[1:], self.expected):
            due = todo["due"].isoformat() if todo["due"] else ""
            self.assertEqual(row, [due, str(todo["priority"]), "1" if todo["completed"] else "0",
                                   csv_cell(todo["category"]), csv_cell(todo["description"]),
                                   csv_cell(todo["notes"])])

    def test_json_fields(self):
        document = json.loads(export(self.dir.name, "json").decode("utf-8"))
        todos = [dict(t, due=t["due"].isoformat() if t["due"] else None) for t in self.expected]
        self.assertEqual(document["todos"], todos)
        self.assertEqual(document["categories"], [fixtures.text(c) for c in fixtures.CATEGORIES])

    def test_ics_fields(self):
        calendar = icalendar.Calendar.from_ical(export(self.dir.name, "ics"))
        self.assertEqual(str(calendar["VERSION"]), "2.0")
        self.assertIn("PRODID", calendar)
        vtodos = calendar.walk("VTODO")
        self.assertEqual(len(vtodos), len(self.expected))
        stamp = datetime.datetime.fromtimestamp(STAMP, datetime.timezone.utc)
        for vtodo, todo in zip(vtodos, self.expected):
            self.assertEqual(vtodo.decoded("DTSTAMP"), stamp)
            self.assertEqual(str(vtodo["SUMMARY"]), ics_text(todo["description"]))
            self.assertEqual(str(vtodo.get("DESCRIPTION", "")), ics_text(todo["notes"]))
            self.assertEqual(vtodo.decoded("DUE") if "DUE" in vtodo else None, todo["due"])
            priority = todo["priority"] if 1 <= todo["priority"] <= 9 else None
            self.assertEqual(vtodo.get("PRIORITY"), priority)
            self.assertEqual(str(vtodo["STATUS"]),
                             "COMPLETED" if todo["completed"] else "NEEDS-ACTION")
            # icalendar 4 splits CATEGORIES at escaped commas as well; one category rejoins whole.
            categories = vtodo.get("CATEGORIES")
            joined = ",".join(categories.cats) if categories is not None else ""
            self.assertEqual(joined, ics_text(todo["category"]))

    def test_ics_lines(self):
        data = export(self.dir.name, "ics")
        self.assertTrue(data.endswith(b"\r\n"))
        lines = data[:-2].split(b"\r\n")
        for line in lines:
            self.assertLessEqual(len(line), 75)
            self.assertNotIn(b"\n", line)
            line.decode("utf-8")  # raises when a fold split a character
        self.assertTrue(any(line.startswith(b" ") for line in lines), "long notes are folded")

    def test_ics_uids_are_unique_and_stable(self):
        def uids(stamp):
            calendar = icalendar.Calendar.from_ical(export(self.dir.name, "ics", stamp))
            return [str(t["UID"]) for t in calendar.walk("VTODO")]

        first = uids(STAMP)
        self.assertEqual(len(set(first)), len(first))
        self.assertTrue(all(uid.endswith("@pindle_todo") for uid in first))
        self.assertEqual(uids(STAMP + 86400), first)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
