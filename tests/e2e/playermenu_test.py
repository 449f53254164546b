# SPDX-License-Identifier: GPL-3.0-or-later
"""The menu in the player's bar, by the pointer: sharing, renaming and deleting a stored video, a copy of one that is only here, and
none for a stream. The video waits behind what was opened, and goes on after it if it played before."""
import functools
import http.server
import os
import pathlib
import shutil
import tempfile
import threading
import unittest

import accessbus
import dbus
import e2e
from accessbus import Atspi, has
from control import INTERFACE, PLAYER, SERVICE

SECONDS = 40
LARGE = 3 << 30  # takes a while to copy


class Player(accessbus.Case):
    """What plays, and the pointer on what the accessibility bus tells the place of."""

    def setUp(self):
        self.bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.bus.close)
        super().setUp()

    # --- what plays

    def player(self):
        if not self.bus.name_has_owner(PLAYER):
            return {}
        return self.bus.call_blocking(PLAYER, "/org/mpris/MediaPlayer2", "org.freedesktop.DBus.Properties", "GetAll", "s",
                                      ["org.mpris.MediaPlayer2.Player"])

    def position(self):
        return self.player().get("Position", 0) / 1e6

    def is_told(self, status, address):
        player = self.player()
        return player.get("PlaybackStatus") == status and player.get("Metadata", {}).get("xesam:url") == address

    def plays(self, address):
        e2e.wait_until(f"{address} plays", lambda: self.is_told("Playing", address))
        before = self.position()
        e2e.wait_until("it goes on", lambda: self.position() > before)

    def waits(self, address):
        e2e.wait_until(f"{address} is paused", lambda: self.is_told("Paused", address))

    def is_quieter(self):
        self.tour.screen.key("Down")
        return self.player().get("Volume", 1) < 1

    # --- the pointer

    def place(self, node):
        place = node.get_component_iface().get_extents(Atspi.CoordType.SCREEN)
        return (place.x, place.y, place.width, place.height)

    def tap(self, node):
        """Where it stands, when it has come to rest there."""
        last = [None]

        def rests():
            before, last[0] = last[0], self.place(node)
            return before == last[0]
        self.eventually(f"{node.get_name()} at rest", rests)
        x, y, width, height = last[0]
        self.tour.screen.tap(x + width / 2, y + height / 2)

    def tap_on(self, role, name):
        self.tap(self.await_node(role, name))

    def show_bar(self):
        """A tap on the picture brings the bar; it goes by itself while the video plays, and never while it waits."""
        menu = self.find(Atspi.Role.PUSH_BUTTON, "Menu")
        if menu is None or not has(menu, Atspi.StateType.SHOWING):
            self.tour.find_turn()
            self.tour.show_controls()
        return self.await_node(Atspi.Role.PUSH_BUTTON, "Menu")

    def open_menu(self, *expected):
        self.tap(self.show_bar())
        menu = self.await_node(Atspi.Role.POPUP_MENU)
        self.assertEqual([menu.get_child_at_index(index).get_name() for index in range(menu.get_child_count())], list(expected))

    def choose(self, entry):
        self.tap_on(Atspi.Role.MENU_ITEM, entry)
        self.await_end(Atspi.Role.POPUP_MENU)

    def tap_row(self, row):
        self.tap(self.list.get_child_at_index(row))
        self.await_end(Atspi.Role.LIST)

    def library(self, *titles):
        self.list = self.eventually("the list", lambda: self.find_list(len(titles)))
        self.eventually(", ".join(titles), lambda: self.titles() == list(titles))


