# SPDX-License-Identifier: GPL-3.0-or-later
"""The device's power and the running program: sleep waits for the place in the video, the display stays on while it plays,
and services that hang keep nobody from watching."""
import os
import signal
import subprocess
import sys
import unittest

import dbus
import e2e

SERVICE = "com.harrow.orlan.sorelkit.KestrelService"
INTERFACE = "com.harrow.orlan.sorelkit.KestrelInterface"
PLAYER = "org.mpris.MediaPlayer2.com.harrow.Kestrel"
PLAYER_PATH = "/org/mpris/MediaPlayer2"
LOGIN = ("org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager")
SAVER = ("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver")
MOCK = "org.freedesktop.DBus.Mock"
LOCK = ("sleep", "com.harrow.Kestrel", "delay")


class Peer:
    """A service that a template of python-dbusmock plays."""

    def __init__(self, address, template, service):
        self.name, self.path, self.interface = service
        environment = dict(os.environ, DBUS_SYSTEM_BUS_ADDRESS=address, DBUS_SESSION_BUS_ADDRESS=address, PYTHONDONTWRITEBYTECODE="1")
        self.process = subprocess.Popen([sys.executable, "-m", "dbusmock", "-t", template], env=environment, stdout=subprocess.DEVNULL)
        self.bus = dbus.bus.BusConnection(address)
        e2e.wait_until(f"{self.name} on the bus", lambda: self.bus.name_has_owner(self.name))

    def call(self, method, interface=None, signature=None, *arguments):
        return self.bus.call_blocking(self.name, self.path, interface or self.interface, method, signature, arguments)

    def freeze(self):
        self.process.send_signal(signal.SIGSTOP)

    def thaw(self):
        self.process.send_signal(signal.SIGCONT)

    def stop(self):
        self.thaw()
        self.process.kill()
        self.process.wait(10)
        self.bus.close()


class Power(e2e.Case):
    def setUp(self):
        self.system = e2e.Bus("DBUS_SYSTEM_BUS_ADDRESS")
        self.addCleanup(self.system.stop)
        self.session = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        super().setUp()
        self.bus = dbus.bus.BusConnection(self.session)
        self.peers = []
        self.clip = e2e.clip(self.videos / "Long.mp4", 40, "320x180")

    def tearDown(self):
        super().tearDown()
        for peer in self.peers:
            peer.stop()
        self.bus.close()

    def login(self):
        self.peers.append(Peer(self.system.address, "logind", LOGIN))
        return self.peers[-1]

    def screen_saver(self):
        self.peers.append(Peer(self.session, str(e2e.SOURCE / "tests/support/mocks/screensaver.py"), SAVER))
        return self.peers[-1]

    def start_and_play(self):
        self.tour.start()
        e2e.wait_until("the program on the bus", lambda: self.bus.name_has_owner(SERVICE))
        self.wait_for_cells(1, 30)
        self.bus.call_blocking(SERVICE, "/", INTERFACE, "play", "as", [[self.clip.as_uri()]])
        e2e.wait_until("it plays", lambda: self.status() == "Playing" and self.position() > 2)

    def player(self, name):
        if not self.bus.name_has_owner(PLAYER):
            return None
        return self.bus.call_blocking(PLAYER, PLAYER_PATH, "org.freedesktop.DBus.Properties", "Get", "ss",
                                      ["org.mpris.MediaPlayer2.Player", name])

    def status(self):
        return str(self.player("PlaybackStatus") or "")

    def position(self):
        return (self.player("Position") or 0) / 1e6

    def toggle(self):
        self.bus.call_blocking(PLAYER, PLAYER_PATH, "org.mpris.MediaPlayer2.Player", "PlayPause", "", [])

    @staticmethod
    def locks(login):
        return [(str(lock[0]), str(lock[1]), str(lock[3])) for lock in login.call("ListInhibitors")]

    @staticmethod
    def announce(login, sleep):
        login.call("EmitSignal", MOCK, "sssav", LOGIN[2], "PrepareForSleep", "b", [dbus.Boolean(sleep)])

    def test_sleep_waits_until_the_place_is_on_disk(self):
        login = self.login()
        self.start_and_play()
        self.assertEqual(self.locks(login), [LOCK])
        self.announce(login, True)
        e2e.wait_until("the device may sleep", lambda: not self.locks(login))
        # Power may be cut from here on.
        place = self.saved_place(self.clip)
        self.assertIsNotNone(place)
        self.assertTrue(2 <= place <= 20, place)
        self.assertEqual(self.status(), "Paused")
        self.announce(login, False)
        e2e.wait_until("the next sleep waits, too", lambda: self.locks(login) == [LOCK])
        self.assertEqual(self.status(), "Paused")

    def test_display_stays_on_while_it_plays(self):
        saver = self.screen_saver()

        def holders():
            return [str(holder) for holder in saver.call("Holders", MOCK)]
        self.start_and_play()
        e2e.wait_until("the display stays on", lambda: len(holders()) == 1)
        self.assertEqual(holders(), ["com.harrow.Kestrel: A video is playing"])
        self.toggle()
        e2e.wait_until("the display may go off", lambda: not holders())
        self.toggle()
        e2e.wait_until("the display stays on again", lambda: len(holders()) == 1)
        self.tour.screen.key("BackSpace")
        e2e.wait_until("the display may go off in the library", lambda: not holders())

    def test_services_that_hang_keep_nobody_from_watching(self):
        login = self.login()
        saver = self.screen_saver()
        for peer in (login, saver):
            peer.freeze()
        self.start_and_play()
        saver.thaw()
        e2e.wait_until("the display stays on", lambda: len(saver.call("Holders", MOCK)) == 1)
        login.thaw()
        e2e.wait_until("sleep waits", lambda: self.locks(login) == [LOCK])
        # The lock of a screen that was covered meanwhile.
        saver.call("Activate", MOCK, "b", True)
        e2e.wait_until("paused", lambda: self.status() == "Paused")
        e2e.wait_until("the display may go off", lambda: len(saver.call("Holders", MOCK)) == 0)


if __name__ == "__main__":
    unittest.main()
