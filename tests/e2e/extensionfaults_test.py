# SPDX-License-Identifier: GPL-3.0-or-later
"""An extension that ends the program: at the next start the page of details names it, and the person may try it again."""
import os
import pathlib
import unittest

import details_test
import e2e
from accessbus import Atspi

NAMED = "“Driven” is not used: Kestrel crashed in it the last time."


class Faults(details_test.Page):
    TITLES = ("Alpha",)

    def setUp(self):
        folder = pathlib.Path(os.environ["HOME"]) / ".local/share/kestrel/extensions"
        folder.mkdir(parents=True)
        library = e2e.BIN.parent / "tests/extensions/ext_faulty.so"
        (folder / "video_youtuberelatedextension.desktop").write_text(details_test.DESCRIPTION.format(library=library))
        super().setUp()

    def start_again(self):
        self.start()
        self.is_back_in_the_list()
        self.open_details(0)
        self.details("Alpha", "Length: 00:40")

    def loads(self):
        return (self.pictures / "kestrel.log").read_text(encoding="utf-8").count("loaded “Driven” from")

    def begin(self):
        os.environ["FAULT"] = "crash in paint"
        self.addCleanup(os.environ.pop, "FAULT", None)
        super().begin()
        os.environ.pop("FAULT")

    def test_a_crash_is_named_and_tried_again(self):
        self.act(self.list.get_child_at_index(0), "ShowMenu")
        self.tap_on(Atspi.Role.MENU_ITEM, "Details")
        e2e.wait_until("the program's end", lambda: self.tour.program.poll() is not None)
        self.assertLess(self.tour.program.returncode, 0)  # a signal ended it

        # What did not crash is all there.
        self.start_again()
        self.details("Alpha", NAMED)
        self.assertEqual(1, self.loads())
        self.tour.screen.key("End")
        self.is_not_blank("named")
        self.press(Atspi.Role.PUSH_BUTTON, "Try again")
        self.eventually("the end of the sentence", lambda: NAMED not in self.labels())
        self.assertEqual(2, self.loads())

        # It behaved this time, and is not named again.
        self.tour.program.terminate()
        self.assertEqual(0, self.tour.program.wait(20))
        self.start_again()
        self.eventually("it is loaded", lambda: self.loads() == 3)
        self.assertNotIn(NAMED, self.labels())


if __name__ == "__main__":
    unittest.main()
