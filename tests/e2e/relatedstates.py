# SPDX-License-Identifier: GPL-3.0-or-later
"""The gallery's states of the videos that belong to one: below its details, on a page of their own, and from the network."""
import contextlib
import http.server
import io
import json
import threading

from PIL import Image, ImageDraw

from settingsfile import settings

SKIES = (("#7fa6d8", "#2d426b"), ("#f3c9a2", "#6d4660"), ("#d2efd6", "#21555a"))
TITLES = {False: ("A harbour in the morning", "Sailing round the island in three days, told by those who were there and those who stayed at home",
                  "How a sail is mended"),
          True: ("ميناء في الصباح", "رحلة شراعية حول الجزيرة في ثلاثة أيام كما يرويها من كانوا هناك ومن بقوا في البيت", "كيف يُرقع الشراع")}


def picture(number):
    """A JPEG file of a sky, hills and a sun."""
    sky, hills = SKIES[number % len(SKIES)]
    image = Image.new("RGB", (412, 232), sky)
    draw = ImageDraw.Draw(image)
    draw.ellipse((280, 30, 330, 80), fill="#ffffff")
    draw.polygon(((0, 232), (0, 170), (120, 110), (240, 180), (320, 140), (412, 200), (412, 232)), fill=hills)
    file = io.BytesIO()
    image.save(file, "JPEG")
    return file.getvalue()


class Answers(http.server.BaseHTTPRequestHandler):
    """A provider's answers: of any video the same three others."""

    def do_GET(self):
        name = self.path.partition("?")[0].strip("/")
        if name == "related":
            videos = [{"title": title, "address": f"/{number}.mp4", "thumbnail": f"/{number}.jpeg", "duration": 125 + 700 * number}
                      for number, title in enumerate(TITLES[self.server.rtl])]
            self.answer("application/json", json.dumps({"videos": videos}).encode())
        else:
            self.answer("image/jpeg", picture(int(name.partition(".")[0])))

    def answer(self, kind, body):
        self.send_response(200)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def provider(rtl=False):
    """A provider on this machine, set as a person sets one. The settings are in a file meanwhile."""
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Answers)
    server.rtl = rtl
    threading.Thread(target=server.serve_forever, daemon=True).start()
    address = f"http://127.0.0.1:{server.server_address[1]}/related"
    try:
        with settings("com/harrow/kestrel", related_videos_provider=address):
            yield
    finally:
        server.shutdown()
        server.server_close()


class RelatedStates:
    """Of a gallery."""

    RELATED = ("details-related", "details-related-focus", "details-related-press", "related-list", "related-list-foot")
    ONLINE = ("related-online",)

    def related_states(self):
        self.twice("related", self.related_of_the_list, self.RELATED)
        self.twice("related-online", self.related_of_the_network, self.ONLINE)

    def open_related(self):
        """The foot of the details of the second video of the list, where the others stand."""
        shown = self.choose(self.rest(15), "details", "the details")
        self.screen.key("End")
        return self.changed(shown, "the videos that belong to it", 3)

    def open_whole_list(self, related):
        self.screen.key(*["Tab"] * 5)  # the last that can be tapped
        self.screen.key("Return")
        return self.changed(related, "the whole list", 3)

    def related_of_the_list(self):
        with self.program_runs():
            related = self.open_related()
            self.keep_wanted("details-related", related)
            self.screen.key("Tab", "Tab")
            marked = self.changed(related, "the mark on the second row", 0.1)
            self.keep_wanted("details-related-focus", marked)
            self.pressed_row(marked)
            # The pointer took the mark away.
            self.keep_wanted("related-list", self.open_whole_list(related))
            self.screen.key("End")
            self.keep_wanted("related-list-foot", self.rest())

    def pressed_row(self, before):
        """A finger on the row in the middle of the screen, for as long as it rests there; then it leaves the row."""
        x, y = self.window[0] + self.window[2] / 2, self.window[1] + self.window[3] * 0.55
        self.screen.move(x, y)
        self.pointer("mousedown")
        try:
            image = self.wait("the pressed row", lambda image: 0.3 < abs(self.brightness(image) - self.brightness(before)))
            self.keep_wanted("details-related-press", image)
        finally:
            for step in range(1, 5):
                self.screen.move(x, y - 50 * step)
            self.pointer("mouseup")
            self.screen.key("End")
            self.rest()

    def related_of_the_network(self):
        with provider(self.rtl), self.program_runs():
            self.open_whole_list(self.open_related())
            self.screen.key("End")
            self.keep("related-online", self.rest())

    def keep_wanted(self, state, image):
        if self.wanted(state):
            self.keep(state, image)
