"""pindle_sync set up once against Radicale, then run with no options: the password in a real
gnome-keyring-daemon in a D-Bus session of the test's own, the settings file and its mistakes.
Usage: settings_test.py PINDLE_SYNC"""

import os
import pty
import shutil
import subprocess
import sys
import tempfile
import termios
import unittest

import sync_fixture as fx


def start_keyring():
    """An unlocked keyring in a home and D-Bus session of its own, the person's never touched."""
    if "PINDLE_TEST_KEYRING_HOME" not in os.environ:
        home = tempfile.mkdtemp(prefix="keyring-home.")
        runtime = os.path.join(home, "run")
        os.mkdir(runtime, 0o700)
        env = {k: v for k, v in os.environ.items() if not k.startswith(("XDG_", "DBUS_"))}
        env.update(HOME=home, XDG_RUNTIME_DIR=runtime, PINDLE_TEST_KEYRING_HOME=home)
        status = subprocess.run(["dbus-run-session", "--", sys.executable, *sys.argv],
                                env=env).returncode
        shutil.rmtree(home, ignore_errors=True)
        sys.exit(status)
    result = subprocess.run(["gnome-keyring-daemon", "--unlock", "--components=secrets"],
                            input=b"test keyring", stdout=subprocess.PIPE,
                            stderr=subprocess.DEVNULL, timeout=30)
    for line in result.stdout.decode().splitlines():
        name, _, value = line.partition("=")
        os.environ[name] = value


