# SPDX-License-Identifier: GPL-3.0-or-later
"""The program without a pointer and without eyes: over the accessibility bus, as a screen reader's user."""
import json
import unittest

import accessbus
import e2e
from accessbus import Atspi, actions, has


class Access(accessbus.Case):
    def kept_titles(self):
        """What the person named the videos, as it is safely on disk."""
        journal = self.home / ".local/share/kestrel/journal.jsonl"
        lines = journal.read_text().splitlines() if journal.exists() else []
        return [entry["title"] for entry in map(json.loads, lines) if entry.get("title")]

    def test_find_filter_and_play(self):
        self.assertEqual(self.window.get_name(), "Videos")
        self.assertEqual(self.list.get_name(), "Videos")
        # Names are data: the file's name is read as it is.
        self.assertEqual(self.titles(), list(self.TITLES))
        second = self.list.get_child_at_index(1)
        self.assertEqual(second.get_role(), Atspi.Role.LIST_ITEM)
        self.assertEqual(second.get_description(), "Duration 00:20, 2 of 3")
        self.assertEqual(actions(second), ["Press", "ShowMenu", "SetFocus"])

        self.tour.screen.key("ctrl+f")
        field = self.await_node(Atspi.Role.TEXT, "Filter videos")
        self.eventually("the field with the focus", lambda: has(field, Atspi.StateType.FOCUSED))
        self.assertTrue(has(field, Atspi.StateType.EDITABLE))
        self.assertTrue(field.get_editable_text_iface().insert_text(0, "cherry", 6))
        self.eventually("one match", lambda: self.titles() == ["Cherry blossom"])
        self.assertEqual(self.list.get_child_at_index(0).get_description(), "Duration 00:20, 1 of 1")

        self.act(self.list.get_child_at_index(0), "Press")
        self.await_end(Atspi.Role.LIST)
        self.tour.screen.key("BackSpace")
        self.list = self.eventually("the list again", lambda: self.find_list(3))
        self.assertIsNone(self.find(Atspi.Role.TEXT))  # playing emptied the filter

    def test_the_focus_is_where_the_keyboard_is(self):
        self.tour.screen.key("Down")
        self.tour.screen.key("Down")
        second = self.list.get_child_at_index(1)
        self.eventually("the second row with the focus", lambda: has(second, Atspi.StateType.FOCUSED))
        self.assertFalse(has(self.list.get_child_at_index(0), Atspi.StateType.FOCUSED))
        self.tour.screen.key("Return")
        self.await_end(Atspi.Role.LIST)

    def test_a_video_is_renamed(self):
        third = self.list.get_child_at_index(2)
        self.assertEqual(third.get_name(), "Cherry blossom")
        # Another thought: nothing changes.
        self.choose(2, "Rename")
        sheet = self.await_node(Atspi.Role.DIALOG, "Rename video")
        self.assertTrue(has(sheet, Atspi.StateType.MODAL))
        self.assertEqual([(field.get_name(), self.read(field)) for field in [self.find(Atspi.Role.TEXT, within=sheet)]],
                         [("Title", "Cherry blossom")])
        self.write(self.find(Atspi.Role.TEXT, within=sheet), "Never")
        self.press(Atspi.Role.PUSH_BUTTON, "Cancel")
        self.await_end(Atspi.Role.DIALOG)
        self.assertEqual(self.titles(), list(self.TITLES))

        # An empty title cannot be saved; another one is seen at once, where it belongs, and is safely on disk.
        self.choose(2, "Rename")
        sheet = self.await_node(Atspi.Role.DIALOG, "Rename video")
        field = self.find(Atspi.Role.TEXT, within=sheet)
        save = self.find(Atspi.Role.PUSH_BUTTON, "Save", within=sheet)
        self.eventually("the field with the focus", lambda: has(field, Atspi.StateType.FOCUSED))
        self.write(field, "")
        self.eventually("nothing to save", lambda: not has(save, Atspi.StateType.ENABLED))
        self.write(field, "Aardvark <i>&amp; friends")
        self.eventually("something to save", lambda: has(save, Atspi.StateType.ENABLED))
        self.act(save, "Press")
        self.await_end(Atspi.Role.DIALOG)
        self.eventually("the new title first in the list", lambda: self.titles() == ["Aardvark <i>&amp; friends", *self.TITLES[:2]])
        self.assertEqual(self.list.get_child_at_index(0).get_description(), "Duration 00:20, 1 of 3")
        e2e.wait_until("the title on disk", lambda: self.kept_titles() == ["Aardvark <i>&amp; friends"])

    def test_a_video_is_deleted(self):
        second = self.videos / f"{self.TITLES[1]}.mp4"
        self.assertEqual(self.list.get_child_at_index(2).get_description(), "Duration 00:20, 3 of 3")
        self.choose(1, "Delete")
        question = self.await_node(Atspi.Role.DIALOG, "Delete video?")
        self.assertTrue(has(question, Atspi.StateType.MODAL))
        self.assertEqual(self.texts(question), ["Delete video?", self.TITLES[1]])
        self.press(Atspi.Role.PUSH_BUTTON, "No")
        self.await_end(Atspi.Role.DIALOG)
        self.assertTrue(second.exists())
        self.assertEqual(self.titles(), list(self.TITLES))

        self.choose(1, "Delete")
        self.await_node(Atspi.Role.DIALOG, "Delete video?")
        # The list is beneath the question: it takes nothing meanwhile.
        self.act(self.list.get_child_at_index(0), "Press")
        self.press(Atspi.Role.PUSH_BUTTON, "Yes")
        e2e.wait_until("the file is gone", lambda: not second.exists())
        self.eventually("the list without it", lambda: self.titles() == [self.TITLES[0], self.TITLES[2]])
        self.assertEqual(self.list.get_child_at_index(1).get_description(), "Duration 00:20, 2 of 2")
        self.assertTrue(all((self.videos / f"{title}.mp4").exists() for title in (self.TITLES[0], self.TITLES[2])))

    def test_a_failure_is_an_alert(self):
        self.choose(0, "Delete")
        self.await_node(Atspi.Role.DIALOG, "Delete video?")
        # While the person thinks about it, another file takes the name.
        video = self.videos / f"{self.TITLES[0]}.mp4"
        video.rename(self.home / "kept.mp4")
        video.write_bytes(b"no film at all")
        self.press(Atspi.Role.PUSH_BUTTON, "Yes")
        banner = self.await_node(Atspi.Role.ALERT, "The video could not be deleted.")
        self.act(banner, "Press")
        self.await_end(Atspi.Role.ALERT)
        self.assertEqual(video.read_bytes(), b"no film at all")

    def test_share_and_details(self):
        self.choose(0, "Share")
        self.await_node(Atspi.Role.DIALOG, f"{self.TITLES[0]}.mp4")
        self.press(Atspi.Role.PUSH_BUTTON, "Copy address")
        self.await_end(Atspi.Role.DIALOG)
        # The details are read from heading to heading; the list is not there meanwhile.
        self.choose(1, "Details")
        self.await_node(Atspi.Role.HEADING, "Details")
        self.await_node(Atspi.Role.HEADING, self.TITLES[1])
        self.await_node(Atspi.Role.LABEL, "Length: 00:20")
        self.await_node(Atspi.Role.HEADING, "File")
        self.await_node(Atspi.Role.LABEL, "Codecs: H.264, AAC")
        self.await_end(Atspi.Role.LIST)  # it has slid away
        self.press(Atspi.Role.PUSH_BUTTON, "Back")
        self.list = self.eventually("the list again", lambda: self.find_list(len(self.TITLES)))
        self.assertEqual(self.titles(), list(self.TITLES))

    def test_the_player_is_operated(self):
        self.act(self.list.get_child_at_index(0), "Press")
        self.await_end(Atspi.Role.LIST)
        self.press(Atspi.Role.PANEL, self.TITLES[0])  # as a tap on the video: here are the controls
        self.press(Atspi.Role.PUSH_BUTTON, "Pause")
        self.await_node(Atspi.Role.PUSH_BUTTON, "Play")
        position = self.await_node(Atspi.Role.SLIDER, "Position")
        value = position.get_value_iface()
        self.assertEqual((value.get_minimum_value(), value.get_maximum_value(), value.get_minimum_increment()), (0, 20, 10))
        self.assertTrue(value.set_current_value(12))
        self.eventually("the new position", lambda: position.get_description() == "00:12 of 00:20")
        self.eventually("its number", lambda: round(value.get_current_value()) == 12)
        self.act(position, "Decrease")
        self.eventually("ten seconds less", lambda: position.get_description() == "00:02 of 00:20")
        volume = self.await_node(Atspi.Role.SLIDER, "Volume")
        self.assertTrue(volume.get_value_iface().set_current_value(40))
        self.eventually("the volume in words", lambda: volume.get_description() == "40%")
        self.press(Atspi.Role.PUSH_BUTTON, "Back")
        self.list = self.eventually("the list again", lambda: self.find_list(3))
        self.eventually("the time that remains", lambda: self.list.get_child_at_index(0).get_description() == "00:18 left to watch, 1 of 3")

    def test_the_text_is_cut_and_pasted(self):
        self.tour.screen.key("ctrl+f")
        field = self.await_node(Atspi.Role.TEXT, "Filter videos")
        self.write(field, "Cherry blossom")
        field.get_text_iface().add_selection(6, 14)
        self.act(field, "ShowMenu")
        menu = self.await_node(Atspi.Role.POPUP_MENU)
        self.assertEqual([(menu.get_child_at_index(index).get_role(), menu.get_child_at_index(index).get_name())
                          for index in range(menu.get_child_count())],
                         [(Atspi.Role.MENU_ITEM, name) for name in ("Cut", "Copy", "Select all")])
        self.press(Atspi.Role.MENU_ITEM, "Cut")
        self.eventually("the rest", lambda: self.read(field) == "Cherry")
        self.await_end(Atspi.Role.POPUP_MENU)
        self.act(field, "ShowMenu")
        self.press(Atspi.Role.MENU_ITEM, "Paste")
        self.eventually("the whole again", lambda: self.read(field) == "Cherry blossom")


