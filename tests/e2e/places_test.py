# SPDX-License-Identifier: GPL-3.0-or-later
"""The program is killed or told to end in the middle of a video, and started again."""
import json
import os
import signal
import subprocess
import time
import unittest

import control
import e2e


class Places(control.Case):
    def setUp(self):
        super().setUp()
        # Nothing on its picture looks like the bar that shows how far it was watched.
        plain = self.first.with_name(".plain.mp4")
        subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                        f"color=sienna:size=320x180:rate=24:duration={control.SECONDS}", "-c:v", "libx264", "-preset", "ultrafast",
                        "-pix_fmt", "yuv420p", str(plain)], check=True)
        os.replace(plain, self.first)

    def watched(self, image):
        """Whether the cell of the first, which the other one's colours leave alone, shows the bar."""
        return self.tour.has_accent(self.tour.cell_picture(image, 0))

    def notes(self):
        return list((self.home / ".local/state/kestrel/places").glob("*.json"))

    def noted(self):
        """The place that is on the disk; None while there is none."""
        for path in self.notes():
            try:
                return json.loads(path.read_text())["position"]
            except OSError:  # closed meanwhile
                pass
        return None

    def kill(self):
        """Where the video was when the program died."""
        place = self.position()
        self.tour.program.kill()
        self.tour.program.wait()
        return place

    def test_a_kill_costs_five_seconds_at_most(self):
        self.start_with_the_library()
        self.assertFalse(self.watched(self.tour.look()))
        self.play(self.first)
        e2e.wait_until("the place is noted", lambda: self.noted() is not None)
        self.assertLess(self.notes()[0].stat().st_size, 500)
        self.wait_until_it_plays(self.first, self.noted() + 2)
        self.assertEqual(self.saved_place(self.first) or 0, 0)  # nothing of it is in the store
        place = self.kill()
        self.start()
        # The store has it, the note is closed, and the cell shows how far the video was watched.
        saved = e2e.wait_until("the place in the store", lambda: self.saved_place(self.first))
        self.assertTrue(place - 6 <= saved <= place, (saved, place))
        e2e.wait_until("the note is closed", lambda: not self.notes())
        self.wait_for_cells(2, 20)
        self.tour.wait("the cell shows how far it was watched", self.watched)
        self.tour.keep("after-the-kill")
        self.play(self.first)
        self.wait_until_it_plays(self.first, saved - 0.5)
        self.assertLess(self.position(), saved + 8)

    def test_a_program_that_is_told_to_end_keeps_the_place(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number.name):
                # Whoever runs the tests in the background may ignore it, and the program would, too.
                self.addCleanup(signal.signal, number, signal.signal(number, signal.SIG_DFL))
                self.start_with_the_library()
                before = self.saved_place(self.first) or 0
                self.play(self.first)
                self.wait_until_it_plays(self.first, before + 2)
                place = self.position()
                self.tour.program.send_signal(number)
                self.ended()  # as one that its user ends
                saved = self.saved_place(self.first)  # in the store by then, not only noted
                self.assertTrue(int(place) <= saved <= place + 2, (place, saved))
                self.assertEqual(self.notes(), [])

    def test_the_killed_video_itself_is_opened_from_outside(self):
        self.start_with_the_library()
        self.play(self.first)
        e2e.wait_until("the place is noted", lambda: self.noted() is not None)
        noted = self.noted()
        self.kill()
        e2e.end_service("kestrel-store", "KILL")  # as when the battery is empty
        self.start(str(self.first))
        self.wait_until_it_plays(self.first, noted - 0.5, 30)
        self.assertLess(self.position(), noted + 12)

    def test_a_save_right_before_the_kill_is_not_overwritten(self):
        self.start_with_the_library()
        self.play(self.first)
        e2e.wait_until("the place is noted", lambda: self.noted() is not None)
        self.tour.screen.key("space")
        e2e.wait_until("it is paused", lambda: self.status() == "Paused")
        saved = e2e.wait_until("the place in the store", lambda: self.saved_place(self.first))
        self.kill()
        self.start_with_the_library()
        end = time.monotonic() + 3
        while time.monotonic() < end:
            self.assertEqual(self.saved_place(self.first), saved)
            time.sleep(0.2)
        self.assertEqual(self.notes(), [])


if __name__ == "__main__":
    unittest.main()
