# SPDX-License-Identifier: GPL-3.0-or-later
"""The device acts on the running program: locks, display, calls."""
import json
import unittest

import control
import dbus
import e2e
from e2e import touring

# Of a call of the modem manager.
RINGING_IN, ACTIVE = 3, 4


class Device(control.Case):
    def saver(self):
        return self.template("session", "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "mocks/screensaver.py")

    def test_lock_during_play_pauses_and_saves(self):
        saver = self.saver()
        self.start_with_the_library()
        self.play(self.first)
        self.wait_until_it_plays(self.first, 2)
        saver.control().Activate(True)
        e2e.wait_until("paused", lambda: self.status() == "Paused")
        place = e2e.wait_until("the place", lambda: self.saved_place(self.first))
        self.assertTrue(2 <= place <= 12, place)
        saver.control().Activate(False)
        # Nothing goes on by itself that was not paused by a menu or a dialog.
        self.assertFalse(self.goes_on())

    def test_locked_session_lets_nothing_start(self):
        login = self.mock("system", "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager")
        session = "/org/freedesktop/login1/session/c1"
        for method, argument in (("GetSession", "s"), ("GetSessionByPID", "u")):
            login.method(method, argument, "o", f"ret = dbus.ObjectPath('{session}')")
        login.control().AddObject(session, "org.freedesktop.login1.Session", {"LockedHint": dbus.Boolean(False)},
                                  dbus.Array([], signature="(ssss)"))
        self.start_with_the_library()
        self.play(self.first)
        self.wait_until_it_plays(self.first, 2)
        login.control(session).UpdateProperties("org.freedesktop.login1.Session", {"LockedHint": dbus.Boolean(True)})
        e2e.wait_until("paused", lambda: self.status() == "Paused")
        # Another program's wish comes up, but waits for the lock to open.
        self.play(self.second)
        e2e.wait_until("paused", lambda: self.status() == "Paused" and self.player()["Metadata"]["xesam:url"] == self.second.as_uri())
        self.assertFalse(self.goes_on())

    def test_display_off_lets_the_display_go_and_only_a_lock_pauses(self):
        saver = self.saver()
        compositor = self.template("session", "org.gnome.Mutter.DisplayConfig", "/org/gnome/Mutter/DisplayConfig", "mocks/mutter.py")

        def switch(mode):
            compositor.control().UpdateProperties("org.gnome.Mutter.DisplayConfig", {"PowerSaveMode": dbus.Int32(mode)})
        self.start_with_the_library()
        self.play(self.first)
        self.wait_until_it_plays(self.first, 1)
        e2e.wait_until("the display is kept on", lambda: len(saver.control().Holders()) == 1)
        switch(3)
        e2e.wait_until("the display is let go", lambda: len(saver.control().Holders()) == 0)
        place = self.position()
        self.wait_until_it_plays(self.first, place + 0.5)
        switch(0)
        e2e.wait_until("the display is kept on again", lambda: len(saver.control().Holders()) == 1)
        switch(3)
        saver.control().Activate(True)
        e2e.wait_until("paused", lambda: self.status() == "Paused")
        e2e.wait_until("the place", lambda: self.saved_place(self.first) == int(self.position()))
        switch(0)
        self.assertFalse(self.goes_on())

    # --- calls

    def modem(self, **parameters):
        return self.template("system", "org.freedesktop.ModemManager1", "/org/freedesktop/ModemManager1", "peers/modemmanager.py",
                             **parameters)

    def test_call_during_play_pauses_and_saves_and_nothing_starts_meanwhile(self):
        modem = self.modem()
        modem.control().AddModem("0")
        self.start_with_the_library()
        self.play(self.first)
        self.wait_until_it_plays(self.first, 2)
        modem.control().AddCall("0", "c1", str(RINGING_IN))
        e2e.wait_until("paused", lambda: self.status() == "Paused")
        place = e2e.wait_until("the place", lambda: self.saved_place(self.first))
        self.assertTrue(2 <= place <= 12, place)
        # What another program asks for now is refused, and the person is told why.
        self.tour.still("the player at rest")
        modem.control().SetCallState("c1", ACTIVE)
        before = self.tour.look()
        self.play(self.second)
        self.tour.keep("refused", self.tour.wait("a banner", lambda image: touring.difference(image, before) > 0.3))
        self.assertEqual((self.status(), self.player()["Metadata"]["xesam:url"]), ("Paused", self.first.as_uri()))
        self.tour.wait("the banner goes", lambda image: touring.difference(image, before) < 0.05, 15)
        # So it is in the library.
        self.tour.screen.key("BackSpace")
        self.wait_for_cells(2, 10)
        before = self.tour.still("the library at rest")
        self.play(self.second)
        self.tour.keep("refused-in-the-library",
                       self.tour.wait("a banner", lambda image: touring.difference(image, before) > 0.3))
        self.tour.wait("the banner goes", lambda image: touring.difference(image, before) < 0.05, 15)
        self.assertNotEqual(self.status(), "Playing")
        # The call is over: nothing goes on by itself, and the next request is heard.
        modem.control().DeleteCall("0", "c1")
        self.assertFalse(self.goes_on())
        self.play(self.second)
        self.wait_until_it_plays(self.second)

    def test_request_during_a_call_with_no_page_is_refused_by_a_notification(self):
        modem = self.modem(**{"call-state": str(ACTIVE)})
        notes = self.pictures / "notes.json"
        self.peer("notification_server.py", str(notes), "body")
        self.start_for_requests()
        e2e.wait_until("the call is known", lambda: modem.was_asked("/Call/c1 org.freedesktop.ModemManager1.Call.State"))
        self.call("play", "usus", 1, "title", 0, "list")  # behind the modem's answer
        self.play(self.first)
        self.ended()
        sent = [json.loads(line) for line in notes.read_text().splitlines()]
        self.assertEqual([note["summary"] for note in sent], ["Videos cannot be played during a call."])
        self.assertEqual(sent[0]["hints"].get("category"), "device.error")


if __name__ == "__main__":
    unittest.main()
