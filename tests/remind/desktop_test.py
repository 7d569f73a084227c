"""pindle_remind against a real notification daemon: dunst on an Xvfb display and a D-Bus
session bus of the test's own, read back with dunstctl; "Open" starting the window, found on
that display by its title; a session without the service; a folder without its files.
Usage: desktop_test.py PINDLE_REMIND (with pindle_todo beside it)"""

import datetime
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from records import write_files  # noqa: E402

PROGRAM = None
# A bus that starts no service on demand: the test decides whether a daemon is there.
BUS_CONFIG = """<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/>
<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>"""
# Notifications stay until closed, so that each test decides when one goes into the history;
# bodies are read as markup, as dunst's own default settings read them.
DUNSTRC = "[global]\n  font = Monospace 10\n  markup = full\n[urgency_normal]\n  timeout = 0\n"


def listed(offset):
    """Today moved by `offset` days, as the list shows a date."""
    d = datetime.date.today() + datetime.timedelta(days=offset)
    return f"{d.month}/{d.day}/{d.year}"


def todo(description, offset, priority=0, completed=0):
    return (*map(int, listed(offset).split("/")), priority, completed, "Work", description,
            "notes, never shown")


TODOS = [todo("Pay rent", -3), todo("Call Tom & <Jerry>", 0, 2), todo("Later", 1),
         todo("Done", -1, completed=1)]


def poll(check, seconds=10):
    deadline = time.monotonic() + seconds
    while not check():
        if time.monotonic() > deadline:
            raise AssertionError(f"still not so after {seconds} s: {check.__doc__}")
        time.sleep(0.1)


