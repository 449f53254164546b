# SPDX-License-Identifier: GPL-3.0-or-later
"""The inhibit portal for python-dbusmock: requests that last until they are closed. Parameters: "delay" (ms before an
answer), "response" (of every request; none when negative), "own_paths" (as portals before version 0.9)."""
import dbus
from dbusmock import MOCK_IFACE
from gi.repository import GLib

BUS_NAME = "org.freedesktop.portal.Desktop"
MAIN_OBJ = "/org/freedesktop/portal/desktop"
MAIN_IFACE = "org.freedesktop.portal.Inhibit"
REQUEST_IFACE = "org.freedesktop.portal.Request"
SYSTEM_BUS = False


def load(mock, parameters):
    mock.delay = parameters.get("delay", 0)
    mock.response = parameters.get("response", 0)
    mock.own_paths = parameters.get("own_paths", False)
    mock.requests = 0
    mock.holders = {}
    mock.close_request = lambda request: close_request(mock, request)


def close_request(mock, request):
    mock.holders.pop(request.path, None)
    mock.RemoveObject(request.path)


def answer(mock, path, done):
    if mock.response >= 0:
        mock.object_for(path).EmitSignal(REQUEST_IFACE, "Response", "ua{sv}",
                                         [dbus.UInt32(mock.response), dbus.Dictionary({}, signature="sv")])
    done(dbus.ObjectPath(path))


@dbus.service.method(MAIN_IFACE, in_signature="sua{sv}", out_signature="o", sender_keyword="sender",
                     async_callbacks=("done", "failed"))
def Inhibit(self, window, flags, options, sender=None, done=None, failed=None):
    from dbusmock import mockobject
    self.object_for = lambda path: mockobject.objects[path]
    self.requests += 1
    token = options["handle_token"] if not self.own_paths else f"own{self.requests}"
    path = f"{MAIN_OBJ}/request/{sender[1:].replace('.', '_')}/{token}"
    self.AddObject(path, REQUEST_IFACE, {}, [("Close", "", "", f'objects["{MAIN_OBJ}"].close_request(self)')])
    self.holders[path] = f"{int(flags)}: {options['reason']}"
    if self.delay:
        GLib.timeout_add(self.delay, lambda: answer(self, path, done))
    else:
        answer(self, path, done)


@dbus.service.method(MOCK_IFACE, in_signature="", out_signature="as")
def Holders(self):
    return dbus.Array(list(self.holders.values()), signature="s")


@dbus.service.method(MOCK_IFACE, in_signature="", out_signature="u")
def Requests(self):
    return dbus.UInt32(self.requests)


@dbus.service.method(MOCK_IFACE, in_signature="u", out_signature="")
def SetDelay(self, delay):
    self.delay = int(delay)
