"""A web server that serves one file's bytes, well or badly: its paths say how."""
import re
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer


class Handler(BaseHTTPRequestHandler):
    protocol_version = 'HTTP/1.1'
    disable_nagle_algorithm = True
    bad = range(65536, 131072)  # where the bad paths misbehave: behind the file's head, in front of its Cues

    def log_message(self, *args):
        pass

    def handle_one_request(self):
        try:
            super().handle_one_request()
        except ConnectionResetError:
            self.close_connection = True

    def do_GET(self):
        wanted = re.fullmatch(r'bytes=(\d+)-(\d+)', self.headers['Range'])
        first, last = map(int, wanted.groups())
        self.server.seen.append((first, self.headers['User-Agent']))
        try:
            getattr(self, self.path.strip('/'))(first, last)
        except (BrokenPipeError, ConnectionResetError):
            pass

    def answer(self, status, body=b'', **headers):
        headers.setdefault('Content_Length', len(body))
        self.send_response(status)
        for name, value in headers.items():
            if value is not None:
                self.send_header(name.replace('_', '-'), str(value))
        self.end_headers()
        self.wfile.write(body)
        self.wfile.flush()

    def part(self, first, last, total=None, say=None, **headers):
        """The range, with a total, or a first byte (`say`), that may be lies."""
        data = self.server.data
        if first >= len(data):
            return self.answer(416, Content_Range='bytes */%d' % len(data))
        body = data[first:last + 1]
        say = first if say is None else say
        where = 'bytes %d-%d/%s' % (say, say + len(body) - 1, total or len(data))
        self.answer(206, headers.pop('body', body), Content_Range=where, **headers)

    def hang_up(self):
        self.close_connection = True

    def wait_for_the_end(self):
        """Until the other side gives up."""
        self.rfile.read(1)
        self.hang_up()

    def times(self, first):
        return sum(1 for seen, _ in self.server.seen if seen == first)

    def good(self, first, last):
        self.part(first, last)

    def moved(self, first, last):
        self.answer(302, Location='/good')

    def no_total(self, first, last):
        self.part(first, last, total='*')

    def small_pieces(self, first, last):
        self.part(first, min(last, first + 999))

    def whole(self, first, last):
        self.answer(200, self.server.data)

    def whole_broken_once(self, first, last):
        half = len(self.server.data) // 2
        again = len(self.server.seen) > 1
        self.answer(200, self.server.data if again else self.server.data[:half], Content_Length=len(self.server.data))
        self.hang_up()

    def broken_once(self, first, last):
        cut = None if first % 4096 else self.server.data[first:last + 1][:1500]
        body = self.server.data[first:last + 1] if cut is None else cut
        self.part(first, last, body=body, Content_Length=len(self.server.data[first:last + 1]))
        self.hang_up()

    def busy_once(self, first, last):
        if self.times(first) == 1 and first > 0:
            return self.answer(503)
        self.part(first, last)

    def promises_more(self, first, last):
        self.part(first, last, total=len(self.server.data) * 3)

    def promises_less(self, first, last):
        self.part(first, last, total=len(self.server.data) // 2)

    def sends_more(self, first, last):
        self.part(first, last, body=self.server.data[first:last + 5000])

    def whole_too_large(self, first, last):
        self.answer(200, self.server.data, Content_Length=3 << 20)
        self.hang_up()

    def stalls(self, first, last):
        if first not in self.bad:
            return self.part(first, last)
        self.part(first, last, body=self.server.data[first:first + 100], Content_Length=last - first + 1)
        self.wait_for_the_end()

    def never_answers(self, first, last):
        self.wait_for_the_end()

    def held(self, first, last):
        """What lies in the gate comes once the server is told to go on."""
        if first in self.server.gate:
            self.server.reached.set()
            self.server.go_on.wait()
        self.part(first, last)

    def breaks_always(self, first, last):
        if first not in self.bad:
            return self.part(first, last)
        self.hang_up()

    def breaks_at_once(self, first, last):
        self.hang_up()

    def sends_nothing(self, first, last):
        self.part(first, last, **{'body': b''} if first in self.bad else {})

    def whole_later(self, first, last):
        self.whole(first, last) if first in self.bad else self.part(first, last)

    def other_place(self, first, last):
        self.part(first, last, say=first + (first in self.bad))

    def no_place(self, first, last):
        self.answer(206, self.server.data[first:last + 1])

    def missing(self, first, last):
        self.answer(404, b'<h1>\x1b[2J</h1>')

    def to_a_file(self, first, last):
        self.answer(302, Location='file:///etc/hostname')

    def round_and_round(self, first, last):
        self.answer(302, Location='/round_and_round')

    def no_http(self, first, last):
        self.wfile.write(b'\x00\x01 this is no web server\n' * 10)
        self.hang_up()


class Server:
    def __init__(self, data, gate=()):
        self.http = ThreadingHTTPServer(('127.0.0.1', 0), Handler)
        self.http.daemon_threads = True
        self.http.data, self.http.seen, self.http.gate = data, [], gate
        self.http.reached, self.http.go_on = threading.Event(), threading.Event()
        self.thread = threading.Thread(target=self.http.serve_forever, kwargs={'poll_interval': 0.05}, daemon=True)
        self.thread.start()

    @property
    def seen(self):
        """(first byte, user agent) of each request, redirected ones twice."""
        return self.http.seen

    def url(self, path, scheme='http'):
        return '%s://127.0.0.1:%d/%s' % (scheme, self.http.server_port, path)

    def wait_until_held(self):
        assert self.http.reached.wait(60)

    def go_on(self):
        self.http.go_on.set()

    def close(self):
        self.go_on()
        self.http.shutdown()
        self.http.server_close()
