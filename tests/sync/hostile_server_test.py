"""pindle_sync against a server that sends what no well-behaved one would: huge texts, bytes that
are not UTF-8, tasks missing their fields or holding odd ones, broken iCalendar and broken XML.
Radicale validates what it stores, so this small server of our own answers every REPORT with the
reply a test gives it. No reply may crash the sync or put anything outside its field.
Usage: hostile_server_test.py PINDLE_SYNC"""

import http.server
import json
import os
import threading
import unittest
from xml.sax.saxutils import escape

import sync_fixture as fx


class Hostile(http.server.BaseHTTPRequestHandler):
    reply = b""
    put_status = 201

    def do_REPORT(self):
        self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.answer(207, type(self).reply)

    def do_PUT(self):
        self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.answer(type(self).put_status, b"", [("ETag", '"new"')])

    def answer(self, status, body, headers=()):
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

    def sync(self, reply, todos=()):
        Hostile.reply = reply
        self.folder = fx.Folder(list(todos), [b"Unassigned"])
        self.addCleanup(self.folder.close)
        result = self.folder.sync(self.url)
        self.assertGreaterEqual(result.returncode, 0, "killed by a signal")
        self.assertNotIn(b"Sanitizer", result.stderr)
        self.assertLessEqual(len(result.stderr.splitlines()), 1, result.stderr)
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
        )
        result = self.sync(reply)
        self.assertEqual(result.returncode, 0, result.stderr)
        todos = self.folder.todos()  # strict: whole records, zeros after every terminator
        self.assertGreaterEqual(len(todos), 4)
        for t in todos:
            for text, size in ((t.description, 50), (t.category, 50), (t.notes, 31999)):
                self.assertLessEqual(len(text), size)
                text.decode("utf-8")
            self.assertIn(t.priority, range(9))
            self.assertIn(t.month, range(1, 13))
        for name in self.folder.categories():
            self.assertLessEqual(len(name), 50)
            name.decode("utf-8")

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

    def test_refused_writes_are_reported_and_left_for_the_next_sync(self):
        for status, reason in ((412, b"kept changing"), (500, b"answered 500")):
            with self.subTest(status=status):
                Hostile.put_status = status
                self.addCleanup(setattr, Hostile, "put_status", 201)
                new = fx.records.Todo(1, 2, 2030, 0, 0, b"Unassigned", b"New here", b"")
                result = self.sync(multistatus(), [new])
                self.assertEqual(result.returncode, 1)
                self.assertIn(reason, result.stderr)
                self.assertEqual(self.folder.todos(), [new])
                with open(os.path.join(self.folder.path, ".pindle_sync.json")) as f:
                    self.assertEqual(json.load(f)["todos"], [])


if __name__ == "__main__":
    fx.take_program()
    unittest.main()
