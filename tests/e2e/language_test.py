# SPDX-License-Identifier: GPL-3.0-or-later
"""The system's language becomes another while the program runs: what is on the screen follows."""
import unittest

import dbus
import dbus.lowlevel
import e2e
import tour as touring


class Language(e2e.Case):
    def setUp(self):
        self.system = e2e.Bus("DBUS_SYSTEM_BUS_ADDRESS")
        self.addCleanup(self.system.stop)
        super().setUp()
        self.bus = dbus.bus.BusConnection(self.system.address)
        self.addCleanup(self.bus.close)

    def set_language(self, name):
        """As the system's settings tell it."""
        signal = dbus.lowlevel.SignalMessage("/org/freedesktop/locale1", "org.freedesktop.DBus.Properties", "PropertiesChanged")
        values = dbus.Dictionary({"Locale": dbus.Array([f"LANG={name}.UTF-8"], signature="s")}, signature="sv")
        signal.append("org.freedesktop.locale1", values, dbus.Array([], signature="s"), signature="sa{sv}as")
        self.bus.send_message(signal)
        self.bus.flush()

    def window_title(self):
        window = touring.run("xdotool", "search", "--onlyvisible", "--pid", str(self.tour.program.pid)).stdout.split()[-1]
        return touring.run("xdotool", "getwindowname", window).stdout.strip()

    def test_the_library_follows_the_language(self):
        e2e.clip(self.videos / "Alpha.mp4")
        self.tour.start()
        self.wait_for_cells(1, 30)
        plain = self.tour.still("the list")
        self.tour.screen.type("zz")
        self.tour.wait("no results", lambda image: touring.difference(image, plain) > 1)
        english = self.tour.still("English")
        self.assertEqual(self.window_title(), "Videos")
        self.set_language("fi_FI")
        e2e.wait_until("the title in Finnish", lambda: self.window_title() == "Videot")
        self.tour.wait("a header in Finnish", lambda image: touring.difference(image, english) > 0.1)
        self.tour.keep("finnish", self.tour.still("Finnish"))
        self.set_language("ar_EG")
        e2e.wait_until("the title in Arabic", lambda: self.window_title() not in ("Videot", "Videos"))
        self.tour.keep("arabic", self.tour.still("Arabic"))
        self.set_language("en_US")
        e2e.wait_until("the title in English", lambda: self.window_title() == "Videos")
        self.assertIsNone(self.tour.program.poll())


if __name__ == "__main__":
    unittest.main()
