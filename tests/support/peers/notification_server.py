# SPDX-License-Identifier: GPL-3.0-or-later
"""A notification server that writes what it was sent to a file, one JSON object a line. The rest of the command line is its
capabilities; "hang" instead of them: it never answers; "refuse": it answers with errors; "nonsense": with other types."""

import json
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NAME = 'org.freedesktop.Notifications'
record, *capabilities = sys.argv[1:]
manner = capabilities[0] if capabilities and capabilities[0] in ('hang', 'refuse', 'nonsense') else ''


def settle(value, reply, fail):
    if manner == 'refuse':
        fail(dbus.exceptions.DBusException('no', name=NAME + '.Error'))
    elif manner == 'nonsense':
        reply(dbus.Struct(('what', 1), signature='si'))
    elif not manner:
        reply(value)


class Server(dbus.service.Object):
    @dbus.service.method(NAME, in_signature='', async_callbacks=('reply', 'fail'))
    def GetCapabilities(self, reply, fail):
        settle(dbus.Array(capabilities, signature='s'), reply, fail)

    @dbus.service.method(NAME, in_signature='susssasa{sv}i', async_callbacks=('reply', 'fail'))
    def Notify(self, application, replaces, icon, summary, body, actions, hints, timeout, reply, fail):
        with open(record, 'a', encoding='utf-8') as file:
            json.dump({'application': application, 'replaces': replaces, 'icon': icon, 'summary': summary, 'body': body,
                       'actions': list(actions), 'hints': {k: str(v) for k, v in hints.items()}, 'timeout': timeout}, file)
            file.write('\n')
        settle(dbus.UInt32(1), reply, fail)


DBusGMainLoop(set_as_default=True)
session_bus = dbus.SessionBus()
server = Server(session_bus, '/org/freedesktop/Notifications')
name = dbus.service.BusName(NAME, session_bus)
print('ready', flush=True)
loop = GLib.MainLoop()
GLib.io_add_watch(sys.stdin, GLib.IO_HUP, lambda *_: loop.quit())
loop.run()
