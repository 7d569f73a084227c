"""pindle_export as a command: its help, the mistakes it reports with their exit status, and
that it leaves the data files as they were. Usage: cli_test.py PINDLE_EXPORT"""

import hashlib
import os
import subprocess
import sys
import tempfile
import unittest

import fixtures

PROGRAM = None


def run(args, cwd=None, env=None):
    return subprocess.run([PROGRAM] + args, cwd=cwd, env=env, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE)


def digest(folder):
    out = {}
    for name in sorted(os.listdir(folder)):
        path = os.path.join(folder, name)
        with open(path, "rb") as f:
            out[name] = (hashlib.sha256(f.read()).hexdigest(), os.stat(path).st_mtime_ns)
    return out


class Cli(unittest.TestCase):
    def setUp(self):
        self.dir = tempfile.TemporaryDirectory()
        self.folder = self.dir.name
        fixtures.write_files(self.folder)

    def tearDown(self):
        self.dir.cleanup()

    def test_help(self):
        result = run(["--help"])
        self.assertEqual(result.returncode, 0)
        self.assertIn(b"Usage: pindle_export --format csv|ics|json", result.stdout)
        self.assertEqual(result.stderr, b"")

    def test_mistakes_exit_with_status_and_reason(self):
        cases = [([], 2), (["--format", "xml"], 2), (["--bogus"], 2),
                 (["--format", "csv", "--dir", os.path.join(self.folder, "nowhere")], 1)]
        for args, status in cases:
            result = run(args, cwd=self.folder)
            self.assertEqual(result.returncode, status, args)
            self.assertTrue(result.stderr.startswith(b"pindle_export: "), args)
            self.assertEqual(result.stdout, b"", args)

    def test_missing_files_are_named(self):
        for name in ("pindle_todo.db", "cat.db"):
            with self.subTest(name=name):
                os.rename(os.path.join(self.folder, name), os.path.join(self.folder, "moved"))
                result = run(["--format", "json", "--dir", self.folder])
                os.rename(os.path.join(self.folder, "moved"), os.path.join(self.folder, name))
                self.assertEqual(result.returncode, 1)
                self.assertEqual(result.stderr.decode(), "pindle_export: cannot read %s/%s: "
                                 "No such file or directory\n" % (self.folder, name))
                self.assertEqual(result.stdout, b"")

    def test_bad_source_date_epoch_only_matters_for_ics(self):
        env = dict(os.environ, SOURCE_DATE_EPOCH="yesterday")
        self.assertEqual(run(["--format", "ics"], cwd=self.folder, env=env).returncode, 2)
        self.assertEqual(run(["--format", "csv"], cwd=self.folder, env=env).returncode, 0)

    def test_current_folder_is_the_default_and_files_stay_untouched(self):
        before = digest(self.folder)
        for fmt in ("csv", "ics", "json"):
            result = run(["--format", fmt], cwd=self.folder)
            self.assertEqual(result.returncode, 0)
            self.assertEqual(result.stderr, b"")
            self.assertIn(b"Ship it", result.stdout)
        self.assertEqual(digest(self.folder), before)


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    unittest.main()
