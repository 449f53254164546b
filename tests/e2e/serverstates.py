# SPDX-License-Identifier: GPL-3.0-or-later
"""The gallery's states of a library on a server: waited for, out of reach, there, and lost while its list is shown."""
import contextlib
import hashlib
import http.server
import json
import os
import pathlib
import re
import threading
import urllib.parse

from e2e import touring
from settingsfile import settings

TITLES = {False: ("Alpine lake in June", "Bringing in the hay", "Harbour pilots of the north: three winters on the ice between the outer islands",
                  "Lanterns on the river", "The last paddle steamer", "Market day", "Old mill, new wheel", "Shearing", "Threshing with horses"),
          True: ("أسواق المدينة القديمة", "بحيرة في أعالي الجبال", "حصاد القمح بالخيول", "رحلة المرشدين البحريين في الشمال: ثلاثة شتاءات على الجليد بين الجزر البعيدة",
                 "سفينة الركاب الأخيرة", "طاحونة قديمة بدولاب جديد", "فوانيس على النهر", "قطاف الزيتون", "يوم السوق")}
GROUPS = re.compile(r'"([0-9a-f]{2})"')
ALSO = {"urn": "video", "position": "playPosition"}  # names that some queries have for the same


def group(video):
    """As the program divides them."""
    return hashlib.md5(video["video"].encode()).hexdigest()[:2]


def columns(query):
    """The names of what a query asks for, in its order."""
    selected = re.search(r"\bSELECT\b(.*?)(?:\bFROM\b|\bWHERE\b|\{)", query, re.DOTALL).group(1)
    while "(" in selected:  # of an expression its name is left
        selected = re.sub(r"\(([^()]*)\)", lambda inner: " ".join(re.findall(r"\bAS\s+(\?\w+)\s*$", inner[1])), selected)
    return re.findall(r"\?(\w+)", selected)


def rows(query, videos):
    """Of the few forms of queries by which a list is read and looked after. No video has a stamp of its last change."""
    if "COUNT(?modified)" in query:
        return [{"videos": len(videos), "stamped": 0}]
    if "GROUP BY" in query:
        members = {}
        for video in videos:
            members.setdefault(group(video), []).append(video)
        return [{"group": name, "videos": len(found), "content": sum(map(ord, str(found)))} for name, found in members.items()]
    named = [video for video in videos if f"<{video['video']}>" in query] or videos
    if re.search(r"\bIN\s*\(", query):
        wanted = set(GROUPS.findall(query))
        named = [video for video in named if group(video) in wanted]
    return [{**video, "group": group(video)} for video in named]


class Answers(http.server.BaseHTTPRequestHandler):
    """The SPARQL protocol, as far as somebody uses it who only looks."""

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"])).decode()
        query = urllib.parse.parse_qs(body).get("query", [""])[0]
        library = self.server.library
        library.answering.wait()
        if library.away:
            return  # the connection ends without a word
        names = columns(query)
        bindings = [{name: value for name in names if (value := self.value(row, name))} for row in rows(query, library.videos)]
        self.answer(json.dumps({"head": {"vars": names}, "results": {"bindings": bindings}}).encode())

    @staticmethod
    def value(row, name):
        name = "video" if name.startswith("id") else name.removeprefix("k_")
        value = row.get(ALSO.get(name, name))
        return value is not None and {"type": "uri" if str(value).startswith("urn:") else "literal", "value": str(value)}

    def answer(self, body):
        self.send_response(200)
        self.send_header("Content-Type", "application/sparql-results+json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


class Library:
    """On a server of this machine, set as a person sets one. Its videos are files of this machine, which have pictures."""

    def __init__(self, rtl):
        files = sorted(pathlib.Path(os.environ["HOME"]).glob("Videos/*.mp4"))
        self.videos = [{"video": f"urn:video:{number}", "title": title, "url": file.as_uri(), "fileName": file.name, "duration": 125 + 700 * number,
                        "mimeType": "video/mp4", **({"playPosition": 90 * number} if number % 4 == 1 else {})}
                       for number, (title, file) in enumerate(zip(TITLES[rtl], files * len(TITLES[rtl])))]
        self.answering = threading.Event()
        self.away = False
        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Answers)
        self.server.library = self

    def go_away(self):
        self.away = True
        self.answering.set()

    def come_back(self):
        self.away = False

    @contextlib.contextmanager
    def is_set(self):
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        address = f"http://127.0.0.1:{self.server.server_address[1]}/sparql"
        try:
            with settings("com/harrow/kestrel/server", query_address=address, poll_interval=1):
                yield
        finally:
            self.answering.set()
            self.server.shutdown()
            self.server.server_close()


class ServerStates:
    """Of a gallery."""

    SERVER = ("server-waiting", "server-unreachable", "server-list", "server-away")

    def server_states(self):
        library = Library(self.rtl)
        with library.is_set(), self.program_runs("-trackerconnectionmode", "QSPARQL_ENDPOINT"):
            waiting = self.rest()
            self.keep_wanted("server-waiting", waiting)
            library.go_away()
            unreachable = self.changed(waiting, "that the library cannot be reached", 0.2)
            self.keep_wanted("server-unreachable", unreachable)
            library.come_back()
            listed = self.changed(unreachable, "the list of the server", 3)
            self.keep_wanted("server-list", listed)
            library.go_away()
            self.keep_wanted("server-away", self.settled("the banner over the list", lambda image: self.has_banner(self.portrait(image))))
            # Nobody has to do anything.
            library.videos[0]["title"] = library.videos[0]["title"][:8]
            library.come_back()
            self.wait("what was changed meanwhile", lambda image: self.first_title_differs(image, listed))

    def first_title_differs(self, image, before):
        """The cell without its picture, which may come late."""
        def title(image):
            upright, height = self.portrait(image), self.cell_height()
            return upright.crop(tuple(round(value * self.scale) for value in self.title_of_first(upright.width / self.scale, height)))
        return touring.difference(title(image), title(before)) > 0.5

    def title_of_first(self, width, height):
        margin = (width - min(width, 720)) / 2
        left, right = margin + 238, width - margin - 16
        if self.rtl:
            left, right = width - right, width - left
        return left, touring.HEADER + 4, right, touring.HEADER + height - 4