class Stored(Player):
    TITLES = ("Alpha", "Beta")

    def make_videos(self):
        for title in self.TITLES:
            e2e.clip(self.videos / f"{title}.mp4", SECONDS, "320x180", extra=("-metadata", f"comment={title}", "-movflags", "+faststart"))

    def test_a_stored_video_is_shared_renamed_and_deleted(self):
        address = (self.videos / "Alpha.mp4").as_uri()
        self.tap_row(0)
        self.plays(address)

        # Beside the menu: it goes on.
        self.open_menu("Share", "Rename", "Delete")
        self.waits(address)
        self.tour.screen.key("Escape")
        self.await_end(Atspi.Role.POPUP_MENU)
        self.plays(address)

        # Shared: it stays as it is until the person comes back to it.
        self.open_menu("Share", "Rename", "Delete")
        self.choose("Share")
        self.await_node(Atspi.Role.DIALOG, "Alpha.mp4")
        self.waits(address)
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Copy address")
        self.await_end(Atspi.Role.DIALOG)
        self.tour.screen.key("space")
        self.plays(address)

        # Renamed: the bar tells the new title, and the video goes on.
        self.open_menu("Share", "Rename", "Delete")
        self.choose("Rename")
        sheet = self.await_node(Atspi.Role.DIALOG, "Rename video")
        field = self.find(Atspi.Role.TEXT, within=sheet)
        self.eventually("the field with the focus", lambda: has(field, Atspi.StateType.FOCUSED))
        self.waits(address)
        self.tour.screen.type(" zebra")
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Save")
        self.await_end(Atspi.Role.DIALOG)
        self.plays(address)
        self.show_bar()
        self.await_node(Atspi.Role.LABEL, "Alpha zebra")

        # For a moment after the sheet no key is the player's; its answer to one that harms nothing tells when they are again.
        self.eventually("a key makes it quieter", self.is_quieter)

        # No: nothing is lost, and what was paused before stays so.
        self.tour.screen.key("space")
        self.waits(address)
        self.open_menu("Share", "Rename", "Delete")
        self.choose("Delete")
        question = self.await_node(Atspi.Role.DIALOG, "Delete video?")
        self.assertEqual(self.texts(question), ["Delete video?", "Alpha zebra"])
        self.tap_on(Atspi.Role.PUSH_BUTTON, "No")
        self.await_end(Atspi.Role.DIALOG)
        self.eventually("the menu can be opened again", lambda: has(self.show_bar(), Atspi.StateType.ENABLED))
        self.waits(address)

        # Yes: the file is gone, and the page with it.
        self.open_menu("Share", "Rename", "Delete")
        self.choose("Delete")
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Yes")
        e2e.wait_until("the file is gone", lambda: not (self.videos / "Alpha.mp4").exists())
        self.library("Beta")
        self.assertTrue((self.videos / "Beta.mp4").exists())

    def test_a_stream_has_no_menu(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Quiet, directory=str(self.videos)))
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        address = f"http://127.0.0.1:{server.server_address[1]}/Beta.mp4"
        e2e.wait_until("the program on the bus", lambda: self.bus.name_has_owner(SERVICE))
        self.bus.call_blocking(SERVICE, "/", INTERFACE, "play", "as", [[address]])
        self.plays(address)
        menu = self.show_bar()
        self.assertFalse(has(menu, Atspi.StateType.ENABLED))
        self.tap(menu)
        self.tour.keep("dimmed")
        self.plays(address)
        self.assertIsNone(self.find(Atspi.Role.POPUP_MENU))


