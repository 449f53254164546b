# SPDX-License-Identifier: GPL-3.0-or-later
"""Addresses of a web server on the command line: what is shown while they come slowly, fail, or stop coming."""
import pathlib
import re
import tempfile
import unittest

import accessbus
import control
import e2e
from accessbus import Atspi

LOST = "The connection to the video failed."
MISSING = "The video was not found."


class Streams(accessbus.Case, control.Case):
    def make_videos(self):
        pass  # those of the other tests with a bus

    def begin(self):
        served = pathlib.Path(tempfile.mkdtemp(prefix="served-", dir=self.home))
        state = pathlib.Path(tempfile.mkdtemp(prefix="server-", dir=self.home))
        # A steady number of bytes a second, so that a fraction of the file is one of its time.
        e2e.clip(served / "film.mp4", 30, "320x180", extra=("-b:v", "800k", "-minrate", "800k", "-maxrate", "800k", "-bufsize", "800k", "-x264-params",
                                                          "nal-hrd=cbr", "-movflags", "faststart"))
        self.peer("mediaserver.py", str(served), str(state))
        self.server = f"http://127.0.0.1:{(state / 'port').read_text()}"

    def percentage(self):
        return next((node.get_name() for node in accessbus.walk(self.window)
                     if node.get_role() == Atspi.Role.LABEL and re.fullmatch(r"\d+\s?%", node.get_name())), None)

    def plays(self, beyond):
        return self.status() == "Playing" and self.position() > beyond

    def leave(self):
        self.tour.screen.key("BackSpace")
        self.eventually("the list", lambda: self.find_list(2))

    def test_a_slow_network_shows_how_far_it_is(self):
        self.start(f"{self.server}/rate=150000/film.mp4")
        self.eventually("a percentage", self.percentage)
        self.tour.keep("buffering")
        self.eventually("it plays", lambda: self.plays(1))
        self.assertIsNone(self.find(Atspi.Role.ALERT))
        self.leave()
        e2e.wait_until("it has ended", lambda: self.status() != "Playing")

    def test_a_server_that_stalls_is_told(self):
        self.start(f"{self.server}/stall=0.25/film.mp4")
        self.eventually("it plays", lambda: self.plays(1))
        self.eventually(LOST, lambda: self.find(Atspi.Role.ALERT, LOST), 60)
        self.tour.keep("lost")
        e2e.wait_until("it has stopped", lambda: self.status() == "Stopped")
        self.assertIsNone(self.find(Atspi.Role.LIST))  # the page stays until the person leaves it
        self.leave()

    def test_an_address_that_is_not_there_is_told(self):
        self.start(f"{self.server}/plain/nothing.mp4")
        self.eventually(MISSING, lambda: self.find(Atspi.Role.ALERT, MISSING))
        self.tour.keep("missing")
        self.assertIsNone(self.find(Atspi.Role.LIST))
        self.leave()


if __name__ == "__main__":
    unittest.main()
