# SPDX-License-Identifier: GPL-3.0-or-later
"""A web server with faults: mediaserver.py FOLDER STATE [CERTIFICATE]

Serves the files of FOLDER on 127.0.0.1, the port chosen by the kernel. The first part of an address says how, as words
joined by "+": "plain", or any of those of `Reply`. STATE is a folder: "port" is written into it before "ready" is said,
"requests" is a line a request (method, address, User-Agent, Range), "sent" the number of bytes that were given out.
CERTIFICATE is a file with a certificate and its key: then it speaks TLS.
"""

import base64
import http.server
import os
import pathlib
import re
import ssl
import sys
import threading
import time
import urllib.parse

ROOT = pathlib.Path(sys.argv[1])
STATE = pathlib.Path(sys.argv[2])
TYPES = {'.mp4': 'video/mp4', '.mkv': 'video/x-matroska', '.webm': 'video/webm', '.ts': 'video/mp2t', '.ogg': 'video/ogg',
         '.m3u8': 'application/vnd.apple.mpegurl', '.mpd': 'application/dash+xml', '.m4s': 'video/iso.segment'}
PIECE = 16384
gone = threading.Event()
lock = threading.Lock()
sent = 0
seen = set()
begun = {}  # when each live playlist was asked for first


class Reply(http.server.BaseHTTPRequestHandler):
    """One request. The words:
    status=N       answers with that status and no video       redirect=N  through N other addresses to the video
    circle         redirects to itself                         auth        wants the name "guest", the password "p:ss w%rd"
    type=T         says that Content-Type ("+" is blank)       norange     knows no ranges
    cut=F          ends the connection after that fraction     cutonce=F   only the first time
    stall=F        sends nothing more after that fraction      hush=F:S    nothing for S seconds, then goes on
    rate=N         at most N bytes a second                    mute        takes the request and never answers
    late=S         answers after S seconds                     longer=N    claims N bytes more than come
    shorter=N      claims N bytes fewer than come              chunked     no length, in chunks
    unsized        no length, until the connection ends        endless     the file again and again, as one
    live=K[:N]     of a playlist K segments at first, then one more a second until it ends, or stops at N
    """

    protocol_version = 'HTTP/1.1'

    def do_HEAD(self):
        self.do_GET()

    def do_GET(self):
        address = urllib.parse.urlsplit(self.path)
        with lock, open(STATE / 'requests', 'a', encoding='utf-8') as requests:
            requests.write(f"{self.command} {self.path} agent={self.headers.get('User-Agent')} range={self.headers.get('Range')}\n")
        _, how, *rest = address.path.split('/')
        self.words = dict((word.split('=', 1) + [''])[:2] for word in how.split('+'))
        self.name = urllib.parse.unquote('/'.join(rest))
        try:
            self.answer(how)
        except (BrokenPipeError, ConnectionResetError, ssl.SSLError, TimeoutError):
            self.close_connection = True

    def word(self, name, default=None):
        return self.words.get(name, default)

    def bare(self, status, headers=()):
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header('Content-Length', '0')
        self.end_headers()

    def answer(self, how):
        if 'mute' in self.words:
            gone.wait(300)
            self.close_connection = True
            return
        if 'late' in self.words:
            gone.wait(float(self.word('late')))
        if 'status' in self.words:
            self.bare(int(self.word('status')))
            return
        if 'circle' in self.words:
            self.bare(302, [('Location', self.path)])
            return
        if 'redirect' in self.words:
            left = int(self.word('redirect')) - 1
            self.bare(301 + left % 2, [('Location', f"/{f'redirect={left}' if left else 'plain'}/{self.name}")])
            return
        if 'auth' in self.words:
            expected = 'Basic ' + base64.b64encode(b'guest:p:ss w%rd').decode()
            if self.headers.get('Authorization') != expected:
                self.bare(401, [('WWW-Authenticate', 'Basic realm="videos"')])
                return
        path = ROOT / self.name
        if not path.is_file():
            self.bare(404)
            return
        if 'live' in self.words and path.suffix == '.m3u8':
            self.give_playlist(path.read_text(encoding='utf-8'), how)
            return
        self.give(path, how)

    def give_playlist(self, whole, how):
        """The last five segments of those there are by now."""
        head, *segments = re.split(r'^(?=#EXTINF)', whole.replace('#EXT-X-PLAYLIST-TYPE:VOD\n', '').replace('#EXT-X-ENDLIST\n', ''), flags=re.MULTILINE)
        begin, _, stop = self.word('live').partition(':')
        with lock:
            since = begun.setdefault((how, self.name), time.monotonic())
        there = min(int(begin) + int(time.monotonic() - since), int(stop or len(segments)))
        first = max(there - 5, 0)
        head = re.sub(r'(#EXT-X-MEDIA-SEQUENCE:)\d+', rf'\g<1>{first}', head)
        text = (head + ''.join(segments[first:there]) + ('#EXT-X-ENDLIST\n' if there == len(segments) else '')).encode()
        self.send_response(200)
        self.send_header('Content-Type', TYPES['.m3u8'])
        self.send_header('Cache-Control', 'no-cache')
        self.send_header('Content-Length', str(len(text)))
        self.end_headers()
        if self.command != 'HEAD':
            self.wfile.write(text)

    def give(self, path, how):
        size = path.stat().st_size
        first, last = 0, size - 1
        wanted = self.headers.get('Range', '')
        ranges = not {'norange', 'chunked', 'unsized', 'endless'} & self.words.keys()
        partial = ranges and wanted.startswith('bytes=')
        if partial:
            begin, _, end = wanted.removeprefix('bytes=').partition('-')
            first = int(begin) if begin else size - int(end)
            last = min(int(end), last) if begin and end else last
            if first >= size:
                self.bare(416, [('Content-Range', f'bytes */{size}')])
                return
        self.send_response(206 if partial else 200)
        self.send_header('Content-Type', self.word('type', TYPES.get(path.suffix, 'application/octet-stream')).replace('_', '/'))
        if partial:
            self.send_header('Content-Range', f'bytes {first}-{last}/{size}')
        elif ranges:
            self.send_header('Accept-Ranges', 'bytes')
        if 'chunked' in self.words:
            self.send_header('Transfer-Encoding', 'chunked')
        elif {'unsized', 'endless'} & self.words.keys():
            self.send_header('Connection', 'close')
            self.close_connection = True
        else:
            claimed = last - first + 1 + int(self.word('longer', 0)) - int(self.word('shorter', 0))
            self.send_header('Content-Length', str(max(claimed, 0)))
        self.end_headers()
        if self.command != 'HEAD':
            with open(path, 'rb') as file:
                self.send(file, first, last, size, how)

    def send(self, file, first, last, size, how):
        end = last + 1
        once = 'cutonce' in self.words and how not in seen
        seen.add(how)
        cut = self.word('cut') or (self.word('cutonce') if once else None)
        limit = int(float(cut) * size) if cut else None
        stall = int(float(self.word('stall')) * size) if 'stall' in self.words else None
        hush, _, seconds = self.word('hush', '').partition(':')
        hushed = int(float(hush) * size) if hush else None
        at = first
        file.seek(at)
        while not gone.is_set():
            if at >= end:
                if 'endless' not in self.words:
                    break
                at = 0
                file.seek(0)
            if limit is not None and at >= limit:
                self.close_connection = True
                return
            if stall is not None and at >= stall:
                gone.wait(300)
                self.close_connection = True
                return
            if hushed is not None and at >= hushed:
                hushed = None
                gone.wait(float(seconds))
            rate = int(self.word('rate', 0))
            stops = [stop for stop in (limit, stall, hushed) if stop is not None and stop > at]
            data = file.read(min([PIECE, end - at] + [stop - at for stop in stops] + ([max(rate // 10, 1)] if rate else [])))
            self.put(data)
            at += len(data)
            if rate:
                gone.wait(len(data) / rate)
        if 'chunked' in self.words:
            self.wfile.write(b'0\r\n\r\n')
        if {'longer', 'shorter'} & self.words.keys():
            self.close_connection = True

    def put(self, data):
        global sent
        if 'chunked' in self.words:
            data = b'%x\r\n%s\r\n' % (len(data), data)
        self.wfile.write(data)
        with lock:
            sent += len(data)

    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_):
        pass


server = Server(('127.0.0.1', 0), Reply)
if len(sys.argv) > 3:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[3])
    server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
threading.Thread(target=server.serve_forever, daemon=True).start()
(STATE / 'requests').touch()
(STATE / 'port').write_text(str(server.server_address[1]))
print('ready', flush=True)
for line in sys.stdin:
    if line.strip() == 'sent':
        with lock:
            (STATE / 'sent').write_text(str(sent))
    elif line.strip() == 'end':
        break
    print('done', flush=True)
gone.set()
os._exit(0)
