# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests share in which other programs and the device act on the running program."""
import os
import pathlib
import subprocess
import time

import dbus
import e2e

SERVICE = "com.harrow.orlan.sorelkit.KestrelService"
INTERFACE = "com.harrow.orlan.sorelkit.KestrelInterface"
PLAYER = "org.mpris.MediaPlayer2.com.harrow.Kestrel"
SECONDS = 40  # of a clip


class Listener:
    """Another program that hears the signals of the interface."""

    def __enter__(self):
        self.monitor = subprocess.Popen(["dbus-monitor", "--address", os.environ["DBUS_SESSION_BUS_ADDRESS"], "--profile",
                                         f"type='signal',interface='{INTERFACE}'"], stdout=subprocess.PIPE, text=True)
        self.monitor.stdout.readline()  # the heading: it listens
        return self

    def __exit__(self, *_):
        self.monitor.terminate()
        self.monitor.wait(10)
        self.monitor.stdout.close()

    def next(self):
        """The name of the next signal, waited for."""
        for line in self.monitor.stdout:
            if line.split()[-1] in ("launched", "playbackStarted"):
                return line.split()[-1]
        raise AssertionError("the bus is gone")


class Case(e2e.Case):
    """Two clips, a session bus and a system bus; services on them are mocked one by one."""

    def setUp(self):
        self.system = e2e.Bus("DBUS_SYSTEM_BUS_ADDRESS")
        self.addCleanup(self.system.stop)
        self.mocks = []
        super().setUp()
        self.bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        self.first = e2e.clip(self.folder() / "First.mp4", SECONDS, "320x180")
        self.second = e2e.clip(self.folder() / "Second one.mp4", SECONDS, "320x180", extra=("-metadata", "title=Second"))

    def folder(self):
        """Where the clips lie."""
        return self.videos

    def tearDown(self):
        super().tearDown()
        for mock in self.mocks:
            mock.stop()
        self.bus.close()

    # --- the program

    def start(self, *arguments):
        self.tour.start(*arguments)
        e2e.wait_until("the program on the bus", lambda: self.bus.name_has_owner(SERVICE))

    def start_for_requests(self):
        """As the bus starts it for a call: without a page, and with a window only when there is something to see."""
        self.tour.program = subprocess.Popen([str(e2e.BIN / "kestrel"), "-servicefw"])
        e2e.wait_until("the program on the bus", lambda: self.bus.name_has_owner(SERVICE))

    def start_with_the_library(self):
        self.start()
        self.wait_for_cells(2, 30)

    def call(self, method, signature="", *arguments):
        return self.bus.call_blocking(SERVICE, "/", INTERFACE, method, signature, arguments)

    def play(self, path, position=None):
        if position is None:
            self.call("play", "as", [path.as_uri()])
        else:
            self.call("play", "asu", [path.as_uri()], position)

    def player(self, name=PLAYER):
        """What the player tells of itself; nothing before there was one."""
        if not self.bus.name_has_owner(name):
            return {}
        return self.bus.call_blocking(name, "/org/mpris/MediaPlayer2", "org.freedesktop.DBus.Properties", "GetAll", "s",
                                      ["org.mpris.MediaPlayer2.Player"])

    def status(self):
        return str(self.player().get("PlaybackStatus", ""))

    def position(self):
        return self.player().get("Position", 0) / 1e6

    def is_playing(self, path, beyond=0.0, name=PLAYER):
        player = self.player(name)
        return (player.get("PlaybackStatus") == "Playing" and player.get("Metadata", {}).get("xesam:url") == path.as_uri()
                and player.get("Position", 0) / 1e6 > beyond)

    def wait_until_it_plays(self, path, beyond=0.0, seconds=20):
        e2e.wait_until(f"{path.name} plays", lambda: self.is_playing(path, beyond), seconds)

    def ended(self):
        """The program has ended by itself, and well."""
        self.assertEqual(self.tour.program.wait(20), 0)

    def windows(self):
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(self.tour.program.pid)], capture_output=True,
                              text=True, check=False).stdout.split()

    def peer(self, script, *arguments):
        peer = e2e.Peer(script, *arguments)
        self.mocks.append(peer)
        return peer

    def mock(self, *arguments, **parameters):
        mock = e2e.Mock(*arguments, **parameters)
        self.mocks.append(mock)
        return mock

    def template(self, kind, name, path, file, **parameters):
        """A service whose mock is written down in a file of the tests' support folder."""
        return self.mock(kind, name, path, str(e2e.SOURCE / "tests/support" / file), template=parameters)

    def goes_on(self):
        """Whether the position moves within a second and a half."""
        before = self.position()
        end = time.monotonic() + 1.5
        while time.monotonic() < end:
            if self.position() > before + 0.2:
                return True
            time.sleep(0.1)
        return False
