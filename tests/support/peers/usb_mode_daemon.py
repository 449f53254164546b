# SPDX-License-Identifier: GPL-3.0-or-later
"""The USB mode daemon: answers mode_request with its mode, tells states by sig_usb_state_ind. Lines on its standard input
steer it: "mode NAME", "state NAME" (a signal), "flood NUMBER" (so many signals of a state that is no mode),
"answer string|number|error|never", "nonsense" (signals of other types)."""

import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

NAME = 'com.sorel.usb_moded'
PATH = '/com/sorel/usb_moded'


class Daemon(dbus.service.Object):
    def __init__(self, bus, mode):
        super().__init__(bus, PATH)
        self.mode = mode
        self.answer = 'string'

    @dbus.service.method(NAME, in_signature='', async_callbacks=('reply', 'fail'))
    def mode_request(self, reply, fail):
        if self.answer == 'string':
            reply(dbus.String(self.mode))
        elif self.answer == 'number':
            reply(dbus.Int32(1))
        elif self.answer == 'error':
            fail(dbus.exceptions.DBusException('busy', name=NAME + '.Error'))

    def signal(self, *arguments):
        message = dbus.lowlevel.SignalMessage(PATH, NAME, 'sig_usb_state_ind')
        message.append(*arguments)
        self.connection.send_message(message)

    def line(self, source, _condition):
        text = source.readline()
        if not text:
            loop.quit()
            return False
        command, _, argument = text.strip().partition(' ')
        if command == 'mode':
            self.mode = argument
        elif command == 'answer':
            self.answer = argument
        elif command == 'state':
            self.signal(argument)
        elif command == 'flood':
            for i in range(int(argument)):
                self.signal(f'event {i}')
        elif command == 'nonsense':
            self.signal(dbus.Int32(7))
            self.signal()
            self.signal(dbus.Array(['mass_storage'], signature='s'))
            self.signal('mass_storage', 'mass_storage')
        print('done', flush=True)
        return True


DBusGMainLoop(set_as_default=True)
loop = GLib.MainLoop()
system_bus = dbus.SystemBus()
daemon = Daemon(system_bus, sys.argv[1] if len(sys.argv) > 1 else 'charging_only')
name = dbus.service.BusName(NAME, system_bus)
GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, daemon.line)
print('ready', flush=True)
loop.run()
