# SPDX-License-Identifier: GPL-3.0-or-later
"""The road of the README: list, filter, play, back, resume, and the same place again after a kill."""
import subprocess
import unittest

import e2e


class Tour(e2e.Case):
    def test_whole_road(self):
        subprocess.run([str(e2e.SOURCE / "scripts/make-demo-clips"), str(self.videos)], check=True, stdout=subprocess.DEVNULL)
        self.tour.everything()


if __name__ == "__main__":
    unittest.main()
