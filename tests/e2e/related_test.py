# SPDX-License-Identifier: GPL-3.0-or-later
"""The videos that belong to one, from its details to what is played, and the ways back: to the library, whichever way it was."""
import unittest

import details_test
import e2e
from accessbus import Atspi, has, walk

SECONDS = 40


class Related(details_test.Page):
    TITLES = ("Alpha", "Beta", "Delta", "Epsilon", "Gamma", "Zeta")

    def make_videos(self):
        """One clip many times, each with a box of its own at the end that players skip."""
        clip = e2e.clip(self.home / "clip.mp4", SECONDS, "320x180", extra=("-movflags", "+faststart")).read_bytes()
        for title in self.TITLES:
            own = title.encode()
            (self.videos / f".{title}.mp4").write_bytes(clip + (8 + len(own)).to_bytes(4, "big") + b"free" + own)
            (self.videos / f".{title}.mp4").rename(self.videos / f"{title}.mp4")

    def address(self, title):
        return (self.videos / f"{title}.mp4").as_uri()

    # --- the rows

    def parts(self):
        """What is read on the page, from the videos that belong together on."""
        parts = [(node.get_role(), node.get_name()) for node in walk(self.window) if has(node, Atspi.StateType.SHOWING)]
        first = parts.index((Atspi.Role.HEADING, "Related videos"))
        return parts[first + 1:]

    def rows(self, but):
        return {(Atspi.Role.PUSH_BUTTON, f"{title}, Duration 00:40") for title in self.TITLES if title != but}

    def few(self, of):
        """The rows below the details of a video, under their headings, and the way to all."""
        self.eventually(f"what belongs to {of}", lambda: len(self.parts()) == 6)
        heading, *rows, whole = self.parts()
        self.assertEqual((heading, whole), ((Atspi.Role.HEADING, "From the same day"), (Atspi.Role.PUSH_BUTTON, "Show all (5)")))
        self.assertLess(set(rows), self.rows(but=of))
        return [name for _, name in rows]

    def whole_list(self, of):
        """The page with all of them."""
        self.await_end(Atspi.Role.HEADING, "Details")  # it has slid away
        self.eventually("the whole list", lambda: set(self.parts()[-5:]) == self.rows(but=of))
        self.is_not_blank("whole-list")

    def focused(self):
        """Of what can be tapped."""
        return next((node.get_name() for node in walk(self.window)
                     if node.get_role() == Atspi.Role.PUSH_BUTTON and has(node, Atspi.StateType.FOCUSED)), None)

    def key_leads_to(self, key, name):
        """And there the person sees it."""
        self.tour.screen.key(key)
        self.eventually(f"{name} with the focus", lambda: self.focused() == name)
        self.eventually(f"{name} in sight", lambda: self.is_in_sight(self.find(Atspi.Role.PUSH_BUTTON, name)))

    def is_in_sight(self, node):
        _, top, _, height = self.place(node)
        return self.tour.window[1] + e2e.touring.HEADER <= top and top + height <= self.tour.window[1] + self.tour.window[3]

    # ---

    def test_from_the_player(self):
        self.tap_row(0)
        self.plays(self.address("Alpha"))
        self.ask_for_information()
        self.waits(self.address("Alpha"))
        self.details("Alpha", "Length: 00:40")
        name = self.few(of="Alpha")[0]
        self.press(Atspi.Role.PUSH_BUTTON, name)
        self.plays(self.address(name.partition(",")[0]))
        self.tour.screen.key("BackSpace")
        self.is_back_in_the_list()

    def test_from_the_list_by_keys(self):
        self.open_details(1)
        self.details("Beta", "Length: 00:40")
        names = self.few(of="Beta")
        self.assertNotIn(self.focused(), names)  # nobody has pressed Tab
        self.key_leads_to("Tab", names[0])
        self.key_leads_to("Down", names[1])
        self.key_leads_to("Up", names[0])
        for key, name in (("Tab", names[1]), ("shift+Tab", names[0]), ("Tab", names[1]), ("Down", names[2]), ("Down", names[3])):
            self.key_leads_to(key, name)
        self.key_leads_to("Down", "Show all (5)")
        self.is_not_blank("related")
        self.tour.screen.key("Return")
        self.whole_list(of="Beta")
        # There and back, to the row that it was opened with.
        self.tour.screen.key("Escape")
        self.details("Beta", "Length: 00:40")
        self.eventually("the focus where it was", lambda: self.focused() == "Show all (5)")
        self.tour.screen.key("Return")
        self.whole_list(of="Beta")
        rows = [name for _, name in self.parts()[-5:]]
        for name in rows:
            self.key_leads_to("Down", name)
        self.tour.screen.key("Return")
        self.plays(self.address(rows[-1].partition(",")[0]))
        self.tour.screen.key("BackSpace")
        self.is_back_in_the_list()


if __name__ == "__main__":
    unittest.main()
