"""pindle_export on fixture files written from the record layout: its output against the reviewed
golden files in tests/export/golden, and the command line's help, mistakes and exit statuses.
Usage: export_test.py PINDLE_EXPORT; with PINDLE_UPDATE_GOLDEN=1 the golden files are rewritten."""

import hashlib
import os
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from records import Todo, write_files  # noqa: E402

PROGRAM = None
GOLDEN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "golden")
STAMP = 1136073600  # 2006-01-01T00:00:00Z, a fixed DTSTAMP

# Every kind of text the writers escape, guard, fold or read as Latin-1, dates that are not
# real, and priorities no dialog stores.
TODOS = [
    Todo(12, 31, 2005, 0, 0, b"Work", b"Ship it", b"line 1\nline 2"),
    Todo(2, 29, 2008, 8, 1, b"Home, garden", b'Say "hi"; then, go', b"a\\b;c,d\r\ne"),
    Todo(1, 1, 2024, 4, 7, b"=cmd|' /C calc'!A0", b"+1+1", b"-minus\n@at"),
    Todo(6, 15, 2010, 2, 0, b"Caf\xe9", b"na\xefve \xe2\x82 \xed\xa0\x80 ok \xc3\xa9",
         b"\xff\xfe valid: \xe2\x82\xac \xf0\x9f\x98\x80"),
    Todo(3, 1, 2011, 1, 0, b"C" * 50, b"D" * 50, b"notes after a full description"),
    Todo(13, 0, 2020, -5, 0, b"", b"bad date, low priority", b""),
    Todo(2, 29, 2009, 2**31 - 1, 1, b"Work", b"Long notes",
         ("caf\u00e9 \u20ac\U0001F600 " * 30).encode() + b"\x01bell\t\b\f"),
    Todo(0, 0, 0, 0, 0, b"", b"", b""),
]
CATEGORIES = [b"Unassigned", b"Work", b"Home, garden", b"Caf\xe9", b"N" * 51]


def run(args, cwd=None, stamp=STAMP):
    env = dict(os.environ, SOURCE_DATE_EPOCH=str(stamp))
    return subprocess.run([PROGRAM] + args, cwd=cwd, env=env, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE)


def digest(folder):
    return {name: (hashlib.sha256(open(os.path.join(folder, name), "rb").read()).hexdigest(),
                   os.stat(os.path.join(folder, name)).st_mtime_ns)
            for name in os.listdir(folder)}


class Export(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.folder = self.dir.name
        write_files(self.folder, TODOS, CATEGORIES)

    def tearDown(self):
        self.dir.cleanup()

    def test_output_matches_the_golden_files_and_leaves_the_data_alone(self):
        before = digest(self.folder)
        for fmt in ("csv", "ics", "json"):
            result = run(["--format", fmt], cwd=self.folder)
            self.assertEqual((result.returncode, result.stderr), (0, b""), fmt)
            path = os.path.join(GOLDEN, "fixture." + fmt)
            if os.environ.get("PINDLE_UPDATE_GOLDEN"):
                open(path, "wb").write(result.stdout)
            self.assertEqual(result.stdout, open(path, "rb").read(), fmt)
        self.assertEqual(digest(self.folder), before)

    def test_options_and_mistakes(self):
        """Either spelling of an option, the last format given, help before anything; each
        mistake of its own with its status and one-line reason (the parser's are CommandLine's)."""
        folder = self.folder
        cases = [(["--format=ics", "--dir=" + folder], 0, ""),
                 (["--format", "csv", "--format", "json", "--dir", folder], 0, ""),
                 (["--format", "xml", "-h", "stray"], 0, ""),
                 ([], 2, "choose a format with --format csv, --format ics or --format json"),
                 (["--format", "xml"], 2, "unknown format 'xml' (use csv, ics or json)"),
                 (["--form", "csv", "--dir="], 2, "option --dir needs a folder")]
        for args, status, reason in cases:
            result = run(args)
            self.assertEqual(result.returncode, status, args)
            if reason:
                self.assertEqual(result.stderr.decode(), f"pindle_export: {reason}\n"
                                 "Try 'pindle_export --help'.\n")
                self.assertEqual(result.stdout, b"", args)
        self.assertTrue(run(cases[1][0]).stdout.startswith(b"{"))
        result = run(["--help"])
        with open(os.path.join(GOLDEN, "help.txt"), "rb") as f:
            self.assertEqual((result.returncode, result.stdout, result.stderr), (0, f.read(), b""))
        self.assertEqual(run(["--format", "ics"], cwd=folder, stamp="soon").returncode, 2)
        self.assertEqual(run(["--format", "csv"], cwd=folder, stamp="soon").returncode, 0)

    def test_a_missing_folder_or_file_is_named(self):
        nowhere = os.path.join(self.folder, "nowhere")
        result = run(["--format", "csv", "--dir", nowhere])
        self.assertEqual((result.returncode, result.stdout), (1, b""))
        self.assertTrue(result.stderr.startswith(b"pindle_export: cannot enter folder "))
        for name in ("pindle_todo.db", "cat.db"):
            os.rename(os.path.join(self.folder, name), os.path.join(self.folder, "moved"))
            result = run(["--format", "json", "--dir", self.folder])
            os.rename(os.path.join(self.folder, "moved"), os.path.join(self.folder, name))
            self.assertEqual((result.returncode, result.stdout), (1, b""), name)
            self.assertEqual(result.stderr.decode(), "pindle_export: cannot read %s/%s: "
                             "No such file or directory\n" % (self.folder, name))


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
