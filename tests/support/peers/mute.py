# SPDX-License-Identifier: GPL-3.0-or-later
"""Owns the names of the command line, on the bus that its first argument says (session or system), and never answers."""

import sys

import dbus
import dbus.lowlevel
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus() if sys.argv[1] == 'session' else dbus.SystemBus()
for name in sys.argv[2:]:
    bus.request_name(name)
bus.add_message_filter(lambda _bus, message: dbus.lowlevel.HANDLER_RESULT_HANDLED)
loop = GLib.MainLoop()
GLib.io_add_watch(sys.stdin, GLib.IO_HUP, lambda *_: loop.quit())
print('ready', flush=True)
loop.run()