def started(command, env):
    """A daemon that writes a line on the descriptor FD once it takes clients; that line."""
    read_end, write_end = os.pipe()
    process = subprocess.Popen([c.replace("FD", str(write_end)) for c in command], env=env,
                               pass_fds=(write_end,), stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as f:
        return process, f.readline().strip()


class Remind(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.dir = tempfile.TemporaryDirectory()
        config = pathlib.Path(cls.dir.name, "bus.conf")
        config.write_text(BUS_CONFIG)
        pathlib.Path(cls.dir.name, "dunstrc").write_text(DUNSTRC)
        cls.env = {k: v for k, v in os.environ.items()
                   if not k.startswith(("DBUS_", "XDG_RUNTIME")) and k != "XAUTHORITY"}
        cls.xvfb, display = started(["Xvfb", "-displayfd", "FD", "-screen", "0", "800x600x24",
                                     "-nolisten", "tcp", "-noreset"], cls.env)
        cls.bus, address = started(["dbus-daemon", "--config-file", str(config), "--nofork",
                                    "--print-address=FD"], cls.env)
        cls.env.update(DISPLAY=":" + display, DBUS_SESSION_BUS_ADDRESS=address)

    @classmethod
    def tearDownClass(cls):
        for process in (cls.bus, cls.xvfb):
            process.terminate()
            process.wait()
        cls.dir.cleanup()

    def setUp(self):
        self.dunst = subprocess.Popen(["dunst", "-conf", os.path.join(self.dir.name, "dunstrc")],
                                      env=self.env, stderr=subprocess.DEVNULL)
        self.addCleanup(self.stop_dunst)

        def answers():
            """dunst answers on the bus"""
            return self.ctl("count", "displayed") == "0"
        poll(answers)
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.state = pathlib.Path(self.folder, ".pindle_remind.json")
        write_files(self.folder, TODOS, ["Unassigned", "Work"])

    def stop_dunst(self):
        self.dunst.terminate()
        self.dunst.wait()

    def ctl(self, *args):
        return subprocess.run(["dunstctl", *args], env=self.env, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True).stdout.strip()

    def history(self):
        """Each notification closed so far, newest first: (summary, body, action, app)."""
        entries = json.loads(self.ctl("history"))["data"][0]
        return [tuple(e[k]["data"] for k in ("summary", "body", "default_action_name", "appname"))
                for e in entries]

    def announced(self):
        """What the last run showed, once it is closed: its summary and body lines."""
        self.ctl("close-all")
        summary, body, action, app = self.history()[0]
        self.assertEqual((action, app), ("default", "Pindle ToDo"))
        return [summary, *body.split("\n")]

    def remind(self, *args, env=None):
        return subprocess.run([PROGRAM, "--dir", self.folder, "--wait", "0", *args],
                              env=env or self.env, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, timeout=60)

    def start(self, wait):
        """A run that waits for the answer, once its notification is shown. What it says goes
        to a file: the window it may start keeps its stderr open."""
        said = tempfile.TemporaryFile()
        self.addCleanup(said.close)
        process = subprocess.Popen([PROGRAM, "--dir", self.folder, "--wait", wait],
                                   env=self.env, stderr=said)
        process.said = said
        self.addCleanup(process.kill)

        def shown():
            """the notification is shown"""
            return self.ctl("count", "displayed") == "1"
        poll(shown)
        return process

    def test_announces_what_is_due_once_a_day_and_what_became_due_since(self):
        before = {p.name: p.read_bytes() for p in pathlib.Path(self.folder).iterdir()}
        result = self.remind()
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        # dunst reads the body as markup, so the to-do's own text comes escaped.
        self.assertEqual(self.announced(), ["1 to-do due today, 1 overdue",
                                            f"Pay rent (due {listed(-3)})",
                                            "Call Tom &amp; &lt;Jerry&gt;"])
        self.assertEqual(self.state.stat().st_mode & 0o777, 0o600)
        after = {p.name: p.read_bytes() for p in pathlib.Path(self.folder).iterdir()}
        self.assertEqual(after, dict(before, **{self.state.name: self.state.read_bytes()}))

        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual((self.ctl("count", "displayed"), len(self.history())), ("0", 1))

        write_files(self.folder, TODOS + [todo("Now", 0, 1)], None)
        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual(self.announced(), ["1 to-do due today", "Now"])

        # The day kept is yesterday's, as on the morning after: everything due is news again.
        self.state.write_text(json.dumps(dict(json.loads(self.state.read_text()), day=listed(-1))))
        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual(self.announced(), ["2 to-dos due today, 1 overdue",
                                            f"Pay rent (due {listed(-3)})", "Now",
                                            "Call Tom &amp; &lt;Jerry&gt;"])

    def test_open_starts_the_window_on_the_folder_beside_which_it_runs_again(self):
        process = self.start("60")
        self.ctl("action", "0")
        self.assertEqual(process.wait(timeout=10), 0)
        process.said.seek(0)
        self.assertEqual(process.said.read(), b"")
        pid = []

        def found():
            """the window "To Do List" is shown"""
            pid[:] = subprocess.run(["xdotool", "search", "--onlyvisible", "--name",
                                     "^To Do List$", "getwindowpid"], env=self.env,
                                    stdout=subprocess.PIPE, text=True).stdout.split()
            return pid
        poll(found, seconds=30)
        self.addCleanup(os.kill, int(pid[0]), 9)
        self.assertEqual(os.readlink(f"/proc/{pid[0]}/cwd"), os.path.realpath(self.folder))
        # Taken away once answered, and in the history as it was shown.
        self.assertEqual(self.ctl("count", "displayed"), "0")
        self.assertEqual(self.history()[0][0], "1 to-do due today, 1 overdue")

        write_files(self.folder, TODOS + [todo("Beside the window", -1)], None)
        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual(self.announced(), ["1 to-do overdue",
                                            f"Beside the window (due {listed(-1)})"])

    def test_the_wait_ends_when_the_notification_closes_or_at_its_bound(self):
        process = self.start("60")
        self.ctl("close")
        self.assertEqual(process.wait(timeout=10), 0)

        self.state.unlink()
        start = time.monotonic()
        self.assertEqual(self.start("1").wait(timeout=10), 0)
        self.assertTrue(1 <= time.monotonic() - start < 8)
        self.assertEqual(self.ctl("count", "displayed"), "1")

    def test_without_a_notification_service_or_data_files_it_says_so_and_writes_nothing(self):
        self.stop_dunst()
        no_bus = {k: v for k, v in self.env.items()
                  if k not in ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY")}
        no_bus["XDG_RUNTIME_DIR"] = self.folder
        cases = [(self.env, [], 3, "no notification service (org.freedesktop.Notifications) on "
                                   "the session bus: "),
                 (no_bus, [], 3, "no session bus: "),
                 (self.env, ["--dir", self.dir.name], 1,
                  f"cannot read {self.dir.name}/pindle_todo.db: No such file or directory\n")]
        for env, args, status, reason in cases:
            result = self.remind(*args, env=env)
            self.assertEqual(result.returncode, status, result.stderr)
            self.assertTrue(result.stderr.startswith("pindle_remind: " + reason), result.stderr)
            self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
            self.assertFalse(self.state.exists())


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
