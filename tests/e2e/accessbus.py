# SPDX-License-Identifier: GPL-3.0-or-later
"""The program as assistive technology meets it: a tree on the accessibility bus, and the actions in it."""
import os
import time

os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
for name in ("QT_ACCESSIBILITY", "NO_AT_BRIDGE"):
    os.environ.pop(name, None)

import e2e  # noqa: E402
import gi  # noqa: E402

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402


def walk(node):
    """The node and what is in it; of a list only the list, which may be long."""
    if node is None:
        return
    yield node
    if node.get_role() == Atspi.Role.LIST:
        return
    for index in range(node.get_child_count()):
        yield from walk(node.get_child_at_index(index))


def has(node, state):
    return node.get_state_set().contains(state)


def actions(node):
    offered = node.get_action_iface()
    return [offered.get_action_name(index) for index in range(offered.get_n_actions())] if offered else []


class Case(e2e.Case):
    """A library of some videos in the program's window, without a pointer."""

    TITLES = ("Apple harvest", "Banana <b>boat &amp; me", "Cherry blossom")

    def setUp(self):
        super().setUp()
        self.make_videos()
        Atspi.init()  # the bus is there before the program asks for it
        Atspi.get_desktop(0)
        self.begin()

    def begin(self):
        self.start()
        self.list = self.eventually("a list of all videos", lambda: self.find_list(len(self.TITLES)))

    def start(self, *address):
        self.tour.start(*address)
        self.window = self.eventually("the window", self.find_window)

    def make_videos(self):
        """One clip many times, each with a box of its own at the end that players skip."""
        clip = e2e.clip(self.home / "clip.mp4", seconds=20).read_bytes()
        for title in self.TITLES:
            own = title.encode()
            (self.videos / f".{title}.mp4").write_bytes(clip + (8 + len(own)).to_bytes(4, "big") + b"free" + own)
            (self.videos / f".{title}.mp4").rename(self.videos / f"{title}.mp4")

    def eventually(self, what, condition, seconds=30):
        end = time.monotonic() + seconds
        while True:
            GLib.MainContext.default().iteration(False)
            try:
                result = condition()
            except GLib.Error:  # it went away while it was looked at
                result = None
            if result:
                return result
            if time.monotonic() > end:
                raise AssertionError(f"{what}: not within {seconds} s; there is {self.described()}")
            time.sleep(0.05)

    def described(self):
        try:
            return [(node.get_role_name(), node.get_name()) for node in walk(self.find_window())]
        except GLib.Error as error:
            return str(error)

    # --- finding

    def find_window(self):
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            if application and application.get_process_id() == self.tour.program.pid and application.get_child_count() > 0:
                return application.get_child_at_index(0)
        return None

    def find(self, role, name=None, within=None):
        return next((node for node in walk(within or self.window) if node.get_role() == role and name in (None, node.get_name())), None)

    def await_node(self, role, name=None):
        return self.eventually(f"{role.value_nick} {name or ''}", lambda: self.find(role, name))

    def await_end(self, role, name=None):
        self.eventually(f"the end of {role.value_nick} {name or ''}", lambda: self.find(role, name) is None)

    def find_list(self, count):
        found = self.find(Atspi.Role.LIST)
        return found if found and found.get_child_count() == count else None

    def titles(self):
        """Of the rows; None for one that goes while they are read."""
        rows = [self.list.get_child_at_index(row) for row in range(self.list.get_child_count())]
        return [row and row.get_name() for row in rows]

    def texts(self, node):
        return [part.get_name() for part in walk(node) if part.get_role() == Atspi.Role.LABEL]

    # --- acting

    def act(self, node, action):
        names = actions(node)
        self.assertIn(action, names)
        node.get_action_iface().do_action(names.index(action))

    def press(self, role, name):
        self.act(self.await_node(role, name), "Press")

    def choose(self, row, command):
        """A command of the menu of a video."""
        self.act(self.list.get_child_at_index(row), "ShowMenu")
        menu = self.await_node(Atspi.Role.POPUP_MENU)
        entries = [menu.get_child_at_index(index) for index in range(menu.get_child_count())]
        names = [entry.get_name() for entry in entries]
        self.assertEqual(names, ["Details", "Share", "Rename", "Delete"])
        self.assertEqual({entry.get_role() for entry in entries}, {Atspi.Role.MENU_ITEM})
        self.act(entries[names.index(command)], "Press")
        self.await_end(Atspi.Role.POPUP_MENU)

    def write(self, field, text):
        self.assertTrue(field.get_editable_text_iface().set_text_contents(text))
        self.eventually(f"{text} in the field", lambda: self.read(field) == text)

    def read(self, field):
        text = field.get_text_iface()
        return Atspi.Text.get_text(text, 0, text.get_character_count())
