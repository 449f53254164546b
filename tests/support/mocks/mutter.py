# SPDX-License-Identifier: GPL-3.0-or-later
"""The display configuration of a compositor for python-dbusmock. Parameter: "mode", the power save mode."""
import dbus

BUS_NAME = "org.gnome.Mutter.DisplayConfig"
MAIN_OBJ = "/org/gnome/Mutter/DisplayConfig"
MAIN_IFACE = "org.gnome.Mutter.DisplayConfig"
SYSTEM_BUS = False


def load(mock, parameters):
    mock.AddProperty(MAIN_IFACE, "PowerSaveMode", dbus.Int32(parameters.get("mode", 0)))
