# SPDX-License-Identifier: GPL-3.0-or-later
"""The library by keyboard alone: what the keys do is read on the accessibility bus, what the eye is shown on the screen."""
import unittest

import accessbus
import e2e
from accessbus import Atspi, has

ACCENT = (0x4F, 0xA3, 0xFF)  # of the dark scheme


class Keys(accessbus.Case):
    TITLES = tuple(f"Video {number:03}" for number in range(1, 31))

    def key(self, *keys):
        self.tour.screen.key(*keys)

    # --- where the keyboard is

    def focused_row(self):
        """The number and name of the row with the focus; None when it is elsewhere."""
        rows = self.list.get_table_iface().get_selected_rows()
        if len(rows) != 1:
            return None
        row = self.list.get_child_at_index(rows[0])
        return (rows[0], row.get_name()) if has(row, Atspi.StateType.FOCUSED) else None

    def ring(self, node):
        """How much of the edge of a row or button has the colour of the focus."""
        place = node.get_component_iface().get_extents(Atspi.CoordType.SCREEN)
        image = self.tour.screen.picture()
        left, right = max(0, place.x), min(image.width, place.x + place.width)
        top, bottom = max(0, place.y), min(image.height, place.y + place.height)
        edge = 6
        middle = [(left + x, (top + bottom) // 2) for x in range(edge)], [(right - 1 - x, (top + bottom) // 2) for x in range(edge)]
        upper = [((left + right) // 2, top + y) for y in range(edge)], [((left + right) // 2, bottom - 1 - y) for y in range(edge)]
        return sum(any(self.is_accent(image.getpixel(point)) for point in side) for side in (*middle, *upper))

    @staticmethod
    def is_accent(color):
        return all(abs(a - b) < 40 for a, b in zip(color, ACCENT))

    def on_row(self, row, name):
        self.eventually(f"the keyboard on {name}", lambda: self.focused_row() == (row, name))
        node = self.list.get_child_at_index(row)
        # The list's own edges may be the window's: a side may be out of sight, never most of them.
        self.eventually(f"a ring around {name}", lambda: has(node, Atspi.StateType.SHOWING) and self.ring(node) >= 3)

    def focus_on(self, role, name):
        node = self.await_node(role, name)
        self.eventually(f"{name} with the focus", lambda: has(node, Atspi.StateType.FOCUSED))
        return node

    # --- the tests

    def test_arrows_home_end_and_pages(self):
        self.assertEqual(self.ring(self.list.get_child_at_index(0)), 0)  # nothing is marked before a key was pressed
        self.key("Down")
        self.on_row(0, "Video 001")
        self.key("Down", "Down")
        self.on_row(2, "Video 003")
        self.tour.keep("focus")
        self.key("Up")
        self.on_row(1, "Video 002")
        self.key("End")
        self.on_row(29, "Video 030")
        self.key("Down")
        self.on_row(29, "Video 030")
        self.key("Home")
        self.on_row(0, "Video 001")
        self.key("Next")
        page = self.eventually("a page further", lambda: (self.focused_row() or (0, ""))[0])
        self.assertGreater(page, 1)
        self.on_row(page, f"Video {page + 1:03}")
        self.key("Next")
        further = self.eventually("another page", lambda: (row := (self.focused_row() or (0, ""))[0]) > page and row)
        self.on_row(further, f"Video {further + 1:03}")
        self.key("Prior")
        back = self.eventually("a page back", lambda: (row := (self.focused_row() or (99, ""))[0]) < further and row)
        self.on_row(back, f"Video {back + 1:03}")

    def test_typing_filters_and_return_plays(self):
        self.tour.screen.type("12")
        self.focus_on(Atspi.Role.TEXT, "Filter videos")
        self.eventually("one match", lambda: self.titles() == ["Video 012"])
        self.key("Escape")  # clears the field and closes it
        self.await_end(Atspi.Role.TEXT)
        self.eventually("all videos", lambda: len(self.titles()) == 30)
        self.key("ctrl+f")
        field = self.focus_on(Atspi.Role.TEXT, "Filter videos")
        self.tour.screen.type("02")
        self.assertEqual(self.eventually("what was typed", lambda: self.read(field)), "02")
        self.eventually("the matches", lambda: self.titles() == ["Video 002", *(f"Video 0{number}" for number in range(20, 30))])
        self.key("Down")
        self.on_row(0, "Video 002")
        self.key("Down")
        self.on_row(1, "Video 020")
        self.tour.keep("filter")
        self.key("Return")
        self.await_end(Atspi.Role.LIST)
        self.await_node(Atspi.Role.PANEL, "Video 020")
        self.key("BackSpace")
        self.list = self.eventually("all videos again", lambda: self.find_list(30))

    def test_the_menu_of_a_video(self):
        self.key("Down", "Down")
        self.on_row(1, "Video 002")
        for keys in ("Menu", "shift+F10"):
            self.key(keys)
            self.await_node(Atspi.Role.POPUP_MENU)
            self.key("Down")
            self.focus_on(Atspi.Role.MENU_ITEM, "Details")
            self.key("Down")
            self.focus_on(Atspi.Role.MENU_ITEM, "Share")
            self.key("Escape")
            self.await_end(Atspi.Role.POPUP_MENU)
            self.on_row(1, "Video 002")
        self.key("Menu")
        self.await_node(Atspi.Role.POPUP_MENU)
        self.key("Down", "Down", "Return")
        self.await_node(Atspi.Role.DIALOG, "Video 002.mp4")
        self.key("Tab")
        self.tour.keep("share")
        self.key("Escape")
        self.await_end(Atspi.Role.DIALOG, "Video 002.mp4")
        self.on_row(1, "Video 002")

    def test_f2_renames(self):
        self.key("Down", "Down")
        self.on_row(1, "Video 002")
        self.key("F2")
        self.await_node(Atspi.Role.DIALOG, "Rename video")
        field = self.focus_on(Atspi.Role.TEXT, "Title")
        self.assertEqual(self.read(field), "Video 002")
        self.key("ctrl+a")
        self.tour.screen.type("Zebra")
        self.eventually("what was typed", lambda: self.read(field) == "Zebra")
        self.key("Return")
        self.await_end(Atspi.Role.DIALOG)
        self.eventually("the title at its place", lambda: self.titles() == ["Video 001", *self.TITLES[2:], "Zebra"])
        self.on_row(29, "Zebra")  # the keyboard went with it
        # Escape is another thought.
        self.key("F2")
        self.focus_on(Atspi.Role.TEXT, "Title")
        self.tour.screen.type(" never")
        self.key("Escape")
        self.await_end(Atspi.Role.DIALOG)
        self.on_row(29, "Zebra")

    def test_delete_asks(self):
        second = self.videos / "Video 002.mp4"
        self.key("Down", "Down")
        self.on_row(1, "Video 002")
        # Return says no to what cannot be taken back.
        self.key("Delete")
        self.await_node(Atspi.Role.DIALOG, "Delete video?")
        self.key("Return")
        self.await_end(Atspi.Role.DIALOG)
        self.assertTrue(second.exists())
        self.on_row(1, "Video 002")
        self.key("Delete")
        self.await_node(Atspi.Role.DIALOG, "Delete video?")
        self.key("Right")
        self.focus_on(Atspi.Role.PUSH_BUTTON, "No")
        self.key("Right")
        yes = self.focus_on(Atspi.Role.PUSH_BUTTON, "Yes")
        self.eventually("a ring around Yes", lambda: self.ring(yes) >= 3)
        self.tour.keep("delete")
        self.key("Return")
        e2e.wait_until("the file is gone", lambda: not second.exists())
        self.await_end(Atspi.Role.DIALOG)
        self.eventually("the list without it", lambda: len(self.titles()) == 29)
        self.on_row(1, "Video 003")  # what took its place

    def test_escape_leaves_from_the_field_first(self):
        self.key("ctrl+f")
        self.focus_on(Atspi.Role.TEXT, "Filter videos")
        self.tour.screen.type("zzz")
        self.eventually("no results", lambda: self.find(Atspi.Role.LABEL, "No results"))
        self.key("Escape")
        self.await_end(Atspi.Role.TEXT)
        self.list = self.eventually("all videos", lambda: self.find_list(30))
        self.assertIsNone(self.tour.program.poll())
        self.key("Down")
        self.on_row(0, "Video 001")


if __name__ == "__main__":
    unittest.main()
