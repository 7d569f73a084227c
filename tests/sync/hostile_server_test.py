"""pindle_sync against a small server of our own that answers each REPORT with the reply a test
gives it (Radicale validates what it stores): huge texts, bytes that are not UTF-8, broken
iCalendar and XML. Also what needs no real server: the command line, the progress shown on a
terminal, a data folder that cannot be written.
Usage: hostile_server_test.py PINDLE_SYNC"""

import http.server
import os
import pty
import shutil
import socket
import struct
import subprocess
import threading
import time
import unittest
from xml.sax.saxutils import escape

import sync_fixture as fx
from records import Todo

NEW = Todo(1, 2, 2030, 0, 0, b"Unassigned", b"New here", b"")
T2 = b"<d:sync-token>t2</d:sync-token>"
# What a look at the collection itself finds: a calendar that takes tasks.
COLLECTION = (b'<d:multistatus xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav"><d:response>'
              b"<d:href>/tasks/</d:href><d:propstat><d:prop><d:resourcetype><d:collection/>"
              b'<c:calendar/></d:resourcetype><c:supported-calendar-component-set><c:comp name='
              b'"VTODO"/></c:supported-calendar-component-set></d:prop><d:status>HTTP/1.1 200 OK'
              b"</d:status></d:propstat></d:response></d:multistatus>")


class Hostile(http.server.BaseHTTPRequestHandler):
    reply = b""
    listing = b""  # the reply to a PROPFIND
    sync_collection_status = 207  # anything else: refused as by a server without it
    propfind_status = 207
    from_t1 = None  # (status, body): how a sync-collection from token t1 is answered instead
    put_status = 201  # None: the connection closed with no reply
    put_seconds = 0
    reset_above = None  # a PUT of a longer body: the connection reset before it is read
    endless = False  # every REPORT answered with a body that never ends
    halves = False  # so is a calendar-multiget of more than one task
    sync_reply = None  # how a sync-collection is answered, when not as any REPORT
    puts = 0
    requests = 0

    def body(self):
        return self.rfile.read(int(self.headers.get("Content-Length", 0)))

    def do_REPORT(self):
        body = self.body()
        if type(self).endless or (type(self).halves and body.count(b"<d:href>") > 1):
            self.send_endlessly()
        elif b"sync-collection" in body and type(self).sync_reply:
            self.answer(207, type(self).sync_reply)
        elif b"sync-collection" in body and type(self).sync_collection_status != 207:
            self.answer(type(self).sync_collection_status, b"")
        elif type(self).from_t1 and b">t1</d:sync-token>" in body:
            self.answer(*type(self).from_t1)
        else:
            self.answer(207, type(self).reply)

    def do_PROPFIND(self):
        self.body()
        if self.headers.get("Depth") == "0":
            self.answer(207, COLLECTION)
        else:
            self.answer(type(self).propfind_status, type(self).listing)

    def do_PUT(self):
        type(self).puts += 1
        if int(self.headers["Content-Length"]) > (type(self).reset_above or float("inf")):
            # Closed with the body unread and no lingering: a reset, as a server that refuses
            # a body by its length and closes at once leaves the connection.
            self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            self.connection.close()
            self.close_connection = True
            return
        self.body()
        if type(self).put_status is None:
            self.close_connection = True
            return
        time.sleep(type(self).put_seconds)
        self.answer(type(self).put_status, b"", [("ETag", '"new"')])

    def send_endlessly(self):
        self.send_response(207)
        self.end_headers()
        response = (b"<d:response><d:href>/tasks/x.ics</d:href><d:propstat><d:prop><d:getetag>"
                    b'"x"</d:getetag></d:prop></d:propstat></d:response>') * 500
        try:
            self.wfile.write(b'<d:multistatus xmlns:d="DAV:">')
            while True:
                self.wfile.write(response)
        except OSError:  # the client stopped reading and closed
            self.close_connection = True

    def answer(self, status, body, headers=()):
        type(self).requests += 1
        type(self).agent = self.headers.get("User-Agent")
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *args):
        pass


def multistatus(*tasks, token=b"<d:sync-token>t1</d:sync-token>"):
    """A sync-collection reply with one response per iCalendar text (bytes, put in as they are)."""
    out = b'<d:multistatus xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">' + token
    for i, ics in enumerate(tasks):
        out += (b"<d:response><d:href>/tasks/%d.ics</d:href><d:propstat><d:prop>"
                b"<d:getetag>\"%d\"</d:getetag><c:calendar-data>%s</c:calendar-data></d:prop>"
                b"<d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>"
                % (i, i, escape(ics.decode("latin-1")).encode("latin-1")))
    return out + b"</d:multistatus>"


