"""pindle_remind against a real notification daemon: dunst on an Xvfb display and a D-Bus
session bus of the test's own, read back with dunstctl; "Open" starting the window, found on
that display by its title; a session without the service; the folder's mistakes.
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
TODAY = datetime.date.today()


def day(offset):
    d = TODAY + datetime.timedelta(days=offset)
    return d.month, d.day, d.year


def listed(offset):
    return "%d/%d/%d" % day(offset)


def todo(description, offset, priority=0, completed=0):
    return (*day(offset), priority, completed, "Work", description, "notes, never shown")


def poll(check, seconds=10):
    deadline = time.monotonic() + seconds
    while not check():
        if time.monotonic() > deadline:
            raise AssertionError(f"still not so after {seconds} s: {check.__doc__}")
        time.sleep(0.1)


def started(command, env):
    """A daemon that writes one line on the pipe `ready` once it takes clients; that line."""
    read_end, write_end = os.pipe()
    process = subprocess.Popen([c.replace("FD", str(write_end)) for c in command], env=env,
                               pass_fds=(write_end,), stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as f:
        return process, f.readline().strip()


class Session:
    """An Xvfb display and a session bus of their own, and dunst on them when asked."""

    def __init__(self):
        self.dir = tempfile.TemporaryDirectory()
        config = os.path.join(self.dir.name, "bus.conf")
        pathlib.Path(config).write_text(BUS_CONFIG)
        pathlib.Path(self.dir.name, "dunstrc").write_text(DUNSTRC)
        self.env = {k: v for k, v in os.environ.items()
                    if not k.startswith(("DBUS_", "XDG_RUNTIME")) and k != "XAUTHORITY"}
        self.xvfb, display = started(["Xvfb", "-displayfd", "FD", "-screen", "0", "800x600x24",
                                      "-nolisten", "tcp", "-noreset"], self.env)
        self.bus, address = started(["dbus-daemon", "--config-file", config, "--nofork",
                                     "--print-address=FD"], self.env)
        self.env.update(DISPLAY=":" + display, DBUS_SESSION_BUS_ADDRESS=address)
        self.dunst = None

    def start_dunst(self):
        self.dunst = subprocess.Popen(["dunst", "-conf", os.path.join(self.dir.name, "dunstrc")],
                                      env=self.env, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL)

        def answers():
            """dunst answers on the bus"""
            return self.ctl("count", "displayed", check=False) == "0"
        poll(answers)

    def stop_dunst(self):
        self.dunst.terminate()
        self.dunst.wait()

    def ctl(self, *args, check=True):
        result = subprocess.run(["dunstctl", *args], env=self.env, stdout=subprocess.PIPE,
                                stderr=subprocess.DEVNULL, text=True)
        if check and result.returncode != 0:
            raise AssertionError(f"dunstctl {args} failed")
        return result.stdout.strip()

    def history(self):
        """Each notification closed so far, newest first: (summary, body, action, app)."""
        entries = json.loads(self.ctl("history"))["data"][0]
        return [tuple(e[k]["data"] for k in ("summary", "body", "default_action_name", "appname"))
                for e in entries]

    def close(self):
        for process in (self.bus, self.xvfb):
            process.terminate()
            process.wait()
        self.dir.cleanup()


class Folder:
    def __init__(self, todos):
        self.dir = tempfile.TemporaryDirectory()
        self.path = self.dir.name
        self.write(todos)

    def write(self, todos):
        write_files(self.path, todos, ["Unassigned", "Work"])

    def files(self):
        return {p.name: p.read_bytes() for p in pathlib.Path(self.path).iterdir()}

    def state(self):
        return os.path.join(self.path, ".pindle_remind.json")


class Remind(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.session = Session()

    @classmethod
    def tearDownClass(cls):
        cls.session.close()

    def setUp(self):
        self.session.start_dunst()
        self.addCleanup(self.session.stop_dunst)
        self.folder = Folder([todo("Pay rent", -3), todo("Call Tom & <Jerry>", 0, 2),
                              todo("Later", 1), todo("Done", -1, completed=1)])
        self.addCleanup(self.folder.dir.cleanup)

    def remind(self, *args, env=None):
        return subprocess.run([PROGRAM, "--dir", self.folder.path, "--wait", "0", *args],
                              env=env or self.session.env, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, timeout=60)

    def start(self, *args):
        """A run that waits for the answer; what it says goes to a file, since the window it
        may start keeps its stderr open."""
        said = tempfile.TemporaryFile()
        self.addCleanup(said.close)
        process = subprocess.Popen([PROGRAM, "--dir", self.folder.path, *args],
                                   env=self.session.env, stderr=said)
        process.said = said
        self.addCleanup(process.kill)

        def shown():
            """the notification is shown"""
            return self.session.ctl("count", "displayed") == "1"
        poll(shown)
        return process

    def announced(self):
        """What the last run showed, once it is closed: its summary and body lines."""
        self.session.ctl("close-all")
        summary, body, action, app = self.session.history()[0]
        self.assertEqual((action, app), ("default", "Pindle ToDo"))
        return [summary, *body.split("\n")]

    def test_announces_what_is_due_once_a_day_and_what_became_due_since(self):
        before = self.folder.files()
        result = self.remind()
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        # dunst reads the body as markup, so the to-do's own text comes escaped.
        self.assertEqual(self.announced(), ["1 to-do due today, 1 overdue",
                                            f"Pay rent (due {listed(-3)})",
                                            "Call Tom &amp; &lt;Jerry&gt;"])
        self.assertEqual(os.stat(self.folder.state()).st_mode & 0o777, 0o600)
        after = self.folder.files()
        del after[".pindle_remind.json"]
        self.assertEqual(after, before)

        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual(self.session.ctl("count", "displayed"), "0")
        self.assertEqual(len(self.session.history()), 1)

        self.folder.write([todo("Pay rent", -3), todo("Call Tom & <Jerry>", 0, 2),
                           todo("Later", 1), todo("Done", -1, completed=1), todo("Now", 0, 1)])
        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual(self.announced(), ["1 to-do due today", "Now"])

        # The day kept is yesterday's, as on the morning after: everything due is news again.
        state = pathlib.Path(self.folder.state())
        state.write_text(json.dumps(dict(json.loads(state.read_text()), day=listed(-1))))
        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual(self.announced(), ["2 to-dos due today, 1 overdue",
                                            f"Pay rent (due {listed(-3)})", "Now",
                                            "Call Tom &amp; &lt;Jerry&gt;"])

    def test_open_starts_the_window_on_the_folder_beside_which_it_runs_again(self):
        process = self.start("--wait", "60")
        self.session.ctl("action", "0")
        self.assertEqual(process.wait(timeout=10), 0)
        process.said.seek(0)
        self.assertEqual(process.said.read(), b"")
        window = []

        def found():
            """the window "To Do List" is shown"""
            window[:] = subprocess.run(["xdotool", "search", "--onlyvisible", "--name",
                                        "^To Do List$", "getwindowpid"], env=self.session.env,
                                       stdout=subprocess.PIPE, text=True).stdout.split()
            return window
        poll(found, seconds=30)
        pid = int(window[0])
        self.addCleanup(os.kill, pid, 9)
        self.assertEqual(os.readlink(f"/proc/{pid}/cwd"), os.path.realpath(self.folder.path))
        # Taken away once answered, and in the history as it was shown.
        self.assertEqual(self.session.ctl("count", "displayed"), "0")
        self.assertEqual(self.session.history()[0][0], "1 to-do due today, 1 overdue")

        self.folder.write([todo("Pay rent", -3), todo("Beside the window", -1)])
        self.assertEqual(self.remind().returncode, 0)
        self.assertEqual(self.announced(), ["1 to-do overdue",
                                            f"Beside the window (due {listed(-1)})"])

    def test_the_wait_ends_when_the_notification_closes_or_at_its_bound(self):
        process = self.start("--wait", "60")
        self.session.ctl("close")
        self.assertEqual(process.wait(timeout=10), 0)

        os.remove(self.folder.state())
        start = time.monotonic()
        process = self.start("--wait", "1")
        self.assertEqual(process.wait(timeout=10), 0)
        self.assertLess(time.monotonic() - start, 8)
        self.assertEqual(self.session.ctl("count", "displayed"), "1")

    def test_without_a_notification_service_it_says_so_and_writes_nothing(self):
        self.session.stop_dunst()
        no_bus = {k: v for k, v in self.session.env.items()
                  if k not in ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY")}
        no_bus["XDG_RUNTIME_DIR"] = self.folder.path
        cases = [(self.session.env, "pindle_remind: no notification service "
                                    "(org.freedesktop.Notifications) on the session bus: "),
                 (no_bus, "pindle_remind: no session bus: ")]
        for env, reason in cases:
            result = self.remind(env=env)
            self.assertEqual(result.returncode, 3, result.stderr)
            self.assertTrue(result.stderr.startswith(reason), result.stderr)
            self.assertEqual(result.stderr.count("\n"), 1, result.stderr)
            self.assertFalse(os.path.exists(self.folder.state()))

    def test_mistakes_in_the_folder_or_on_the_command_line(self):
        nowhere = os.path.join(self.folder.path, "nowhere")
        os.mkdir(os.path.join(self.folder.path, "sub"))
        write_files(os.path.join(self.folder.path, "sub"), [], None)
        cases = [(["--dir", nowhere], 1, f"cannot enter folder {nowhere}: No such file or "
                                         "directory"),
                 (["--dir", self.folder.path + "/sub"], 1,
                  f"cannot read {self.folder.path}/sub/cat.db: No such file or directory"),
                 (["--wait", "soon"], 2,
                  "option --wait needs a number of seconds from 0 to 86400, not 'soon'\n"
                  "Try 'pindle_remind --help'.")]
        for args, status, reason in cases:
            result = self.remind(*args)
            self.assertEqual((result.returncode, result.stderr),
                             (status, f"pindle_remind: {reason}\n"), args)
        self.assertEqual(self.session.history(), [])


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
