# SPDX-License-Identifier: GPL-3.0-or-later
"""A screen saver service for python-dbusmock: activity and cookies. Parameters: "paths", where it has its object (the
first is told to mock), "delay" (ms before an answer)."""
import dbus
from dbusmock import MOCK_IFACE
from gi.repository import GLib

BUS_NAME = "org.freedesktop.ScreenSaver"
MAIN_OBJ = "/org/freedesktop/ScreenSaver"
MAIN_IFACE = "org.freedesktop.ScreenSaver"
SYSTEM_BUS = False


def load(mock, parameters):
    mock.active = parameters.get("active", False)
    mock.delay = parameters.get("delay", 0)
    mock.last_cookie = 0
    mock.holders = {}


def later(mock, done, value=None):
    arguments = [] if value is None else [value]
    if mock.delay:
        GLib.timeout_add(mock.delay, lambda: done(*arguments))
    else:
        done(*arguments)


@dbus.service.method(MAIN_IFACE, in_signature="", out_signature="b", async_callbacks=("done", "failed"))
def GetActive(self, done=None, failed=None):
    later(self, done, dbus.Boolean(self.active))


@dbus.service.method(MAIN_IFACE, in_signature="ss", out_signature="u", async_callbacks=("done", "failed"))
def Inhibit(self, application, reason, done=None, failed=None):
    self.last_cookie += 1
    cookie = self.last_cookie
    self.holders[cookie] = f"{application}: {reason}"
    later(self, done, dbus.UInt32(cookie))


@dbus.service.method(MAIN_IFACE, in_signature="u", out_signature="")
def UnInhibit(self, cookie):
    del self.holders[int(cookie)]


@dbus.service.method(MOCK_IFACE, in_signature="", out_signature="as")
def Holders(self):
    return dbus.Array(list(self.holders.values()), signature="s")


@dbus.service.method(MOCK_IFACE, in_signature="u", out_signature="")
def SetDelay(self, delay):
    self.delay = int(delay)


@dbus.service.method(MOCK_IFACE, in_signature="b", out_signature="")
def Activate(self, active):
    self.active = bool(active)
    self.EmitSignal(MAIN_IFACE, "ActiveChanged", "b", [self.active])
