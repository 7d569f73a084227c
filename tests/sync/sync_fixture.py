"""What the sync tests share: CalDAV servers on free loopback ports, a caldav client as the
user's second device, data folders, pindle_sync runs, and the program's window on a folder."""

import imaplib
import json
import os
import re
import select
import socket
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
import records  # noqa: E402

import caldav  # noqa: E402
import requests  # noqa: E402

USER, PASSWORD = "alice", "correct horse"
PROGRAM = None
WINDOW_PROGRAM = None


def private_file(path, text):
    with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "w") as f:
        f.write(text)


def read_terminal(terminal, until=None):
    """What a program shows on its terminal: up to `until`, or to its end."""
    shown = b""
    while until is None or until not in shown:
        if not select.select([terminal], [], [], 60)[0]:
            raise AssertionError(f"the terminal showed {shown!r}, then nothing")
        try:
            chunk = os.read(terminal, 1024)
        except OSError:  # the program ended and its side of the terminal closed
            chunk = b""
        if not chunk:
            break
        shown += chunk
    return shown


class Server:
    """A server with a temporary store on a free loopback port, logging each request's method.
    LOSES names the round-trip cases whose text the server itself changes, with why."""

    SCHEME = "http"
    LOSES = {}
    SIGN_IN = True
    SYNC_COLLECTION = True  # RFC 6578
    certificate = None  # a certificate no system trusts, given with --ca-file

    def __init__(self):
        self.dir = tempfile.TemporaryDirectory()
        with socket.socket() as s:
            s.bind(("127.0.0.1", 0))
            self.port = s.getsockname()[1]
        self.url = f"{self.SCHEME}://127.0.0.1:{self.port}/"
        self.log_path = os.path.join(self.dir.name, "log")
        self.prepare()
        self.start()

    def prepare(self):
        pass

    def start(self):
        self.log = open(self.log_path, "a")
        self.process = subprocess.Popen(self.command(), stdout=self.log,
                                        stderr=subprocess.STDOUT)
        deadline = time.monotonic() + 30
        while self.process.poll() is None and time.monotonic() < deadline:
            try:
                socket.create_connection(("127.0.0.1", self.port), timeout=1).close()
                return
            except OSError:
                time.sleep(0.1)
        raise RuntimeError("the server did not start")

    def stop(self):
        self.process.terminate()
        self.process.wait(timeout=30)
        self.log.close()

    def close(self):
        if self.process.poll() is None:
            self.stop()
        self.dir.cleanup()

    def log_size(self):
        return os.path.getsize(self.log_path)

    def requests_since(self, offset):
        with open(self.log_path) as f:
            f.seek(offset)
            return re.findall(self.REQUEST_LINE, f.read(), re.MULTILINE)

    def new_collection(self, name):
        """A new VTODO collection, and a caldav client on it as the second device."""
        client = caldav.DAVClient(self.url, username=USER, password=PASSWORD,
                                  ssl_verify_cert=self.certificate or True)
        calendar = client.principal().make_calendar(
            name=name, cal_id=name, supported_calendar_component_set=["VTODO"])
        return str(calendar.url), calendar

    def sync_options(self):
        return ["--ca-file", self.certificate] if self.certificate else []


# Radicale as its command line starts it, less the fsync after every write (an option its own
# tests use, not settable from a config file): a thousand uploads take seconds, not minutes.
# From 3.2 on (Debian 13 has 3.5) the log level comes with whether debug logs show back traces.
RADICALE = """
import inspect, signal, socket, sys
from radicale import config, log, server
log.setup()
configuration = config.load([(sys.argv[1], False)])
configuration.update({"storage": {"_filesystem_fsync": "False"}}, "tests", privileged=True)
level = [configuration.get("logging", "level")]
if "backtrace_on_debug" in inspect.signature(log.set_level).parameters:
    level.append(configuration.get("logging", "backtrace_on_debug"))
log.set_level(*level)
stop, stop_out = socket.socketpair()
signal.signal(signal.SIGTERM, lambda *_: stop.close())
server.serve(configuration, stop_out)
"""


