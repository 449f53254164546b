# SPDX-License-Identifier: GPL-3.0-or-later
"""Requests of other programs to the running program, and a second start."""
import os
import pathlib
import subprocess
import unittest

import control
import dbus
import e2e
from control import INTERFACE, PLAYER, SERVICE

INTROSPECTION = f"""  interface {INTERFACE} {{
    methods:
      launch(in  u _windowId,
             in  s _taskTitle);
      launch(in  u _windowId,
             in  s _taskTitle,
             in  as uriList);
      play(in  u _windowId,
           in  s _taskTitle,
           in  u index,
           in  s playlistName);
      play(in  u _windowId,
           in  s _taskTitle,
           in  as uriList);
      play(in  as uriList);
      play(in  as uriList,
           in  u position);
      cancel();
    signals:
      playbackStarted();
      launched();
    properties:
"""


class Control(control.Case):
    def test_second_start_brings_the_first_to_the_front_and_ends(self):
        self.start_with_the_library()
        window = self.windows()
        self.assertEqual(len(window), 1)
        subprocess.run(["xdotool", "windowminimize", window[0]], check=True)
        e2e.wait_until("the window is away", lambda: not self.windows())
        second = subprocess.run([str(e2e.BIN / "kestrel"), str(self.first)], timeout=20, check=False)
        self.assertEqual(second.returncode, 0)
        e2e.wait_until("the window is back", lambda: self.windows() == window)
        self.wait_for_cells(2, 10)
        self.assertEqual(self.status(), "")  # the address of a second start is not played

    def test_play_while_the_library_shows_and_while_another_plays(self):
        self.start_with_the_library()
        self.play(self.first)
        self.wait_until_it_plays(self.first, 2)
        self.play(self.second)
        self.wait_until_it_plays(self.second, 0.5)
        # The place of the first was saved on the way.
        place = e2e.wait_until("the place of the first", lambda: self.saved_place(self.first))
        self.assertTrue(2 <= place <= 12, place)
        self.tour.screen.key("BackSpace")
        self.wait_for_cells(2, 10)
        self.assertIsNone(self.tour.program.poll())

    def test_play_while_the_first_one_is_being_opened(self):
        self.tour.start(str(self.first))
        e2e.wait_until("the program on the bus", lambda: self.bus.name_has_owner(SERVICE))
        e2e.wait_until("the first is asked for", lambda: self.status() == "Playing")
        self.play(self.second)
        self.wait_until_it_plays(self.second, 0.5)

    def test_position_is_where_it_starts_and_0_goes_on(self):
        self.start_with_the_library()
        self.play(self.first, 30)
        self.wait_until_it_plays(self.first, 30.2)  # and not only about to
        self.assertLess(self.position(), 37)
        # Asked for again in the middle of it: from 10, and then where it was.
        self.play(self.first, 10)
        e2e.wait_until("from 10", lambda: self.is_playing(self.first, 10) and self.position() < 16)
        self.call("cancel")
        self.ended()
        place = self.saved_place(self.first)
        self.assertTrue(10 <= place < 20, place)
        self.start("-servicefw")
        self.play(self.first, 0)
        self.wait_until_it_plays(self.first)
        self.assertTrue(place <= self.position() < place + 6, (place, self.position()))

    def test_launch_with_a_list_plays_the_first_and_is_announced(self):
        self.start("-servicefw")
        with control.Listener() as listener:
            self.call("launch", "usas", 1, "title", [self.second.as_uri(), self.first.as_uri()])
            self.wait_until_it_plays(self.second)
            self.assertEqual([listener.next(), listener.next()], ["launched", "playbackStarted"])

    def test_cancel_during_play_saves_and_ends(self):
        self.start_with_the_library()
        self.play(self.first)
        self.wait_until_it_plays(self.first, 3)
        self.call("cancel")
        self.ended()
        place = self.saved_place(self.first)
        self.assertIsNotNone(place)
        self.assertTrue(3 <= place <= 14, place)

    def resident(self):
        """MB of memory, when all videos but the present one are closed: the player and the share list have a thread each."""
        process = pathlib.Path(f"/proc/{self.tour.program.pid}")

        def name(thread):
            try:
                return thread.read_text()
            except OSError:  # it has ended meanwhile
                return ""

        def control_threads():
            return sum(name(thread) == "media-control\n" for thread in process.glob("task/*/comm"))
        e2e.wait_until("the other videos are closed", lambda: control_threads() <= 2)
        return int((process / "statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE") / 1e6

    def test_fifty_videos_one_after_another_take_no_more_memory_than_ten(self):
        self.start_with_the_library()

        def growth():
            sizes = []
            for number in range(50):
                path = (self.first, self.second)[number % 2]
                self.play(path, 5)
                self.wait_until_it_plays(path, 5)
                sizes.append(self.resident())
            print("resident with each video, MB:", " ".join(f"{size:.0f}" for size in sizes))
            # How many decoded pictures a video holds when it is looked at differs by 15 MB: the larger ones are compared.
            return sorted(sizes[40:])[-3] - sorted(sizes[5:15])[-3]
        self.assertGrowsNot(growth)

    def assertGrowsNot(self, growth):
        """By 4 MB or more; what is lost each time is lost the second time, too, and a cache that fills is not."""
        grown = growth()
        if grown >= 4:
            grown = growth()
        self.assertLess(grown, 4)

    def test_hostile_callers_leave_the_program_as_it_was(self):
        self.start_with_the_library()
        self.play(self.first)
        self.wait_until_it_plays(self.first)

        def torment(kind, count, *vanish):
            return subprocess.run([str(e2e.SOURCE / "tests/support/hostilecaller.py"), os.environ["DBUS_SESSION_BUS_ADDRESS"], kind,
                                   str(count), *vanish], timeout=60, check=False).returncode
        kinds = (("wrong-signature", 5000, 0), ("no-member", 5000, 0), ("empty", 5000, 0), ("empty-address", 2000, 0), ("playlist", 5000, 0),
                 ("launch", 5000, 0), ("megabyte", 20, 0), ("many", 3, 0), ("invalid-utf8", 1, 3), ("play", 5000, 0))

        def growth():
            sizes = []
            for _ in range(8):
                for kind, count, status in kinds:
                    with self.subTest(kind):
                        self.assertEqual(torment(kind, count), status)
                        self.assertIsNone(self.tour.program.poll())
                self.assertEqual(torment("mixed", 1000, "vanish"), 0)
                # The next decent caller is served at once.
                self.play(self.second, 5)
                self.wait_until_it_plays(self.second, 5)
                sizes.append(self.resident())
            print("resident after each round, MB:", ", ".join(f"{size:.1f}" for size in sizes))
            # What is kept stays in every later round; frames and decoders of the moment, up to 10 MB, come and go: of three
            # rounds one at least has none. In five rounds between them 4 MB are 25 bytes a call.
            return min(sizes[5:]) - min(sizes[:3])
        self.assertGrowsNot(growth)

    # --- callers of the command line, and names

    def test_gdbus_sees_the_interface_and_launches(self):
        self.start_with_the_library()
        reply = subprocess.run(["gdbus", "introspect", "--session", "--dest", SERVICE, "--object-path", "/"], capture_output=True,
                               text=True, timeout=30, check=True).stdout
        interface = reply[reply.index(f"  interface {INTERFACE} {{\n"):]
        self.assertEqual(interface[:interface.index("  };\n")], INTROSPECTION)
        window = self.windows()
        subprocess.run(["xdotool", "windowminimize", window[0]], check=True)
        e2e.wait_until("the window is away", lambda: not self.windows())
        with control.Listener() as listener:
            call = subprocess.run(["gdbus", "call", "--session", "--dest", SERVICE, "--object-path", "/", "--method",
                                   f"{INTERFACE}.launch", "7", "title"], capture_output=True, text=True, timeout=30, check=True)
            self.assertEqual(call.stdout, "()\n")
            self.assertEqual(listener.next(), "launched")
        e2e.wait_until("the window is back", lambda: self.windows() == window)
        self.assertEqual(self.status(), "")

    def test_busctl_plays_and_ends_the_program(self):
        self.start_with_the_library()

        def busctl(*arguments):
            return subprocess.run(["busctl", f"--address={os.environ['DBUS_SESSION_BUS_ADDRESS']}", "call", SERVICE, "/", INTERFACE,
                                   *arguments], capture_output=True, text=True, timeout=30, check=False)
        # The form with a playlist is accepted and does nothing.
        playlist = busctl("play", "usus", "1", "title", "0", "list")
        self.assertEqual((playlist.returncode, playlist.stdout, playlist.stderr), (0, "", ""))
        self.assertEqual(self.status(), "")
        played = busctl("play", "usas", "1", "title", "2", self.second.as_uri(), self.first.as_uri())
        self.assertEqual((played.returncode, played.stdout, played.stderr), (0, "", ""))
        self.wait_until_it_plays(self.second)
        wrong = busctl("play", "s", self.first.as_uri())
        self.assertNotEqual(wrong.returncode, 0)
        self.assertIn("No such method 'play'", wrong.stderr)
        self.assertEqual(busctl("cancel").returncode, 0)
        self.ended()

    def queue(self, name):
        """Who has the name, and who waits for it."""
        return self.bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "ListQueuedOwners",
                                      "s", [name])

    def test_names_that_are_taken_are_told_once(self):
        taken = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(taken.close)
        for name in (SERVICE, PLAYER):
            taken.request_name(name, dbus.bus.NAME_FLAG_DO_NOT_QUEUE)
        self.tour.start(str(self.first))
        mine = f"{PLAYER}.instance{self.tour.program.pid}"
        e2e.wait_until("the second player on the bus", lambda: self.bus.name_has_owner(mine))
        e2e.wait_until("it plays", lambda: self.is_playing(self.first, 0.5, mine))
        e2e.wait_until("the next in line", lambda: len(self.queue(SERVICE)) == 2)
        # The other instance ends: from now on the calls come here.
        taken.release_name(SERVICE)
        self.play(self.second)
        e2e.wait_until("the second plays", lambda: self.is_playing(self.second, 0.5, mine))
        log = (self.pictures / "kestrel.log").read_text()
        for name in (SERVICE, f"{PLAYER}: taken"):
            self.assertEqual(log.count(name), 1, log)


if __name__ == "__main__":
    unittest.main()
