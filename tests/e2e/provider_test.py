# SPDX-License-Identifier: GPL-3.0-or-later
"""Videos of a provider on the network, which is the example of its documentation: set while the details are open, played as a stream,
and taken away again."""
import os
import pathlib
import re
import socket
import subprocess
import sys
import unittest

os.environ["GSETTINGS_BACKEND"] = "keyfile"  # which other programs change

import details_test  # noqa: E402
import e2e  # noqa: E402

DOCUMENT = e2e.SOURCE / "docs/related-provider.md"
ORANGE = (255, 165, 0)  # the picture of its film; nothing else has it
SCHEMAS = e2e.BIN.parent / "share/glib-2.0/schemas"


def free_port():
    with socket.socket() as tried:
        tried.bind(("127.0.0.1", 0))
        return tried.getsockname()[1]


class Provider(details_test.Page):
    TITLES = ("Alpha",)

    def setUp(self):
        (pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "glib-2.0/settings").mkdir(parents=True, exist_ok=True)
        super().setUp()

    def serve(self):
        """The example as it is printed, in a folder with a film, its picture and a film that has nothing to do with it."""
        folder = self.home / "served"
        film = e2e.clip(folder / "Alpha in the woods.mp4", self.SECONDS, "320x180", extra=("-movflags", "+faststart"))
        subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i", "color=c=0xffa500:size=412x232", "-frames:v", "1",
                        str(film.with_suffix(".jpeg"))], check=True)
        (folder / "Gamma.mp4").write_bytes(b"")
        program = re.search(r"```python\n(.*?)```", DOCUMENT.read_text(encoding="utf-8"), re.S).group(1)
        (self.home / "provider.py").write_text(program, encoding="utf-8")
        port = free_port()
        self.log = self.home / "provider.log"
        with self.log.open("w", encoding="utf-8") as log:
            server = subprocess.Popen([sys.executable, str(self.home / "provider.py"), str(port)], cwd=folder, stderr=log)
        self.addCleanup(server.wait, 10)
        self.addCleanup(server.terminate)
        e2e.wait_until("the provider", lambda: self.answers(port))
        return f"http://127.0.0.1:{port}"

    def answers(self, port):
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
        except OSError:
            return False
        return True

    def set_provider(self, address):
        subprocess.run(["gsettings", "--schemadir", str(SCHEMAS), "set", "com.harrow.kestrel", "related-videos-provider", address], check=True)

    def questions(self):
        return re.findall(r'"(GET /related\S*) ', self.log.read_text(encoding="utf-8"))

    def film(self):
        """The middle of the picture of its film."""
        image = self.tour.look()
        found = [(x, y) for y in range(0, image.height, 4) for x in range(0, image.width, 4)
                 if all(abs(part - expected) < 12 for part, expected in zip(image.getpixel((x, y)), ORANGE))]
        return found[len(found) // 2] if found else None

    def await_film(self):
        def at_the_foot():
            self.tour.screen.key("End")
            return self.film()
        self.eventually("its film", at_the_foot)

    def tap_film(self):
        self.await_film()
        self.tour.still("its film at rest")
        x, y = self.film()
        self.tour.screen.tap(self.tour.window[0] + x, self.tour.window[1] + y)

    def test_its_videos_are_shown_and_played(self):
        server = self.serve()
        self.open_details(0)
        self.details("Details", "Alpha", "Length: 00:40")
        self.assertIsNone(self.film())
        self.assertEqual(self.questions(), [])

        # Set while the page is open.
        self.set_provider(f"{server}/related")
        self.await_film()
        self.tour.keep("online", self.tour.still("its film at rest"))
        self.assertEqual(self.questions(), ["GET /related?title=Alpha"])

        # Taken away again.
        self.set_provider("")
        self.eventually("the end of its film", lambda: self.film() is None)

        # A stream, and back.
        self.set_provider(f"{server}/related")
        self.tap_film()
        self.plays(f"{server}/Alpha%20in%20the%20woods.mp4")
        self.tour.screen.key("BackSpace")
        self.is_back_in_the_list()
        self.assertEqual(self.questions(), 2 * ["GET /related?title=Alpha"])


if __name__ == "__main__":
    unittest.main()
