# SPDX-License-Identifier: GPL-3.0-or-later
"""The gallery reaches every state of a shape and a look, and each of its pictures shows something that no other shows."""
import itertools
import os
import pathlib
import shutil
import subprocess
import unittest

import e2e
import gallery
from PIL import Image, ImageStat

CLIPS = ("Autumn", "Dragonflies", "VID_", "Jousting", "concert", "Snow", "Height", "Zither")
STATES = {"list", *(state.replace("_", "-") for state in gallery.Gallery.LIBRARY), *gallery.Gallery.FILM, *gallery.Gallery.OTHERS, *gallery.Gallery.DETAILS,
          *gallery.Gallery.RELATED, *gallery.Gallery.ONLINE, *gallery.Gallery.SERVER,
          "player-playing", "player-controls", "player-paused", "player-menu",
          "player-rename", "player-delete", "player-save-as", "save-as", "save-as-taken", "save-as-error", "save-as-progress", "card-away",
          "empty", "first-scan"}
STATES = STATES - {"delete", "share"} | {"delete-question", "share-sheet"}
BLANK = 1.5  # the deviation of the pixels of a page with nothing but its heading is above 6
SAME = 0.15  # pictures of one state, with a text cursor that blinks, differ by less


class GalleryTest(unittest.TestCase):
    VARIANT = "portrait-light"

    def test_every_state_is_reached_and_no_two_look_the_same(self):
        work = pathlib.Path.cwd() / "gallery"
        shutil.rmtree(work, ignore_errors=True)
        subprocess.run([str(e2e.SOURCE / "scripts/make-demo-clips"), str(work / "videos"), *CLIPS], check=True, stdout=subprocess.DEVNULL)
        status = gallery.main(["--pictures", str(work / "pictures"), "--videos", str(work / "videos"), "--only", self.VARIANT])
        taken = {path.stem: Image.open(path).convert("RGB") for path in (work / "pictures" / self.VARIANT).glob("*.png")}
        self.assertEqual((status, sorted(taken)), (0, sorted(STATES)))
        self.assertEqual({image.size for image in taken.values()}, {(480, 854)})
        blank = [name for name, image in taken.items() if ImageStat.Stat(image.convert("L")).stddev[0] < BLANK]
        same = [pair for pair in itertools.combinations(sorted(taken), 2) if gallery.touring.difference(*(taken[name] for name in pair)) < SAME]
        self.assertEqual((blank, same), ([], []))


if __name__ == "__main__":
    unittest.main()
