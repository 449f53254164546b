# SPDX-License-Identifier: GPL-3.0-or-later
"""The road of the README where no X server is: the program takes the Wayland display by itself, and does there what it does
elsewhere."""
import os
import subprocess
import unittest

import dbus
import e2e
import waylandseat
from PIL import ImageStat

APPLICATION = "com.harrow.Kestrel"
PLAYER = "org.mpris.MediaPlayer2.com.harrow.Kestrel"
PORTAL = ("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings")
DARK, LIGHT = 1, 2
SHARP = 0.6  # of 255, a pixel's difference in the middle


def is_light(image):
    return min(ImageStat.Stat(image.crop((0, 0, image.width, 8))).mean) > 200


class Wayland(e2e.Case):
    def setUp(self):
        super().setUp()
        self.compositor = waylandseat.Compositor(self.tour.screen.size)
        self.addCleanup(self.compositor.stop)
        self.seat = self.tour.screen = waylandseat.Seat(self.compositor)
        self.addCleanup(self.seat.close)
        self.portal = e2e.Mock("session", *PORTAL)
        self.addCleanup(self.portal.stop)
        self.portal.method("ReadAll", "as", "a{sa{sv}}",
                           f"ret = {{'org.freedesktop.appearance': {{'color-scheme': dbus.UInt32({DARK}, variant_level=1)}}}}")
        self.bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.bus.close)

    def start(self):
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "QT_QPA_PLATFORM")}
        environment.update(WAYLAND_DISPLAY=self.compositor.display, XDG_SESSION_TYPE="wayland")
        with open(self.pictures / "kestrel.log", "a", encoding="utf-8") as log:
            self.tour.program = subprocess.Popen([str(e2e.BIN / "kestrel")], env=environment, stdout=subprocess.DEVNULL, stderr=log)
        self.tour.handset = True
        e2e.wait_until("the window fills the output", lambda: self.window().get("fullscreen_mode") == 1)

    def window(self):
        return self.compositor.windows().get(APPLICATION, {})

    def wait_for_hold(self, held):
        e2e.wait_until(f"the screen is {'' if held else 'not '}kept on", lambda: self.window()["inhibit_idle"] == held)

    def playback(self):
        return self.bus.call_blocking(PLAYER, "/org/mpris/MediaPlayer2", "org.freedesktop.DBus.Properties", "Get", "ss",
                                      ("org.mpris.MediaPlayer2.Player", "PlaybackStatus"))

    def set_scale(self, scale):
        self.compositor.ask("output", "*", "scale", str(scale))

    def take_scheme(self, scheme):
        self.portal.emit("SettingChanged", "ssv", ("org.freedesktop.appearance", "color-scheme", dbus.UInt32(scheme, variant_level=1)))

    def test_whole_road(self):
        subprocess.run([str(e2e.SOURCE / "scripts/make-demo-clips"), str(self.videos), "concert", "VID", "Autumn", "First", "Snow"],
                       check=True, stdout=subprocess.DEVNULL)
        self.start()
        self.wait_for_cells(5, 90)
        at_rest = self.tour.still("the list: at rest")
        self.tour.keep("list", at_rest)
        self.tour.step_filter()
        self.check_scale(at_rest)
        self.check_scheme()
        self.tour.step_play()
        self.wait_for_hold(True)
        self.check_leaving()
        self.tour.step_back()
        self.wait_for_hold(False)
        self.assertNotIn("Wayland connection", (self.pictures / "kestrel.log").read_text())

    def check_scale(self, sharp):
        """The same list with two pixels for one: as sharp as it was, not stretched."""
        self.set_scale(2)
        self.tour.wait("the list is sharp in the new scale", lambda image: e2e.touring.difference(image, sharp) < SHARP)
        self.set_scale(1)
        self.tour.wait("the list is sharp in the old scale", lambda image: e2e.touring.difference(image, sharp) < SHARP)

    def check_scheme(self):
        self.take_scheme(LIGHT)
        self.tour.wait("light colours", is_light)
        self.take_scheme(DARK)
        self.tour.wait("dark colours", lambda image: not is_light(image))

    def check_leaving(self):
        """A video that nobody sees waits."""
        self.assertEqual(self.playback(), "Playing")
        self.compositor.ask("workspace", "2")
        e2e.wait_until("the video pauses", lambda: self.playback() == "Paused")
        self.wait_for_hold(False)
        self.compositor.ask("workspace", "1")
        self.tour.wait("the video is back", self.tour.player_shown)


if __name__ == "__main__":
    unittest.main()