class LongList(accessbus.Case):
    TITLES = tuple(f"Video {number:03}" for number in range(1, 61))

    def test_rows_without_cells(self):
        """The last of many is found, read, brought into sight and played, though no cell stands for it at first."""
        last = self.list.get_child_at_index(59)
        self.assertEqual((last.get_role(), last.get_name()), (Atspi.Role.LIST_ITEM, "Video 060"))
        self.assertEqual(last.get_description(), "Duration 00:20, 60 of 60")
        self.assertFalse(has(last, Atspi.StateType.SHOWING))
        self.assertTrue(has(self.list, Atspi.StateType.MANAGES_DESCENDANTS))
        self.act(last, "SetFocus")
        self.eventually("the last in sight", lambda: has(last, Atspi.StateType.SHOWING) and has(last, Atspi.StateType.FOCUSED))
        first = self.list.get_child_at_index(0)
        self.assertFalse(has(first, Atspi.StateType.SHOWING))
        self.act(first, "ShowMenu")  # it comes into sight with its menu
        self.await_node(Atspi.Role.POPUP_MENU)
        self.eventually("the first in sight", lambda: has(first, Atspi.StateType.SHOWING))
        self.tour.screen.key("Escape")
        self.await_end(Atspi.Role.POPUP_MENU)
        self.act(self.list.get_child_at_index(30), "Press")
        self.await_end(Atspi.Role.LIST)


if __name__ == "__main__":
    unittest.main()
