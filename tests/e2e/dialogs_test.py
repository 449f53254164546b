# SPDX-License-Identifier: GPL-3.0-or-later
"""What can be done with a video from its menu: a long press or the second button, the menu where that was, sharing, renaming,
deleting."""
import json
import unittest

import e2e

HEADER, CELL, ROW = e2e.touring.HEADER, e2e.touring.CELL, 64
SHARE, RENAME, DELETE = 1, 2, 3


class Dialogs(e2e.Case):
    def brightness(self, image):
        return e2e.touring.ImageStat.Stat(image.convert("L")).mean[0]

    def point(self, x, y):
        s = self.tour.scale
        return self.tour.list_point(x * s, y * s)

    @property
    def extent(self):
        """Of the upright list, in its own measure."""
        return tuple(n / self.tour.scale for n in self.tour.list_size)

    def menu_of(self, row):
        """A finger rests on a cell until the menu dims the page; a pointer has a button for it."""
        before = self.brightness(self.tour.still("the list at rest"))
        x = (self.extent[0] - min(self.extent[0], 720)) / 2 + 100
        y = HEADER + row * CELL + CELL / 2
        button = "1" if self.tour.handset else "3"
        self.tour.screen.move(*self.point(x, y))
        e2e.touring.run("xdotool", "mousedown", button)
        self.tour.wait("the menu", lambda image: self.brightness(image) < 0.75 * before)
        e2e.touring.run("xdotool", "mouseup", button)
        self.menu = (x, y)
        return self.tour.still("the menu at rest")

    def choose(self, entry):
        x, y = self.menu
        x = x - 60 if self.tour.rtl else x + 60
        self.tour.screen.tap(*self.point(x, y + ROW * entry + ROW / 2))

    def answer(self, yes):
        """The buttons of the question stand side by side in the middle of the screen: No where lines begin."""
        width, height = self.extent
        at_the_right = yes != self.tour.rtl
        self.tour.screen.tap(*self.point(width / 2 + (100 if at_the_right else -100), height / 2 + 48))

    def is_dimmed(self, image):
        """A menu or a question is over the page: its title shines no more."""
        upright = self.tour.portrait(image)
        head = upright.crop((0, 0, upright.width, round(HEADER * self.tour.scale)))
        return head.convert("L").getextrema()[1] < 180

    def list_back(self, count):
        self.tour.wait(f"{count} cells", lambda image: not self.is_dimmed(image) and self.tour.list_shown(image)
                       and self.tour.cells_with_pictures(image) == count, 20)
        return self.tour.still("the list at rest")

    def titles(self):
        """What the person named the videos, as it is safely on disk."""
        journal = self.home / ".local/share/kestrel/journal.jsonl"
        lines = journal.read_text().splitlines() if journal.exists() else []
        return [entry["title"] for entry in map(json.loads, lines) if entry.get("title")]

    def typing(self, typing):
        """A text field gets or loses the focus: a list that stands turned comes upright meanwhile."""
        self.tour.typing = typing and self.tour.handset

    def filtered(self, text, count):
        self.tour.screen.type(text)
        self.typing(True)
        self.tour.wait(f"{count} cells for {text}", lambda image: self.tour.cells_with_pictures(image, HEADER + 80) == count)

    def leave_filter(self, count):
        self.tour.screen.key(*["BackSpace"] * 10)
        self.tour.screen.key("Return")
        self.typing(False)
        self.tour.wait("the field goes away", lambda image: self.tour.list_shown(image) and self.tour.cells_with_pictures(image) == count, 15)

    def test_a_video_is_shared_renamed_and_deleted(self):
        alpha, beta, gamma = (e2e.clip(self.videos / f"{name}.mp4", color=color)
                              for name, color in (("Alpha", "steelblue"), ("Beta <b>&amp;", "seagreen"), ("Gamma", "sienna")))
        self.tour.start()
        self.wait_for_cells(3, 30)

        # Beside the menu, and back.
        self.tour.keep("menu", self.menu_of(1))
        self.tour.screen.tap(*self.point(self.extent[0] / 2, self.extent[1] - 100))
        self.list_back(3)

        # The share sheet.
        self.menu_of(0)
        before = self.tour.look()
        self.choose(SHARE)
        self.tour.wait("the share sheet", lambda image: e2e.touring.difference(image, before) > 4)
        self.tour.keep("share", self.tour.still("the share sheet at rest"))
        self.tour.screen.key("Escape")
        self.list_back(3)

        # Another title, which begins where the cursor stands.
        self.menu_of(2)
        before = self.tour.look()
        self.choose(RENAME)
        self.tour.wait("the sheet", lambda image: e2e.touring.difference(image, before) > 2)
        self.typing(True)
        self.tour.keep("rename", self.tour.still("the sheet at rest"))
        self.tour.screen.type(" zebra")
        self.tour.screen.key("Return")
        self.typing(False)
        e2e.wait_until("the title on disk", lambda: "Gamma zebra" in self.titles())
        self.list_back(3)
        self.filtered("zebra", 1)
        self.tour.keep("renamed", self.tour.still("the filter at rest"))
        self.leave_filter(3)

        # No keeps it, Yes deletes it and nothing else.
        self.menu_of(1)
        before = self.tour.look()
        self.choose(DELETE)
        self.tour.wait("the question", lambda image: e2e.touring.difference(image, before) > 2)
        self.tour.keep("delete", self.tour.still("the question at rest"))
        self.answer(yes=False)
        self.list_back(3)
        self.assertTrue(beta.exists())
        self.menu_of(1)
        before = self.tour.look()
        self.choose(DELETE)
        self.tour.wait("the question", lambda image: e2e.touring.difference(image, before) > 2)
        self.tour.still("the question at rest")
        self.answer(yes=True)
        e2e.wait_until("the file is gone", lambda: not beta.exists())
        self.tour.keep("deleted", self.list_back(2))
        self.assertTrue(alpha.exists() and gamma.exists())

        # After a restart of everything it is still so.
        self.tour.program.terminate()
        self.tour.program.wait(10)
        e2e.end_service("kestrel-store")
        self.tour.start()
        self.list_back(2)
        self.filtered("zebra", 1)
        self.tour.keep("restarted")

    def test_a_file_that_cannot_be_deleted_stays_in_the_list(self):
        e2e.clip(self.videos / "Alpha.mp4")
        other = e2e.clip(self.videos / "Beta.mp4")
        self.tour.start()
        self.wait_for_cells(2, 30)
        self.menu_of(0)
        before = self.tour.look()
        self.choose(DELETE)
        self.tour.wait("the question", lambda image: e2e.touring.difference(image, before) > 2)
        self.tour.still("the question at rest")
        # While the person thinks about it, another file takes the name.
        (self.videos / "Alpha.mp4").rename(self.home / "Alpha.mp4")
        letter = self.videos / "Alpha.mp4"
        letter.write_bytes(b"no film at all")
        self.answer(yes=True)
        log = self.pictures / "kestrel.log"
        e2e.wait_until("the failure in the log", lambda: "couldn't remove file: " in log.read_text())
        self.tour.keep("not-deleted")
        self.assertEqual(letter.read_bytes(), b"no film at all")
        self.assertTrue(other.exists())


if __name__ == "__main__":
    unittest.main()
