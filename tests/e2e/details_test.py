# SPDX-License-Identifier: GPL-3.0-or-later
"""The details of a video, from the list and from the player, and the ways back from there."""
import os
import pathlib
import shutil
import tempfile
import unittest

import accessbus
import e2e
import playermenu_test
from accessbus import Atspi, has, walk

ORANGE, BLUE = (250, 120, 20), (20, 120, 250)  # no test picture has them
BLANK = 4  # the deviation of the pixels of a page with nothing on it


DESCRIPTION = """[Kestrel Extension]
Name=Driven
Interface=com.harrow.Kestrel.extensions.PlayerInterface/1.0
Library={library}
"""


class Page(playermenu_test.Player):
    TITLES = ("Alpha", "Beta")
    SECONDS = 40

    def make_videos(self):
        for title in self.TITLES:
            e2e.clip(self.videos / f"{title}.mp4", self.SECONDS, "320x180", extra=("-metadata", f"comment={title}", "-movflags", "+faststart"))

    # --- the page

    def labels(self):
        """What stands on the page that is shown, from its heading on."""
        nodes = list(walk(self.window))
        return [node.get_name() for node in nodes
                if node.get_role() in (Atspi.Role.HEADING, Atspi.Role.LABEL) and has(node, Atspi.StateType.SHOWING)]

    def details(self, *expected):
        """The page with these labels, and a picture of it."""
        self.eventually(f"the labels {expected}", lambda: set(expected) <= set(self.labels()))
        self.is_not_blank("details")
        return self.labels()

    def is_not_blank(self, name):
        image = self.tour.still(f"{name}: at rest")
        self.tour.keep(name, image)
        self.assertGreater(e2e.touring.ImageStat.Stat(image.convert("L")).stddev[0], BLANK)

    def open_details(self, row):
        accessbus.Case.choose(self, row, "Details")

    def back(self):
        self.press(Atspi.Role.PUSH_BUTTON, "Back")
        self.await_end(Atspi.Role.HEADING, "Details")  # it has slid away

    def is_back_in_the_list(self):
        self.list = self.eventually("the list", lambda: self.find_list(len(self.TITLES)))
        self.eventually("its titles", lambda: self.titles() == list(self.TITLES))
        self.is_not_blank("list")

    def ask_for_information(self):
        self.show_bar()
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Details")



class Details(Page):
    def test_from_the_list_and_back(self):
        self.open_details(1)
        labels = self.details("Details", "Beta", "Length: 00:40", "Format: MP4", "Times played: 0")
        self.assertFalse([label for label in labels if label.startswith("Last played")])
        # What is in the file comes when it has been read.
        labels = self.details("File", "Resolution: 320\u00a0×\u00a0180", "Frame rate: 24\u00a0fps", "Codecs: H.264, AAC", "Audio tracks: 1", "Subtitles: 0",
                              f"Folder: ~/{self.videos.name}")
        self.assertLess(labels.index("Times played: 0"), labels.index("File"))
        self.back()
        self.is_back_in_the_list()
        self.open_details(0)
        self.details("Alpha", "Length: 00:40")
        self.tour.screen.key("Escape")
        self.is_back_in_the_list()

    def test_from_the_player_and_back(self):
        address = (self.videos / "Alpha.mp4").as_uri()
        self.tap_row(0)
        self.plays(address)
        self.ask_for_information()
        self.waits(address)
        labels = self.details("Alpha", "Length: 00:40", "Times played: 1")
        self.assertTrue([label for label in labels if label.startswith("Last played: ")])
        self.back()
        self.plays(address)
        # To go on is no new play.
        self.ask_for_information()
        self.details("Alpha", "Times played: 1")
        self.back()
        self.plays(address)
        self.tour.screen.key("BackSpace")
        self.is_back_in_the_list()
        # Played again, from the list.
        self.tap_row(0)
        self.plays(address)
        self.tour.screen.key("BackSpace")
        self.is_back_in_the_list()
        self.open_details(0)
        self.details("Alpha", "Times played: 2")
        self.back()
        self.is_back_in_the_list()

    def test_of_a_video_that_is_not_in_the_library(self):
        folder = pathlib.Path(tempfile.mkdtemp(dir=os.environ["TMPDIR"]))
        self.addCleanup(shutil.rmtree, folder)
        stranger = pathlib.Path(shutil.copy(self.videos / "Alpha.mp4", folder / "Stranger.mp4"))
        self.tour.program.terminate()
        self.tour.program.wait(10)
        self.start(str(stranger))
        self.plays(stranger.as_uri())
        self.ask_for_information()
        self.waits(stranger.as_uri())
        labels = self.details("Details", "Details not available")
        self.assertEqual(labels, ["Details", "Details not available"])
        self.back()
        self.plays(stranger.as_uri())


class Extension(Page):
    """From the details to what an extension shows, to what it plays, and back."""

    def setUp(self):
        folder = pathlib.Path(os.environ["HOME"]) / ".local/share/kestrel/extensions"
        folder.mkdir(parents=True)
        library = e2e.BIN.parent / "tests/extensions/ext_driven.so"
        (folder / "video_youtuberelatedextension.desktop").write_text(DESCRIPTION.format(library=library))
        super().setUp()

    def tile(self, color):
        """The middle of what has this colour."""
        image = self.tour.look()
        found = [(x, y) for y in range(0, image.height, 4) for x in range(0, image.width, 4) if image.getpixel((x, y)) == color]
        return found[len(found) // 2] if found else None

    def tap_tile(self, color):
        self.tour.screen.key("End")  # it may stand below the foot of the screen
        x, y = self.eventually("a tile", lambda: self.tile(color))
        self.tour.still("the tile at rest")
        x, y = self.tile(color)
        self.tour.screen.tap(self.tour.window[0] + x, self.tour.window[1] + y)

    def plays_the_first(self):
        self.plays((self.videos / "Alpha.mp4").as_uri())
        self.tour.screen.key("BackSpace")
        self.is_back_in_the_list()

    def test_from_the_list(self):
        self.open_details(1)
        self.details("Beta", "Length: 00:40")
        self.tap_tile(ORANGE)
        self.await_node(Atspi.Role.HEADING, "More of them")
        self.eventually("its tile", lambda: self.tile(BLUE))
        self.is_not_blank("extension")
        self.press(Atspi.Role.PUSH_BUTTON, "Back")
        self.details("Beta", "Length: 00:40")
        self.tap_tile(ORANGE)
        self.await_node(Atspi.Role.HEADING, "More of them")
        self.tap_tile(BLUE)
        self.plays_the_first()

    def test_from_the_player(self):
        self.tap_row(1)
        self.plays((self.videos / "Beta.mp4").as_uri())
        self.ask_for_information()
        self.details("Beta", "Times played: 1")
        self.tap_tile(ORANGE)
        self.await_node(Atspi.Role.HEADING, "More of them")
        self.is_not_blank("extension")
        self.tap_tile(BLUE)
        self.plays_the_first()
        self.open_details(1)
        self.details("Beta", "Times played: 1")
        self.back()
        self.is_back_in_the_list()


if __name__ == "__main__":
    unittest.main()
