# SPDX-License-Identifier: GPL-3.0-or-later
"""The program is killed while it copies a video: nothing of the copy is left."""
import unittest

import e2e
import playermenu_test
from accessbus import Atspi


class Leftovers(playermenu_test.SaveAs):
    test_a_copy_is_saved = None  # has its own place

    def test_killed_in_the_midst_of_it(self):
        """As when the battery ends. What a card that knows no files without a name would keep of it goes, too."""
        self.enlarge()
        self.open_form()
        self.tour.screen.type("Holiday")
        self.tour.screen.key("Return")
        with self.copy_held():
            self.await_node(Atspi.Role.PROGRESS_BAR, "Saving “Holiday.mp4”")
            self.tour.program.kill()
        self.tour.program.wait(10)
        self.assertEqual([name for name in self.saved() if not name.startswith(".")], [self.taken.name])
        left, other = self.videos / ".save-as-0123456789abcdef.part", self.videos / ".not-ours.part"
        for path in (left, other):
            path.write_bytes(b"half a film")
        self.start(str(self.video))
        e2e.wait_until("what was left is gone", lambda: self.saved() == [other.name, self.taken.name])
        self.assertEqual(self.taken.read_bytes(), b"somebody's")


if __name__ == "__main__":
    unittest.main()