class Radicale(Server):
    """Radicale 3 with one htpasswd user; it stores what it is sent through vobject."""

    REQUEST_LINE = r"\] (\w+) request for "

    def prepare(self):
        with open(os.path.join(self.dir.name, "users"), "w") as f:
            f.write(f"{USER}:{PASSWORD}\n")
        self.config = os.path.join(self.dir.name, "config")
        tls = (f"ssl = True\ncertificate = {self.certificate}\nkey = {self.key}\n"
               if self.certificate else "")
        with open(self.config, "w") as f:
            # The size limit, as Cyrus's below, is past any to-do of ordinary text and short of
            # notes of line breaks alone: a refusal every version of both servers makes.
            f.write(f"[server]\nhosts = 127.0.0.1:{self.port}\nmax_content_length = 49152\n"
                    f"{tls}"
                    f"[auth]\ntype = htpasswd\nhtpasswd_filename = {self.dir.name}/users\n"
                    "htpasswd_encryption = plain\ndelay = 0\n"
                    f"[storage]\nfilesystem_folder = {self.dir.name}/store\n"
                    "[rights]\ntype = owner_only\n[logging]\nlevel = info\nmask_passwords = True\n")

    def command(self):
        return [sys.executable, "-c", RADICALE, self.config]


class RadicaleOverHttps(Radicale):
    SCHEME = "https"

    def prepare(self):
        self.certificate = os.path.join(self.dir.name, "certificate.pem")
        self.key = os.path.join(self.dir.name, "key.pem")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                        "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2", "-subj",
                        "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1",
                        "-keyout", self.key, "-out", self.certificate],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        super().prepare()


# Xandikos as its command line starts it, logging each request as it arrives (its own log
# comes after the reply, too late to tell one sync's requests from the next one's); with an
# argument "no-sync-collection" it goes without the sync-collection REPORT, which it then
# refuses as it refuses any report it lacks, as servers without RFC 6578 do. Its main became a
# coroutine that takes the arguments alone (0.2.12 in Debian 13; 0.2.8 in Debian 12).
XANDIKOS = """
import asyncio, sys
from xandikos import web
handle = web.XandikosApp.aiohttp_handler
async def logged(app, request, prefix):
    print("request", request.method, request.path, file=sys.stderr, flush=True)
    return await handle(app, request, prefix)
web.XandikosApp.aiohttp_handler = logged
if sys.argv.pop(1) == "no-sync-collection":
    register = web.XandikosApp.register_reporters
    web.XandikosApp.register_reporters = lambda app, reporters: register(
        app, [r for r in reporters if r.name != "{DAV:}sync-collection"])
if asyncio.iscoroutinefunction(web.main):
    asyncio.run(web.main(sys.argv[1:]))
else:
    web.main(sys.argv)
"""


class Xandikos(Server):
    """Xandikos, which signs nobody in (it is meant to sit behind a proxy that does)."""

    REQUEST_LINE = r"^request (\w+) "
    SIGN_IN = False
    # It keeps tasks as python-icalendar 4.0.3 reads and writes them, which splits CATEGORIES
    # at escaped commas and reads an escaped backslash before n, N or r as a line break.
    LOSES = {"category with list separators": "python-icalendar splits the category",
             "backslashes": "python-icalendar reads \\\\n as a backslash and a line break"}

    def command(self):
        report = "sync-collection" if self.SYNC_COLLECTION else "no-sync-collection"
        return [sys.executable, "-c", XANDIKOS, report, "-d",
                os.path.join(self.dir.name, "store"), "--autocreate", "-l", "127.0.0.1", "-p",
                str(self.port)]


class XandikosWithoutSyncCollection(Xandikos):
    SYNC_COLLECTION = False