class SaveAs(Player):
    """A video that another program left somewhere: it is opened by its path, and the library does not have it."""

    NAME = "My trip.final"

    def make_videos(self):
        self.elsewhere = pathlib.Path(tempfile.mkdtemp(dir="/dev/shm"))  # no home shares its blocks
        self.addCleanup(shutil.rmtree, self.elsewhere)
        self.video = e2e.clip(self.elsewhere / f"{self.NAME}.mp4", SECONDS, "320x180")
        os.utime(self.video, (1000000000, 1000000000))
        self.taken = self.videos / f"{self.NAME}.mp4"
        self.taken.write_bytes(b"somebody's")

    def begin(self):
        self.start(str(self.video))
        self.plays(self.video.as_uri())

    def enlarge(self):
        """A box at its end that players skip, and that takes a while to copy."""
        with self.video.open("ab") as file:
            file.write((1).to_bytes(4, "big") + b"free" + LARGE.to_bytes(8, "big"))
            file.truncate(file.tell() + LARGE - 16)
        os.utime(self.video, (1000000000, 1000000000))

    def open_form(self):
        self.open_menu("Save as")
        self.choose("Save as")
        sheet = self.await_node(Atspi.Role.DIALOG, "Save as")
        field = self.find(Atspi.Role.TEXT, "Name", within=sheet)
        self.eventually("the field with the focus", lambda: has(field, Atspi.StateType.FOCUSED))
        self.waits(self.video.as_uri())
        return sheet

    def copy_held(self):
        """In the midst of it."""
        return e2e.reading_held(self.tour.program.pid, "save-as copy", self.video)

    def saved(self):
        return sorted(path.name for path in self.videos.iterdir())

    def test_a_copy_is_saved(self):
        address = self.video.as_uri()
        # The form, and another thought.
        sheet = self.open_form()
        self.assertEqual(self.read(self.find(Atspi.Role.TEXT, within=sheet)), self.NAME)
        self.eventually("size and room", lambda: len(self.texts(sheet)) == 5)
        self.assertEqual(self.texts(sheet)[:3], ["Save as", ".mp4", "Folder: Videos"])
        self.tour.keep("form")
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Cancel")
        self.await_end(Atspi.Role.DIALOG)
        self.plays(address)

        # A name that is taken is asked about, and kept.
        self.open_form()
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Save")
        self.await_node(Atspi.Role.DIALOG, "Replace the file?")
        self.tour.keep("taken")
        self.tap_on(Atspi.Role.PUSH_BUTTON, "No")
        self.eventually("the form alone", lambda: self.find(Atspi.Role.DIALOG, "Replace the file?") is None)
        self.assertEqual(self.taken.read_bytes(), b"somebody's")

        # A name that cannot be is told of at once.
        sheet = self.await_node(Atspi.Role.DIALOG, "Save as")
        self.write(self.find(Atspi.Role.TEXT, within=sheet), "a/b")
        self.await_node(Atspi.Role.ALERT, "A name cannot contain “/” or begin with a dot.")
        self.tour.keep("error")

        # It takes a while, and is cancelled: nothing of it is left.
        self.enlarge()
        self.write(self.find(Atspi.Role.TEXT, within=sheet), "Holiday")
        self.await_end(Atspi.Role.ALERT)
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Save")
        with self.copy_held():
            self.await_node(Atspi.Role.PROGRESS_BAR, "Saving “Holiday.mp4”")
            self.assertTrue(self.is_told("Paused", address))
            self.tour.screen.key("Escape")
            self.await_end(Atspi.Role.DIALOG)
        self.plays(address)
        e2e.wait_until("nothing of it", lambda: self.saved() == [self.taken.name])

        # And once more to the end.
        os.truncate(self.video, self.video.stat().st_size - LARGE)
        os.utime(self.video, (1000000000, 1000000000))
        sheet = self.open_form()
        self.tour.screen.type("Holiday")  # in place of the name that is proposed
        self.tour.screen.key("Return")
        self.await_end(Atspi.Role.DIALOG)
        copy = self.videos / "Holiday.mp4"
        self.assertEqual(copy.read_bytes(), self.video.read_bytes())
        self.assertEqual(copy.stat().st_mtime, 1000000000)
        self.plays(address)
        self.assertEqual(self.saved(), ["Holiday.mp4", self.taken.name])

        # The library has it, and the menu of what it has.
        self.tap(self.await_back())
        self.library("Holiday")
        self.tap_row(0)
        self.plays(copy.as_uri())
        self.open_menu("Share", "Rename", "Delete")

    def await_back(self):
        self.show_bar()
        return self.await_node(Atspi.Role.PUSH_BUTTON, "Back")


class Quiet(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        """Who asks is no news."""

    def copyfile(self, source, outputfile):
        try:
            super().copyfile(source, outputfile)
        except (BrokenPipeError, ConnectionResetError):
            pass


if __name__ == "__main__":
    unittest.main()
