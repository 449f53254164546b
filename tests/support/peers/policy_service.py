# SPDX-License-Identifier: GPL-3.0-or-later
"""The policy service: keys as objects, each with one value. Lines on its standard input steer it: "set KEY VALUE", "forget
KEY" (invalidated, then unknown), "number KEY", "structure KEY", "mute" (no more answers), "nonsense KEY",
"flood KEY NUMBER" (so many times invalidated)."""

import sys

import dbus
import dbus.lowlevel
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NAME = 'com.harrow.Policy'
INTERFACE = 'com.harrow.Policy.Property'
PROPERTIES = 'org.freedesktop.DBus.Properties'
values = {}
muted = False


def answer(_bus, message):
    if message.get_interface() != PROPERTIES or message.get_member() != 'Get' or muted:
        return dbus.lowlevel.HANDLER_RESULT_HANDLED if muted else dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
    value = values.get(message.get_path())
    if value is None:
        bus.send_message(dbus.lowlevel.ErrorMessage(message, 'org.freedesktop.DBus.Error.UnknownObject', 'no such key'))
    else:
        reply = dbus.lowlevel.MethodReturnMessage(message)
        reply.append(value, signature='v')
        bus.send_message(reply)
    return dbus.lowlevel.HANDLER_RESULT_HANDLED


def tell(key, changed, invalidated=(), signature='sa{sv}as'):
    message = dbus.lowlevel.SignalMessage(key, PROPERTIES, 'PropertiesChanged')
    arguments = [INTERFACE, dbus.Dictionary(changed, signature='sv'), dbus.Array(invalidated, signature='s')]
    message.append(*arguments[:2 if signature != 'sa{sv}as' else 3], signature=signature)
    bus.send_message(message)


def line(source, _condition):
    global muted  # pylint: disable=global-statement
    text = source.readline()
    if not text:
        loop.quit()
        return False
    command, *arguments = text.split()
    key = arguments[0] if arguments else None
    if command == 'set':
        values[key] = dbus.String(arguments[1])
        tell(key, {'Value': values[key]})
    elif command == 'forget':
        values.pop(key, None)
        tell(key, {}, ['Value'])
    elif command == 'number':
        values[key] = dbus.Int32(3)
        tell(key, {'Value': values[key]})
    elif command == 'structure':
        values[key] = dbus.Struct(('tvout', 1), signature='si')
        tell(key, {'Value': values[key]})
    elif command == 'nonsense':
        tell(key, {'Another': dbus.String('tvout')})
        tell(key, {'Value': dbus.String('tvout')}, signature='sa{sv}')
    elif command == 'flood':
        for _ in range(int(arguments[1])):
            tell(key, {}, ['Value'])
    elif command == 'mute':
        muted = True
    print('done', flush=True)
    return True


for pair in sys.argv[1:]:
    first_key, _, first_value = pair.partition('=')
    values[first_key] = dbus.String(first_value)
DBusGMainLoop(set_as_default=True)
loop = GLib.MainLoop()
bus = dbus.SessionBus()
bus.add_message_filter(answer)
bus.request_name(NAME)
GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, line)
print('ready', flush=True)
loop.run()