class Settings(fx.ServerCase, unittest.TestCase):
    def setUp(self):
        super().setUp()
        self.home = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.home)
        self.env = {k: v for k, v in os.environ.items()
                    if k not in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "PINDLE_SYNC_PASSWORD")}
        self.env["HOME"] = self.home
        self.config = os.path.join(self.home, ".config", "pindle_sync", "config")
        self.data = os.path.join(self.home, ".local", "share", "pindle_todo")

    def run_sync(self, *args, password=None):
        env = dict(self.env, **({"PINDLE_SYNC_PASSWORD": password} if password else {}))
        return subprocess.run([fx.PROGRAM, *args], env=env, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=120)

    def lookup(self, url):
        return subprocess.run(["secret-tool", "lookup", "url", url, "user", fx.USER],
                              stdout=subprocess.PIPE, timeout=30).stdout.decode()

    def test_set_up_once_then_sync_with_no_options(self):
        self.device.save_todo(fx.vtodo("phone", "From the phone", DUE="20300301"))
        pid, terminal = pty.fork()
        if pid == 0:
            os.execve(fx.PROGRAM, [fx.PROGRAM, "--setup", "--url", self.url, "--user", fx.USER],
                      self.env)
        shown = fx.read_terminal(terminal, until=b"Password for")
        os.write(terminal, fx.PASSWORD.encode() + b"\n")
        shown += fx.read_terminal(terminal)
        self.assertEqual(os.waitpid(pid, 0)[1], 0, shown)
        self.assertNotIn(fx.PASSWORD.encode(), shown, "the password typed was shown")
        self.assertTrue(termios.tcgetattr(terminal)[3] & termios.ECHO, "echo was left off")
        self.assertIn(b"set up for alice", shown)
        self.assertEqual(self.lookup(self.url), fx.PASSWORD)
        self.assertEqual([os.stat(p).st_mode & 0o777 for p in
                          (self.config, os.path.dirname(self.config), self.data)],
                         [0o600, 0o700, 0o700])
        result = self.run_sync()
        self.assertEqual(result.returncode, 0, result.stderr)
        todos = fx.records.read_todos(os.path.join(self.data, "pindle_todo.db"))
        self.assertEqual([t.description for t in todos], [b"From the phone"])
        # The command line wins over the settings: another folder, a password file.
        other = self.folder([fx.todo(b"Other")])
        fx.private_file(other.password_file, "not it\n")
        result = self.run_sync("--dir", other.path, "--password-file", other.password_file)
        self.assertEqual(result.returncode, 1)
        self.assertIn(b"401", result.stderr)
        self.assertEqual(self.run_sync("--dir", other.path).returncode, 0)
        self.assertEqual(sorted(fx.by_summary(self.device)), ["From the phone", "Other"])

    def test_a_set_up_that_fails_writes_nothing(self):
        good, empty, short = (os.path.join(self.home, n) for n in ("password", "empty", "x"))
        fx.private_file(good, fx.PASSWORD + "\n")
        fx.private_file(empty, "")
        fx.private_file(short, "x")  # one letter, sent as it is, and refused
        open(os.path.join(self.home, ".config"), "w").close()  # where the settings' folder goes
        for url, extra, password, reason in (
                (self.url, [], "not it", "refused the user name or password (401)"),
                (self.url + "nowhere/", [], fx.PASSWORD, "no collection at that URL"),
                (self.url, ["--password-file", "/no/such/file"], None,
                 "cannot read password file"),
                (self.url, ["--password-file", empty], None,
                 f"password file {empty} holds no password on its first line"),
                (self.url, ["--password-file", short], None, "(401)"),
                (self.url, ["--password-file", good], None,
                 "cannot make folder %s/.config/pindle_sync: Not a directory" % self.home)):
            with self.subTest(reason=reason):
                result = self.run_sync("--setup", "--url", url, "--user", fx.USER, *extra,
                                       password=password)
                self.assertEqual(result.returncode, 1)
                self.assertIn(reason, result.stderr.decode())
                self.assertFalse(os.path.exists(self.config))
                self.assertEqual(self.lookup(url), "")

    def test_a_password_file_the_environment_or_one_stored_with_secret_tool(self):
        password_file = os.path.join(self.home, "pw")
        fx.private_file(password_file, fx.PASSWORD + "\n")
        result = self.run_sync("--setup", "--url", self.url, "--user", fx.USER,
                               "--password-file", password_file)
        self.assertEqual(result.returncode, 0, result.stderr)
        with open(self.config) as f:
            self.assertIn(f"password = 'file:{password_file}'", f.read())
        self.assertEqual(self.lookup(self.url), "")
        self.assertEqual(self.run_sync().returncode, 0)
        fx.private_file(self.config, f'url = "{self.url}"\nuser = "{fx.USER}"\n'
                        'password = "environment"\nfolder = "~/elsewhere"\n')
        os.mkdir(os.path.join(self.home, "elsewhere"))
        self.assertEqual(self.run_sync(password=fx.PASSWORD).returncode, 0)
        self.assertTrue(os.path.isfile(os.path.join(self.home, "elsewhere", ".pindle_sync.json")))
        fx.private_file(self.config, f'url = "{self.url}"\nuser = "{fx.USER}"\n'
                        'password = "keyring"\n')
        self.assertIn(b"the keyring holds no password", self.run_sync().stderr)
        subprocess.run(["secret-tool", "store", "--label", "by hand", "url", self.url, "user",
                        fx.USER], input=fx.PASSWORD.encode(), check=True, timeout=30)
        self.assertEqual(self.run_sync().returncode, 0)

    def test_mistakes_in_the_settings_name_their_line(self):
        os.makedirs(os.path.dirname(self.config))
        cases = [
            ("", "not set up yet: run pindle_sync --setup"),
            ('url = "https://dav.example.com/t/"\nuser = alice\n',
             "line 2, column 8: Error while parsing value"),
            ('url = "https://dav.example.com/t/"\nusr = "alice"\n',
             "line 2: unknown setting 'usr' (the settings are url, user, password, folder"),
            ('user = "alice"\nurl = "ftp://dav.example.com/t/"\n',
             "line 2: the URL must start with https://"),
            ('url = "https://dav.example.com/t/"\n', "give the user name with --user, or user"),
            ('url = "https://x/"\nuser = "a"\npassword = "file:"\n',
             'line 3: password must be "keyring", "environment", "netrc" or "file:PATH"'),
            ('url = "https://x/"\nuser = "a"\nallow_http = "yes"\n',
             "line 3: allow_http must be true or false"),
            ('password = "file:x"\nurl = 5\nuser = "a"\n', "line 2: url must be text in quotes"),
        ]
        for text, reason in cases:
            with self.subTest(text=text):
                if text:
                    fx.private_file(self.config, text)
                result = self.run_sync()
                self.assertEqual(result.returncode, 2)
                lines = result.stderr.decode().splitlines()
                self.assertIn(reason, lines[0])
                # A URL the sync refuses is no misuse of the command line.
                hint = [] if "URL" in reason else ["Try 'pindle_sync --help'."]
                self.assertEqual(lines[1:], hint)


if __name__ == "__main__":
    start_keyring()
    fx.take_program()
    unittest.main()