def vtodo(*lines):
    return b"\r\n".join([b"BEGIN:VCALENDAR", b"VERSION:2.0", b"BEGIN:VTODO", *lines,
                         b"END:VTODO", b"END:VCALENDAR", b""])


class HostileReplies(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Hostile)
        cls.url = "http://127.0.0.1:%d/tasks/" % cls.server.server_address[1]
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()

    @classmethod
    def tearDownClass(cls):
        cls.server.shutdown()
        cls.server.server_close()

    def serve(self, **answers):
        """Sets how the server answers, for this test only."""
        for name, value in answers.items():
            self.addCleanup(setattr, Hostile, name, getattr(Hostile, name))
            setattr(Hostile, name, value)

    def new_folder(self, todos):
        folder = fx.Folder(todos)
        self.addCleanup(folder.close)
        return folder

    def sync(self, reply, todos=(), again=False, lines=1):
        """A sync of a new folder with these to-dos, or `again` of the last one; the server
        answers the REPORT with `reply`. It says at most `lines` lines on stderr."""
        Hostile.reply = reply
        if not again:
            self.folder = self.new_folder(todos)
        result = self.folder.sync(self.url)
        self.assertGreaterEqual(result.returncode, 0, "killed by a signal")
        self.assertNotIn(b"Sanitizer", result.stderr)
        self.assertLessEqual(len(result.stderr.splitlines()), lines, result.stderr)
        return result

    def test_odd_tasks_land_within_their_fields(self):
        bad = b"\xff\xfe\xc3(\xed\xa0\x80"
        reply = multistatus(
            vtodo(b"UID:huge", b"SUMMARY:" + b"\xe2\x82\xac" * 400000 + bad,
                  b"DESCRIPTION:" + bad * 10000 + b"\\n" * 20000,
                  b"CATEGORIES:" + bad * 30 + b",second", b"PRIORITY:99999999999999999999"),
            vtodo(),
            vtodo(b"UID:odd", b"PRIORITY:-5", b"DUE:99999999", b"STATUS:", b"SUMMARY;X=\"",
                  b"CATEGORIES:"),
            vtodo(b"UID:dates", b"DUE;VALUE=DATE:20300230", b"PRIORITY:x"),
            b"BEGIN:VCALENDAR\r\nBEGIN:VTODO\r\nSUMMARY:cut off",
            b"\x01garbage" * 1000,
            b"BEGIN:VCALENDAR\r\n" + b"BEGIN:VTODO\r\n" * 2000,
            vtodo(b"UID:controls", b"SUMMARY:a\x02b", b"DESCRIPTION:\x7f\x01\x1b[31m"),
            vtodo(b"UID:long", ("SUMMARY:" + "\u00e9" * 30 + "x").encode(),
                  ("DESCRIPTION:" + "\u20ac" * 12000).encode(),
                  ("CATEGORIES:" + "\U0001F600" * 20).encode(), b"PRIORITY:9",
                  b"DUE:20300704T235959Z"),
        )
        result = self.sync(reply)
        self.assertEqual((result.returncode, Hostile.agent), (0, "pindle_sync/1.5"), result.stderr)
        todos = self.folder.todos()  # strict: whole records, zeros after every terminator
        self.assertGreaterEqual(len(todos), 5)
        # Cut to the field, never inside a character: the notes to 31998 of 31999 bytes.
        long = Todo(7, 4, 2030, 8, 0, "\U0001F600".encode() * 12, "\u00e9".encode() * 25,
                    "\u20ac".encode() * 10666)
        self.assertEqual([t for t in todos if t.year == 2030 and t.month == 7], [long])
        for t in todos:
            for text, size in ((t.description, 50), (t.category, 50), (t.notes, 31999)):
                self.assertLessEqual(len(text), size)
                text.decode("utf-8")
            self.assertIn(t.priority, range(9))
            self.assertIn(t.month, range(1, 13))
        # Each to-do's category is in cat.db, and nothing else is.
        self.assertEqual(set(self.folder.categories()),
                         {b"Unassigned"} | {t.category for t in todos})

    def test_broken_replies_fail_cleanly_and_change_nothing(self):
        for reply in (b"", b"not xml", b"<d:multistatus xmlns:d=\"DAV:\"><d:response>",
                      b"<multistatus xmlns=\"urn:wrong\"/>",
                      multistatus(vtodo(b"UID:a"), token=b""),
                      multistatus(vtodo(b"UID:a", b"SUMMARY:a\x00b")),
                      b'<?xml version="1.0"?><!DOCTYPE m [<!ENTITY a "aaaaaaaaaa">'
                      b'<!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;">'
                      b'<!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;">]>'
                      b'<m xmlns="DAV:">&c;&c;&c;&c;&c;&c;&c;&c;&c;&c;</m>'):
            with self.subTest(reply=reply[:40]):
                result = self.sync(reply)
                self.assertEqual(result.returncode, 1)
                self.assertEqual(sorted(os.listdir(self.folder.path)), ["cat.db", "pindle_todo.db"])
                self.assertEqual(self.folder.todos(), [])

    def test_a_server_without_sync_collection_is_listed_by_etag(self):
        """Refused in any of the ways servers refuse a report they lack, sync-collection gives
        way to a PROPFIND of the ETags, and the state keeps no token; a server error does not."""
        self.serve(listing=b'<d:multistatus xmlns:d="DAV:"><d:response><d:href>/tasks/</d:href>'
                   b"<d:propstat><d:prop/><d:status>HTTP/1.1 200 OK</d:status></d:propstat>"
                   b"</d:response><d:response><d:href>/tasks/0.ics</d:href><d:propstat>"
                   b'<d:prop><d:getetag>"0"</d:getetag></d:prop><d:status>HTTP/1.1 200 OK'
                   b"</d:status></d:propstat></d:response></d:multistatus>")
        for status, listed in ((400, True), (403, True), (405, True), (501, True), (500, False)):
            with self.subTest(status=status):
                self.serve(sync_collection_status=status)
                before = Hostile.requests
                result = self.sync(multistatus(vtodo(b"UID:a", b"SUMMARY:Listed by ETag")))
                self.assertEqual(result.returncode, 0 if listed else 1, result.stderr)
                # An error ends the sync there, naming the request it answered.
                # After the look at the collection that every first sync takes.
                refused = (b"pindle_sync: the server answered 500 Internal Server Error to the "
                           b"sync REPORT\n")
                self.assertEqual((result.stderr, Hostile.requests - before),
                                 (b"", 4) if listed else (refused, 2))
                self.assertEqual(result.stdout, b"pindle_sync: sent 0 new, 0 changed, 0 deleted; "
                                 b"received 1 new, 0 changed, 0 deleted; 0 merged, 0 kept twice; "
                                 b"4 requests, 0 writes\n" if listed else b"")
                self.assertEqual([t.description for t in self.folder.todos()],
                                 [b"Listed by ETag"] if listed else [])
                if listed:
                    self.assertIsNone(self.folder.state()["sync_token"])

    def test_refused_writes_are_named_and_left_for_the_next_sync(self):
        """A refusal names its to-do with the server's status and words, on every run until it
        goes through; a write refused as raced is tried once more, after the task is read."""
        named = b'pindle_sync: not sent: "New here" (a new task): the server answered %d %s\n'
        left = (b"pindle_sync: 1 change not sent, as the server refused it; the next sync tries "
                b"it again\n")
        for status, said, writes in (
                (412, b"pindle_sync: a task kept changing on the server during the sync; "
                      b"run it again\n", 2),
                (300, named % (300, b"Multiple Choices") + left, 1),
                (500, named % (500, b"Internal Server Error") + left, 1)):
            with self.subTest(status=status):
                self.serve(put_status=status)
                for again in (False, True):
                    result = self.sync(multistatus(), [NEW], again=again, lines=2)
                    self.assertEqual((result.returncode, result.stderr), (1, said))
                    self.assertTrue(result.stdout.endswith(b" %d writes\n" % writes),
                                    result.stdout)
                    self.assertEqual(self.folder.todos(), [NEW])
                    self.assertEqual(self.folder.state()["todos"], [])

    def peak(self, folder):
        """A sync of the folder: its status, what it said on stderr and its peak resident
        memory in MiB."""
        with open(os.path.join(folder.dir.name, "stderr"), "w+b") as stderr:
            process = subprocess.Popen(folder.command(self.url), stdout=subprocess.DEVNULL,
                                       stderr=stderr)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = os.waitstatus_to_exitcode(status)
            stderr.seek(0)
            return process.returncode, stderr.read(), usage.ru_maxrss / 1024

    def test_a_write_whose_connection_is_reset_is_named_and_the_others_go_on(self):
        """The server resets the connection of one to-do's upload before reading it (as Radicale
        does past its size limit, and over TLS its answer is lost): that to-do is named, as the
        server was there, and the uploads after it go through."""
        self.serve(reset_above=10000, puts=0)
        todos = [NEW._replace(description=b"First"), NEW._replace(notes=b"x" * 20000),
                 NEW._replace(description=b"Last")]
        result = self.sync(multistatus(), todos, lines=2)
        self.assertEqual((result.returncode, Hostile.puts), (1, 3), result.stderr)
        self.assertRegex(result.stderr.decode(), r'^pindle_sync: not sent: "New here" \(a new '
                         r"task\): the server broke off the connection while it was being sent "
                         r"\((Send|Recv) failure: .+\)\npindle_sync: 1 change not sent, as the "
                         r"server refused it; the next sync tries it again\n$")
        self.assertTrue(result.stdout.startswith(b"pindle_sync: sent 2 new,"), result.stdout)
        self.assertEqual(len(self.folder.state()["todos"]), 2)

    def test_an_endless_reply_is_cut_off_in_bounded_memory(self):
        """A server that never stops sending: the sync stops reading at its 32 MiB cap, says the
        reply was too large rather than that the server could not be reached, changes nothing,
        and its peak memory stays within the cap of an ordinary sync's (it grew to 530 MB
        before)."""
        Hostile.reply = multistatus()
        ordinary = self.peak(self.new_folder([NEW]))
        self.serve(endless=True)
        folder = self.new_folder([NEW])
        before = folder.snapshot()
        status, said, peak = self.peak(folder)
        self.assertEqual((ordinary[0], status, said), (0, 1, (
            b"pindle_sync: the server's reply was larger than 32 MiB, far more than a task list "
            b"needs; the sync stopped reading it\n")))
        self.assertEqual(folder.snapshot(), before)
        # The reply as it grows to the cap, and what the sanitizers keep of the buffer it left.
        self.assertLess(peak, ordinary[2] + 3 * 32, f"MiB at the peak; {ordinary[2]} MiB ordinary")

    def test_a_batch_too_large_is_asked_again_in_halves(self):
        """Tasks listed by ETag whose calendar data, asked for together, passes the cap: each is
        asked for alone, and both come down."""
        tasks = multistatus(vtodo(b"UID:a", b"SUMMARY:A"), vtodo(b"UID:b", b"SUMMARY:B"))
        listed = multistatus(b"", b"").replace(b"<c:calendar-data></c:calendar-data>", b"")
        self.serve(halves=True, sync_reply=listed)
        before = Hostile.requests
        result = self.sync(tasks)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([t.description for t in self.folder.todos()], [b"A", b"B"])
        # Answered whole: the look at the list, the listing, then each task alone.
        self.assertEqual(Hostile.requests - before, 4)

    def test_writes_stop_at_the_first_that_cannot_reach_the_server(self):
        """Each write after it would wait out the same failure: none is tried, all are left."""
        self.serve(put_status=None, puts=0)
        result = self.sync(multistatus(), [NEW._replace(day=d) for d in (1, 2, 3)])
        self.assertEqual((result.returncode, Hostile.puts), (1, 1), result.stderr)
        self.assertRegex(result.stderr.decode(), r"^pindle_sync: 3 changes not sent \(cannot "
                         r"reach the server: .+\); run the sync again\n$")

    def test_a_failed_listing_after_the_writes_keeps_the_token(self):
        """The listing that would show the sync's own writes fails (no token, then a PROPFIND
        answered 500): the token read before them stays, for the next sync to start from."""
        self.serve(from_t1=(207, multistatus(token=b"")), propfind_status=500)
        self.assertEqual(self.sync(multistatus(), [NEW]).returncode, 0)
        self.assertEqual(self.folder.state()["sync_token"], "t1")

    def test_a_forgotten_token_lists_everything_and_takes_what_is_gone(self):
        """Asked again from nothing, the server lists all it holds: a task it no longer lists
        was deleted there."""
        self.sync(multistatus(vtodo(b"UID:a", b"SUMMARY:A"), vtodo(b"UID:b", b"SUMMARY:B")))
        self.serve(from_t1=(409, b""))
        result = self.sync(multistatus(vtodo(b"UID:a", b"SUMMARY:A"), token=T2), again=True)
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual([t.description for t in self.folder.todos()], [b"A"])

    def test_a_known_task_turned_unreadable_is_left_as_it_was(self):
        self.sync(multistatus(vtodo(b"UID:a", b"SUMMARY:A")))
        changed = multistatus(b"no calendar", token=T2).replace(b'"0"', b'"changed"')
        result = self.sync(changed, again=True)
        self.assertEqual([t.description for t in self.folder.todos()], [b"A"], result.stderr)

    def on_terminal(self, count, put_seconds):
        """What a sync of `count` new to-dos shows on stderr when that is a terminal, and how
        many seconds it took."""
        self.serve(reply=multistatus(), put_seconds=put_seconds)
        folder = self.new_folder([NEW._replace(description=b"New %d" % i) for i in range(count)])
        controller, terminal = pty.openpty()
        began = time.monotonic()
        process = subprocess.Popen(folder.command(self.url), stdout=subprocess.DEVNULL,
                                   stderr=terminal)
        os.close(terminal)
        shown = fx.read_terminal(controller)
        os.close(controller)
        self.assertEqual(process.wait(), 0)
        return shown, time.monotonic() - began

    def test_progress_on_a_terminal(self):
        """Writes that take longer than a moment show how far they are, the line redrawn at
        most ten times a second and ended at the last; a quick sync shows nothing."""
        shown, seconds = self.on_terminal(300, 0.004)
        self.assertTrue(shown.endswith(b"pindle_sync: 300 of 300\r\n"), shown[-60:])
        self.assertTrue(shown.startswith(b"\rpindle_sync: "), shown[:40])
        self.assertLessEqual(shown.count(b"\rpindle_sync: "), seconds * 10 + 2, shown)
        self.assertEqual(self.on_terminal(1, 0)[0], b"")

    # A folder whose files cannot be written: refused before any request, or the state that
    # cannot be saved reported, with nothing half-written left behind.
    def sync_in(self, script):
        """The sync run as root after `script` prepared the folder, $1, in a mount namespace of
        its own that nothing else sees; $6 holds a copy of the folder's files."""
        if os.geteuid() != 0 or subprocess.run(["unshare", "--mount", "true"],
                                               stderr=subprocess.DEVNULL).returncode != 0:
            self.skipTest("needs root and a mount namespace of its own")
        Hostile.reply = multistatus()
        folder = self.new_folder([NEW])
        source = os.path.join(folder.dir.name, "source")
        shutil.copytree(folder.path, source)
        script += ('\n"$2" --dir "$1" --url "$3" --user "$4" --password-file "$5" || '
                   'echo "status $?"\nls -A "$1"')
        return subprocess.run(["unshare", "--mount", "sh", "-euc", script, "sh", folder.path,
                               fx.PROGRAM, self.url, fx.USER, folder.password_file, source],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=120)

    def test_a_read_only_file_is_refused_before_any_request(self):
        for name in ("pindle_todo.db", "cat.db"):
            with self.subTest(name=name):
                before = Hostile.requests
                result = self.sync_in(f'mount --bind "$1/{name}" "$1/{name}"\n'
                                      f'mount -o remount,bind,ro "$1/{name}"')
                self.assertEqual(result.stderr.decode(), f"pindle_sync: cannot read and write "
                                 f"{name}: Read-only file system\n")
                self.assertIn(b"status 1\n", result.stdout)
                self.assertEqual(Hostile.requests, before)

    def test_a_state_that_cannot_be_written_is_reported_and_not_left_half(self):
        result = self.sync_in('mount -t tmpfs -o size=64k tmpfs "$1"\n'
                              'cp "$6"/pindle_todo.db "$6"/cat.db "$1"\n'
                              'dd if=/dev/zero of="$1/filler" bs=1k 2>/dev/null || true')
        self.assertEqual(result.stderr.decode(), "pindle_sync: cannot write .pindle_sync.json: "
                         "No space left on device\n")
        self.assertEqual(result.stdout.decode().split("\n"),
                         ["status 1", "cat.db", "filler", "pindle_todo.db", ""])


class CommandLine(unittest.TestCase):
    def test_help_and_mistakes(self):
        """The help is the documented text; a mistake gets one line, a pointer to the help and
        status 2, before anything else is looked at."""
        result = subprocess.run([fx.PROGRAM, "--help"], stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)
        golden = os.path.join(os.path.dirname(os.path.abspath(__file__)), "golden", "help.txt")
        with open(golden, "rb") as f:
            self.assertEqual((result.returncode, result.stdout, result.stderr),
                             (0, f.read(), b""))
        for args, reason in ((["--d", "x"], "ambiguous option '--d' (--dir, --dry-run)"),
                             (["--dir=", "--url", "https://x/", "--user", "a"],
                              "option --dir needs a folder"),
                             (["--dir", ".", "--user", "a"], "give the task collection with")):
            with self.subTest(args=args):
                result = subprocess.run([fx.PROGRAM, *args], stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE)
                self.assertEqual(result.returncode, 2)
                lines = result.stderr.decode().splitlines()
                self.assertTrue(lines[0].startswith("pindle_sync: " + reason), lines)
                self.assertEqual(lines[1:], ["Try 'pindle_sync --help'."])


if __name__ == "__main__":
    fx.take_program()
    unittest.main()