class Cyrus(Server):
    """Cyrus IMAP's CalDAV server, its httpd under its master process, as hosted services run it.
    It is started as root and runs as its own user, cyrus; settings, store and users (a sasldb,
    whose realm is the server's name) are in the temporary folder. It keeps calendars only for a
    user with a mailbox, which an administrator makes over IMAP, on a socket in that folder, and
    a UID names one task among all of a user's calendars (RFC 6638 3.2.4.1). It logs to syslog
    alone: each request is read from the user's telemetry, a file per process in conf/log/USER."""

    MASTER = "/usr/lib/cyrus/bin/master"
    REQUEST_LINE = r"^<\d+<(\w+) "
    LOGS_ANONYMOUS = False  # telemetry starts once the user is signed in
    # It keeps tasks through libical 3.0, which trims the ends of a value and splits CATEGORIES
    # at escaped commas.
    LOSES = {"category with list separators": "libical splits the category",
             "line breaks: CR becomes LF": "libical trims the tab that starts the notes"}
    ADMIN = ("admin", "admin password")

    @classmethod
    def unavailable(cls):
        """Why this machine cannot start it, or None."""
        if not os.path.exists(cls.MASTER) or not os.path.exists("/usr/lib/cyrus/bin/httpd"):
            return "Cyrus IMAP's CalDAV server is not installed (cyrus-imapd, cyrus-caldav)"
        if os.geteuid() != 0:
            return "Cyrus is started as root, to run as its user cyrus; this test is not root"
        if subprocess.run(["runuser", "-u", "cyrus", "--", "test", "-x",
                           tempfile.gettempdir()]).returncode != 0:
            return (f"the user cyrus cannot reach {tempfile.gettempdir()} (a root folder closed "
                    "to other users, as in a chroot made by mktemp -d)")
        return None

    def prepare(self):
        d = self.dir.name
        self.config, self.telemetry = f"{d}/imapd.conf", f"{d}/conf/log/{USER}"
        for folder in ("conf/db", "conf/socket", self.telemetry, "spool"):
            os.makedirs(os.path.join(d, folder))
        settings = {"configdirectory": f"{d}/conf", "partition-default": f"{d}/spool",
                    "servername": "127.0.0.1", "admins": self.ADMIN[0], "allowplaintext": "yes",
                    "sasl_pwcheck_method": "auxprop", "sasl_auxprop_plugin": "sasldb",
                    "sasl_sasldb_path": f"{d}/sasldb2", "sasl_mech_list": "PLAIN",
                    "httpmodules": "caldav", "caldav_create_default": "no",
                    "caldav_create_attach": "no", "lmtpsocket": f"{d}/conf/socket/lmtp",
                    "idlesocket": f"{d}/conf/socket/idle",
                    "notifysocket": f"{d}/conf/socket/notify",
                    # Past any to-do of ordinary text, short of notes of line breaks alone.
                    "maxmessagesize": 49152}
        with open(self.config, "w") as f:
            f.writelines(f"{key}: {value}\n" for key, value in settings.items())
        with open(f"{d}/cyrus.conf", "w") as f:
            f.write(f'START {{\n recover cmd="ctl_cyrusdb -r -C {self.config}"\n}}\nSERVICES {{\n'
                    f' imap cmd="imapd -C {self.config}" listen="{d}/conf/socket/imap"\n'
                    f' http cmd="httpd -C {self.config}" listen="127.0.0.1:{self.port}"\n}}\n')
        for user, password in ((USER, PASSWORD), self.ADMIN):
            subprocess.run(["saslpasswd2", "-f", f"{d}/sasldb2", "-u", "127.0.0.1", "-p", "-c",
                            user], input=password.encode(), check=True)
        subprocess.run(["chown", "-R", "cyrus:", d], check=True)
        self.has_mailbox = False

    def command(self):
        # A process group of its own: a master that shuts down signals its whole group, and
        # would take another test's Cyrus with it.
        d = self.dir.name
        return ["setsid", self.MASTER, "-C", self.config, "-M", f"{d}/cyrus.conf", "-p",
                f"{d}/master.pid"]

    def start(self):
        super().start()
        if self.has_mailbox:
            return
        path = f"{self.dir.name}/conf/socket/imap"

        class OnSocket(imaplib.IMAP4):
            def _create_socket(self, timeout):
                s = socket.socket(socket.AF_UNIX)
                s.connect(path)
                return s

        deadline = time.monotonic() + 30
        while not os.path.exists(path) and time.monotonic() < deadline:
            time.sleep(0.1)
        imap = OnSocket()
        imap.login(*self.ADMIN)
        status, said = imap.create(f"user/{USER}")
        imap.logout()
        if status != "OK":
            raise RuntimeError(f"Cyrus made no mailbox for {USER}: {said}")
        self.has_mailbox = True

    def new_collection(self, name):
        """As Server's, but signed in from the first request: Cyrus answers an anonymous one
        405, where the caldav module waits for a 401 to sign in."""
        client = caldav.DAVClient(self.url, auth=requests.auth.HTTPBasicAuth(USER, PASSWORD))
        calendar = client.principal().make_calendar(
            name=name, cal_id=name, supported_calendar_component_set=["VTODO"])
        return str(calendar.url), calendar

    def log_size(self):
        """Where each telemetry file ends now."""
        return {name: os.path.getsize(f"{self.telemetry}/{name}")
                for name in os.listdir(self.telemetry)}

    def requests_since(self, sizes):
        """The methods of the requests since `sizes`; one connection's are in one file."""
        methods = []
        for name in sorted(os.listdir(self.telemetry)):
            with open(f"{self.telemetry}/{name}", "rb") as f:
                f.seek(sizes.get(name, 0))
                methods += re.findall(self.REQUEST_LINE, f.read().decode("utf-8", "replace"),
                                      re.MULTILINE)
        return methods


