# SPDX-License-Identifier: GPL-3.0-or-later
"""The card goes to a computer over USB, and comes back, while a person looks at the list or watches. Real mounts in a
namespace of the test's own, a small program for the USB mode daemon."""
import functools
import http.server
import os
import pathlib
import shutil
import threading
import unittest

import control
import e2e
import mounts
from e2e import touring
from PIL import ImageChops

DOCUMENTS = pathlib.Path("/home/user/MyDocs")


class MassStorage(control.Case):
    card = None  # where the file system of the card always is

    def setUp(self):
        DOCUMENTS.mkdir(exist_ok=True)
        mounts.bind(self.card, DOCUMENTS)
        self.away = False
        self.addCleanup(self.clear)
        super().setUp()
        self.usb = self.peer("usb_mode_daemon.py")

    def clear(self):
        if not self.away:
            mounts.unmount(DOCUMENTS)
        for thing in self.card.iterdir():
            shutil.rmtree(thing)

    def folder(self):
        return DOCUMENTS / "Movies"

    # --- the card

    def give_away(self):
        self.usb.command("state pre-unmount")
        mounts.unmount(DOCUMENTS)
        self.away = True
        self.usb.command("mode mass_storage")
        self.usb.command("state mass_storage")

    def take_back(self):
        self.usb.command("mode charging_only")
        self.usb.command("state USB disconnected")
        mounts.bind(self.card, DOCUMENTS)
        self.away = False

    @staticmethod
    def is_information_page(image):
        """No colour anywhere, and light words in the middle of a dark page."""
        red, green, blue = image.split()
        most = ImageChops.lighter(ImageChops.lighter(red, green), blue)
        least = ImageChops.darker(ImageChops.darker(red, green), blue)
        colourless = ImageChops.subtract(most, least).getextrema()[1] < 60
        middle = least.crop((image.width // 8, image.height // 4, image.width * 7 // 8, image.height * 3 // 4))
        light = sum(middle.histogram()[120:])
        return colourless and 200 < light < middle.width * middle.height * 0.1

    def wait_for_information_page(self, name):
        self.tour.keep(name, self.tour.wait("the information page", self.is_information_page))

    # --- what a person sees

    def test_in_the_library_its_page_covers_the_list_and_the_list_is_back_as_it_was(self):
        self.start_with_the_library()
        before = self.tour.still("the library at rest")
        self.give_away()
        self.wait_for_information_page("away")
        # Nobody gets beneath it.
        self.tour.tap_first_cell()
        self.tour.screen.key("Down", "Return")
        self.assertTrue(self.is_information_page(self.tour.still("the page at rest")))
        self.assertEqual(self.status(), "")
        self.take_back()
        self.tour.wait("the list as it was", lambda image: touring.difference(image, before) < 0.5)
        self.play(self.first)
        self.wait_until_it_plays(self.first)

    def test_during_play_the_warning_pauses_and_saves_before_the_card_goes(self):
        self.start_with_the_library()
        before = self.tour.still("the library at rest")
        self.play(self.first)
        self.wait_until_it_plays(self.first, 3)
        self.usb.command("state pre-unmount")
        e2e.wait_until("paused", lambda: self.status() == "Paused")
        place = e2e.wait_until("the place", lambda: self.saved_place(self.first))
        self.assertTrue(3 <= place <= 12, place)
        self.assertFalse(self.is_information_page(self.tour.look()))  # a warning, no more
        paused = self.tour.still("the paused player at rest")
        self.give_away()
        self.wait_for_information_page("away")
        self.take_back()
        self.tour.wait("the player is back", lambda image: not self.is_information_page(image))
        self.tour.keep("back")
        self.assertEqual(self.status(), "Paused")  # nobody asked it to go on
        self.tour.screen.key("space")
        self.wait_until_it_plays(self.first, place)
        self.assertGreater(touring.difference(paused, before), 4)
        self.tour.screen.key("BackSpace")
        self.wait_for_cells(2, 15)

    def test_independent_stream_is_not_covered_and_the_library_behind_it_is(self):
        elsewhere = self.home / "Elsewhere"
        e2e.clip(elsewhere / "Stream.mp4", control.SECONDS, "320x180", extra=("-movflags", "+faststart"))
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Quiet, directory=str(elsewhere)))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        address = f"http://127.0.0.1:{server.server_address[1]}/Stream.mp4"

        def streams(beyond=0.0):
            player = self.player()
            return (player.get("PlaybackStatus") == "Playing" and player["Metadata"].get("xesam:url") == address
                    and player["Position"] / 1e6 > beyond)
        self.start_with_the_library()
        self.call("play", "as", [address])
        e2e.wait_until("the stream plays", lambda: streams(1))
        self.give_away()
        place = self.position()
        e2e.wait_until("the stream goes on", lambda: streams(place + 2))
        self.assertFalse(self.is_information_page(self.tour.look()))
        # What is away lies behind it.
        self.tour.screen.key("BackSpace")
        self.wait_for_information_page("library")
        self.take_back()
        self.wait_for_cells(2, 20)

    def test_a_request_for_a_video_of_the_card_that_is_away(self):
        self.start_with_the_library()
        self.give_away()
        self.wait_for_information_page("away")
        self.play(self.first)
        # Who asked gets what follows every video that was asked for over the bus and cannot be played: the program ends.
        self.ended()

    def test_started_while_the_card_is_away(self):
        self.start_with_the_library()
        self.call("cancel")
        self.ended()
        self.give_away()
        self.start()
        self.wait_for_information_page("started")
        self.take_back()
        self.wait_for_cells(2, 20)


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        """A file that is not read to its end is no news."""

    def copyfile(self, source, outputfile):
        try:
            super().copyfile(source, outputfile)
        except (BrokenPipeError, ConnectionResetError):
            pass


if __name__ == "__main__":
    home, MassStorage.card = mounts.enter()
    os.environ["HOME"] = str(home)
    for variable, folder in (("XDG_DATA_HOME", ".local/share"), ("XDG_CACHE_HOME", ".cache"), ("XDG_CONFIG_HOME", ".config")):
        os.environ[variable] = str(home / folder)
    unittest.main()
