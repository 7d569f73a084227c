"""pindle_sync against each server of the sync suite: the first upload of 1000 generated to-dos
and a sync with nothing new, beside a floor measured in the same run on the same server: the
same 1000 PUTs of the same bodies (those pindle_sync sends, as a small recording server took
them) from Python's http.client on one kept-alive connection, signed in from the first request;
then the first download of those 1000 into an empty folder, with the sync's peak resident
memory (VmHWM, from wait4's ru_maxrss). Cyrus is left out where it cannot start (not root).
Usage: sync_bench.py PINDLE_SYNC [--https]; prints one table."""

import base64
import http.client
import http.server
import os
import ssl
import subprocess
import sys
import threading
import time
import urllib.parse

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests",
                                "sync"))
import sync_fixture as fx  # noqa: E402
from records import Todo  # noqa: E402

COUNT = 1000


def generated():
    return [Todo(1 + i % 12, 1 + i % 28, 2030 + i % 5, i % 9, int(i % 5 == 0), b"Unassigned",
                 b"To-do %d" % i, b"notes %d" % i if i % 10 == 0 else b"") for i in range(COUNT)]


class Recorder(http.server.BaseHTTPRequestHandler):
    """Takes every PUT as a new task; any REPORT gets an empty collection, and a PROPFIND says
    it is a task list."""

    protocol_version = "HTTP/1.1"
    bodies = []

    def do_REPORT(self):
        self.rfile.read(int(self.headers["Content-Length"]))
        self.reply(207, b'<d:multistatus xmlns:d="DAV:"><d:sync-token>t</d:sync-token>'
                        b"</d:multistatus>")

    def do_PROPFIND(self):
        self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.reply(207, b'<d:multistatus xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav">'
                        b"<d:response><d:href>/tasks/</d:href><d:propstat><d:prop><d:resourcetype>"
                        b"<c:calendar/></d:resourcetype></d:prop><d:status>HTTP/1.1 200 OK"
                        b"</d:status></d:propstat></d:response></d:multistatus>")

    def do_PUT(self):
        Recorder.bodies.append((os.path.basename(self.path),
                                self.rfile.read(int(self.headers["Content-Length"]))))
        self.reply(201, b"")

    def reply(self, status, body):
        self.send_response(status)
        self.send_header("ETag", '"%d"' % len(Recorder.bodies))
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *args):
        pass


def recorded_bodies():
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Recorder)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    folder = fx.Folder(generated(), [b"Unassigned"])
    try:
        result = folder.sync("http://127.0.0.1:%d/tasks/" % server.server_address[1])
        assert result.returncode == 0, result.stderr
    finally:
        folder.close()
        server.shutdown()
        server.server_close()
    return Recorder.bodies


def floor(server, bodies):
    """Seconds for the PUTs of `bodies` into a new collection, one connection kept alive."""
    url = urllib.parse.urlsplit(server.new_collection("floor")[0])
    if url.scheme == "https":
        context = ssl.create_default_context(cafile=server.certificate)
        connection = http.client.HTTPSConnection(url.hostname, url.port, context=context)
    else:
        connection = http.client.HTTPConnection(url.hostname, url.port)
    sign_in = base64.b64encode(f"{fx.USER}:{fx.PASSWORD}".encode()).decode()
    headers = {"Content-Type": "text/calendar; charset=utf-8", "If-None-Match": "*",
               "Authorization": "Basic " + sign_in}
    start = time.monotonic()
    for name, body in bodies:
        connection.request("PUT", url.path + name, body, headers)
        response = connection.getresponse()
        response.read()
        assert response.status == 201, response.status
    taken = time.monotonic() - start
    connection.close()
    return taken


def timed_sync(server, folder, url):
    """Seconds, the requests the server saw and the sync's peak resident memory in MiB."""
    offset, start = server.log_size(), time.monotonic()
    process = subprocess.Popen([*folder.command(url), *server.sync_options()],
                               stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    _, status, usage = os.wait4(process.pid, 0)
    taken = time.monotonic() - start
    assert os.waitstatus_to_exitcode(status) == 0, process.stderr.read()
    process.stderr.close()
    return taken, server.requests_since(offset), usage.ru_maxrss / 1024


def summary(requests):
    return ", ".join(f"{requests.count(m)} {m}" for m in sorted(set(requests), key=requests.index))


def measure(kind, bodies):
    server = kind()
    folder, second = fx.Folder(generated(), [b"Unassigned"]), fx.Folder()
    try:
        url, _ = server.new_collection("tasks")
        upload, sent, _ = timed_sync(server, folder, url)
        again, listed, _ = timed_sync(server, folder, url)
        down, got, peak = timed_sync(server, second, url)
        base = floor(server, bodies)
    finally:
        folder.close()
        second.close()
        server.close()
    return (kind.__name__, f"{upload:.1f} s", f"{base:.1f} s", f"{upload / base:.2f}",
            summary(sent), f"{again * 1000:.0f} ms", summary(listed), f"{down:.1f} s",
            summary(got), f"{peak:.0f} MiB")


def main():
    fx.PROGRAM = os.path.abspath(sys.argv[1])
    kinds = [fx.Radicale, fx.Xandikos, fx.XandikosWithoutSyncCollection]
    if "--https" in sys.argv:
        kinds.append(fx.RadicaleOverHttps)
    if fx.Cyrus.unavailable() is None:
        kinds.append(fx.Cyrus)
    bodies = recorded_bodies()
    rows = [("server", "first upload", "floor: 1000 PUTs", "ratio", "upload requests",
             "nothing new", "its requests", "first download", "its requests", "its peak")]
    rows += [measure(kind, bodies) for kind in kinds]
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    for row in rows:
        print(" | ".join(cell.ljust(width) for cell, width in zip(row, widths)))


if __name__ == "__main__":
    main()