def vtodo(uid, summary=None, **props):
    """A VCALENDAR with one VTODO; props are property lines, e.g. DUE=..., PRIORITY=..."""
    lines = ["BEGIN:VCALENDAR", "VERSION:2.0", "PRODID:-//tests//device//EN", "BEGIN:VTODO",
             f"UID:{uid}", "DTSTAMP:20240101T000000Z"]
    if summary is not None:
        lines.append(f"SUMMARY:{summary}")
    lines += [f"{name.replace('_', '-')}:{value}" for name, value in props.items()]
    return "\r\n".join(lines + ["END:VTODO", "END:VCALENDAR", ""])


def tasks(calendar):
    """The collection's VTODOs by UID, as icalendar components."""
    todos = (t.icalendar_instance.walk("VTODO")[0] for t in calendar.todos(include_completed=True))
    return {str(c["UID"]): c for c in todos}


def by_summary(calendar):
    return {str(t["SUMMARY"]): t for t in tasks(calendar).values()}


def todo(description, notes=b"", category=b"Unassigned", month=3, day=1, year=2030, priority=0,
         completed=0):
    return records.Todo(month, day, year, priority, completed, category, description, notes)


class Folder:
    """A data folder with a private password file beside it."""

    def __init__(self, todos=(), categories=(b"Unassigned",)):
        self.dir = tempfile.TemporaryDirectory()
        self.path = os.path.join(self.dir.name, "data")
        os.mkdir(self.path)
        self.password_file = os.path.join(self.dir.name, "password")
        self.state_file = os.path.join(self.path, ".pindle_sync.json")
        private_file(self.password_file, PASSWORD + "\n")
        records.write_files(self.path, list(todos), list(categories))

    def todos(self):
        return records.read_todos(os.path.join(self.path, "pindle_todo.db"))

    def categories(self):
        return records.read_categories(os.path.join(self.path, "cat.db"))

    def write(self, todos):
        records.write_files(self.path, todos, None)

    def snapshot(self):
        """Every file of the folder, bytes and all."""
        out = {}
        for name in sorted(os.listdir(self.path)):
            with open(os.path.join(self.path, name), "rb") as f:
                out[name] = f.read()
        return out

    def state(self):
        with open(self.state_file) as f:
            return json.load(f)

    def command(self, url):
        return [PROGRAM, "--dir", self.path, "--url", url, "--user", USER, "--password-file",
                self.password_file]

    def sync(self, url, *extra, env=None):
        return subprocess.run([*self.command(url), *extra], env=env, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, timeout=300)

    def close(self):
        self.dir.cleanup()


