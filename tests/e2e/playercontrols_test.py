# SPDX-License-Identifier: GPL-3.0-or-later
"""The controls over a playing video and the gestures on it, by pointer and keys; what they do is read on the bus and off the screen."""
import subprocess
import time
import unittest

import control
import e2e
from PIL import ImageStat

SEEK_LINE = 76  # above the foot
FILM = 120  # seconds
SPAN = 60  # of it, for a swipe over the whole width


def xdotool(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True)


class PlayerControls(control.Case):
    def setUp(self):
        super().setUp()
        self.first = e2e.clip(self.videos / "Film.mp4", FILM, "320x180")
        self.start(str(self.first))
        self.wait_until_it_plays(self.first, 0.5, 30)
        self.tour.find_turn()
        self.upright = self.tour.landscape(self.tour.look())
        self.scale = self.tour.scale

    # --- the finger

    def point(self, x, y):
        """By parts of the picture."""
        return self.tour.player_point(round(self.upright.width * x), round(self.upright.height * y))

    def above_foot(self, x, y):
        return self.tour.player_point(round(self.upright.width * x), round(self.upright.height - y * self.scale))

    def down(self, point):
        self.tour.screen.move(*point)
        xdotool("mousedown", 1)
        self.at = point

    def move(self, point):
        for step in range(1, 9):
            self.tour.screen.move(*(round(a + (b - a) * step / 8) for a, b in zip(self.at, point)))
            time.sleep(0.02)
        self.at = point

    def up(self):
        xdotool("mouseup", 1)

    def swipe(self, start, end, picture):
        self.down(start)
        self.move(end)
        time.sleep(0.3)
        self.tour.keep(picture)
        self.up()

    # --- what it did

    def near(self, what, second, tolerance=1.0):
        e2e.wait_until(f"{what}: the video at {second:.0f}, not {self.position():.1f}", lambda: abs(self.position() - second) <= tolerance)

    def shown(self, what):
        return self.tour.wait(f"{what}: the controls", self.tour.controls_shown)

    def volume(self):
        return float(self.player().get("Volume", -1))

    def brightness(self):
        upright = self.tour.landscape(self.tour.look())
        return ImageStat.Stat(upright.resize((64, 36)).crop((8, 14, 56, 24)).convert("L")).mean[0]

    # --- the tests

    def test_dragging_the_line(self):
        self.tour.keep("controls", self.tour.bring_controls("a tap"))
        self.tour.wait("they go by themselves", lambda image: not self.tour.controls_shown(image), 12)
        self.tour.show_controls()
        time.sleep(0.3)
        self.down(self.above_foot(0.4, SEEK_LINE))  # before they go again, also on a busy machine
        self.move(self.above_foot(0.5, SEEK_LINE))
        time.sleep(0.5)
        self.tour.keep("dragging")
        self.assertEqual(self.status(), "Playing")  # for whoever looks on it was never paused
        self.near("while the finger rests", FILM / 2)
        time.sleep(1)
        self.near("it waits", FILM / 2)
        self.up()
        e2e.wait_until("it goes on", lambda: 0.5 < self.position() - FILM / 2 < 10)
        self.assertEqual(self.status(), "Playing")

    def test_swipes(self):
        before = self.position()
        # As far as the finger goes beyond the dead zone, and what plays until it comes down.
        self.swipe(self.point(0.25, 0.5), self.point(0.65, 0.5), "seeking")
        self.near("onwards", before + (0.4 - 24 * self.scale / self.upright.width) * SPAN + 2, 5)
        self.assertEqual(self.status(), "Playing")
        e2e.wait_until("it goes on", self.goes_on)
        here = self.position()
        self.down(self.point(0.4, 0.5))
        self.move(self.point(0.7, 0.5))
        self.move(self.point(0.41, 0.5))
        self.up()
        self.near("the finger came back", here + 2, 4)

        self.assertEqual(self.volume(), 1)
        self.swipe(self.point(0.75, 0.3), self.point(0.75, 0.7), "volume")
        e2e.wait_until("less volume", lambda: 0 < self.volume() < 0.8)
        bright = self.brightness()
        self.swipe(self.point(0.25, 0.3), self.point(0.25, 0.9), "brightness")
        e2e.wait_until("a darker picture", lambda: self.brightness() < bright * 0.75)
        self.assertGreater(self.brightness(), bright * 0.05)
        self.assertEqual(self.status(), "Playing")
        self.tour.screen.key("Escape")
        e2e.wait_until("the video is left", lambda: self.status() != "Playing")

    def speed(self, seconds):
        start, clock = self.position(), time.monotonic()
        time.sleep(seconds)
        return (self.position() - start) / (time.monotonic() - clock)

    def test_a_long_press_is_fast(self):
        self.down(self.point(0.6, 0.4))
        time.sleep(0.8)
        self.tour.keep("fast")
        e2e.wait_until("twice as fast", lambda: 1.6 < self.speed(2.5) < 2.4)  # a busy machine may stumble
        self.up()
        e2e.wait_until("as fast as ever", lambda: self.speed(2) < 1.3)
        self.assertFalse(self.tour.controls_shown(self.tour.look()))  # it was no tap

    def test_keys(self):
        key = self.tour.screen.key
        key("Down", "Down")
        self.shown("a key")
        e2e.wait_until("less volume", lambda: abs(self.volume() - 0.9) < 0.01)
        key("Up")
        e2e.wait_until("more volume", lambda: abs(self.volume() - 0.95) < 0.01)
        key("m")
        e2e.wait_until("silence", lambda: self.volume() == 0)
        self.tour.keep("silent")
        key("m")
        e2e.wait_until("what was heard before", lambda: abs(self.volume() - 0.95) < 0.01)
        here = self.position()
        key("Right")
        self.near("ten seconds on", here + 11.5, 3)
        key("Left")
        self.near("ten seconds back", here + 2, 4)
        key("space")
        e2e.wait_until("paused", lambda: self.status() == "Paused")
        key("Tab", "Tab", "Tab", "Tab")  # back, details, menu, the mark in the middle
        time.sleep(0.3)
        self.tour.keep("focus")
        key("space")
        e2e.wait_until("playing", lambda: self.status() == "Playing")
        self.assertAlmostEqual(self.volume(), 0.95, 2)
        self.tour.wait("they go by themselves", lambda image: not self.tour.controls_shown(image), 12)

    def test_full_screen(self):
        window = self.windows()[0]
        place = self.tour.window_at_rest(window)
        self.tour.screen.key("f")
        if self.tour.handset:
            time.sleep(0.5)
            self.assertEqual(self.tour.window_at_rest(window), place)
            return
        whole = (0, 0, *self.tour.screen.size)
        e2e.wait_until("the window fills the screen", lambda: self.tour.window_at_rest(window) == whole)
        self.tour.window = whole
        self.tour.keep("full-screen")
        self.tour.screen.key("Escape")
        e2e.wait_until("the window is as before", lambda: self.tour.window_at_rest(window) == place)
        self.tour.window = place
        self.assertEqual(self.status(), "Playing")
        self.tour.screen.key("Escape")
        e2e.wait_until("the video is left", lambda: self.status() != "Playing")


if __name__ == "__main__":
    unittest.main()
