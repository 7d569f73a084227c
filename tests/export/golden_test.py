"""Compares pindle_export's output for the fixture files with the reviewed golden files in
tests/export/golden. Usage: golden_test.py PINDLE_EXPORT [--update]"""

import os
import subprocess
import sys
import tempfile

import fixtures

GOLDEN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "golden")
# A fixed DTSTAMP (2006-01-01T00:00:00Z) so the iCalendar output can be compared.
STAMP = "1136073600"


def export(program, folder, fmt):
    env = dict(os.environ, SOURCE_DATE_EPOCH=STAMP)
    return subprocess.run([program, "--format", fmt, "--dir", folder], env=env, check=True,
                          stdout=subprocess.PIPE).stdout


def main():
    program, update = sys.argv[1], "--update" in sys.argv[2:]
    failures = 0
    with tempfile.TemporaryDirectory() as folder:
        fixtures.write_files(folder)
        for fmt in ("csv", "ics", "json"):
            path = os.path.join(GOLDEN, "fixture." + fmt)
            output = export(program, folder, fmt)
            if update:
                with open(path, "wb") as f:
                    f.write(output)
                continue
            with open(path, "rb") as f:
                if f.read() != output:
                    print("output differs from", path)
                    failures += 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