class Window:
    """pindle_todo on a folder, on an Xvfb display of its own where no other test clicks."""

    # Window-relative points: the to-do tab, New, and the entry dialog's description and Save.
    TODO_TAB, NEW = (40, 37), (475, 77)
    DESCRIPTION, SAVE = (200, 157), (67, 407)

    def __init__(self, folder):
        ready, write_end = os.pipe()
        # -noreset: the check below is a client too, and a reset when it leaves refuses the next.
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0",
                                        "800x600x24", "-nolisten", "tcp", "-noreset"],
                                       pass_fds=(write_end,), stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
        os.close(write_end)
        self.env = {k: v for k, v in os.environ.items() if k != "XAUTHORITY"}
        with os.fdopen(ready) as f:
            self.env["DISPLAY"] = ":" + f.readline().strip()
        # The program starts only once the display answers, so that a display not taking
        # clients shows as such, never as the program failing to open it.
        deadline = time.monotonic() + 30
        while subprocess.run(["xdpyinfo"], env=self.env, stdout=subprocess.DEVNULL,
                             stderr=subprocess.DEVNULL).returncode != 0:
            if time.monotonic() > deadline:
                raise RuntimeError(f"the display {self.env['DISPLAY']} does not answer")
            time.sleep(0.1)
        self.process = subprocess.Popen([WINDOW_PROGRAM], cwd=folder.path, env=self.env,
                                        stderr=subprocess.PIPE)
        try:
            # A start-up on a machine loaded by the other suites may take a while; only a
            # failure waits this long.
            self.id = self.find("To Do List", seconds=30)
        except RuntimeError as e:
            raise RuntimeError(f"{e}; the program's status {self.process.poll()}, "
                               f"it said {self.close()!r}") from None

    def run(self, *args, **kwargs):
        return subprocess.run(args, env=self.env, check=True, **kwargs)

    def find(self, title, seconds=10):
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid",
                                    str(self.process.pid), "--name", f"^{title}$"],
                                   env=self.env, stdout=subprocess.PIPE, text=True).stdout.split()
            if found:
                time.sleep(0.3)  # mapped is not yet drawn
                return found[0]
            time.sleep(0.1)
        raise RuntimeError(f"no window {title!r}")

    def click(self, point, window=None):
        self.run("xdotool", "mousemove", "--sync", "--window", window or self.id,
                 str(point[0]), str(point[1]), "click", "1")

    def add_todo(self, description):
        """New, a description, Save: as a person adds a to-do."""
        self.click(self.NEW)
        entry = self.find("To Do Entry")
        self.click(self.DESCRIPTION, entry)
        self.run("xdotool", "type", "--delay", "20", description)
        self.click(self.SAVE, entry)

    def wait_for_lines(self, count, seconds=5):
        """Seconds until `count` of the to-do list's first six lines show text, as of the
        screenshot that showed them."""
        crops = []
        for i in range(1, 7):
            crops += ["(", "-clone", "0", "-crop", f"580x13+20+{97 + 17 * i}", "-format",
                      "%[fx:mean<0.99]\\n", "-write", "info:", ")"]
        start = time.monotonic()
        while True:
            taken = time.monotonic() - start
            shot = self.run("xwd", "-silent", "-id", self.id, stdout=subprocess.PIPE).stdout
            shown = self.run("convert", "xwd:-", *crops, "null:", input=shot,
                             stdout=subprocess.PIPE).stdout.split().count(b"1")
            if shown == count:
                return taken
            if taken > seconds:
                raise AssertionError(f"the list shows {shown} lines, not {count}")
            time.sleep(0.02)

    def close(self):
        """Ends the program and the display; what the program said on stderr."""
        self.process.kill()
        self.process.wait()
        said = self.process.stderr.read().decode()
        self.process.stderr.close()
        self.server.terminate()
        self.server.wait()
        return said


class ServerCase:
    """A server of the class SERVER for the whole class, a collection of its own for each test."""

    SERVER = Radicale

    @classmethod
    def setUpClass(cls):
        cls.server = cls.SERVER()

    @classmethod
    def tearDownClass(cls):
        cls.server.close()

    def setUp(self):
        self.url, self.device = self.server.new_collection(self.id().split(".")[-1].lower())

    def folder(self, todos, categories=(b"Unassigned",)):
        folder = Folder(todos, categories)
        self.addCleanup(folder.close)
        return folder


def take_program():
    """pindle_sync, then pindle_todo where the tests open the window too."""
    global PROGRAM, WINDOW_PROGRAM
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    if len(sys.argv) > 1 and os.path.isfile(sys.argv[1]):
        WINDOW_PROGRAM = os.path.abspath(sys.argv.pop(1))
