# SPDX-License-Identifier: GPL-3.0-or-later
"""python-dbusmock template: ModemManager with modems and voice calls, as far as somebody who follows calls sees it.

Like the real one it lists modems, not calls, at its object manager: a call is an object of its own that the
modem's "Calls" and the signals CallAdded and CallDeleted name."""

import dbus
import dbus.lowlevel

from dbusmock import MOCK_IFACE
from dbusmock.mockobject import objects

BUS_NAME = 'org.freedesktop.ModemManager1'
MAIN_OBJ = '/org/freedesktop/ModemManager1'
MAIN_IFACE = 'org.freedesktop.ModemManager1'
SYSTEM_BUS = True
IS_OBJECT_MANAGER = False

MODEM_IFACE = 'org.freedesktop.ModemManager1.Modem'
VOICE_IFACE = 'org.freedesktop.ModemManager1.Modem.Voice'
CALL_IFACE = 'org.freedesktop.ModemManager1.Call'
OBJECT_MANAGER_IFACE = 'org.freedesktop.DBus.ObjectManager'


main = None  # the mock's main object


def load(mock, parameters):
    global main  # pylint: disable=global-statement
    main = mock
    mock.AddMethod(OBJECT_MANAGER_IFACE, 'GetManagedObjects', '', parameters.get('managed-type', 'a{oa{sa{sv}}}'),
                   parameters.get('managed', 'ret = {dbus.ObjectPath(k): objects[k].props for k in objects if "/Modem/" in k}'))
    # A daemon that restarts in mid-call lists the call from the beginning.
    if 'call-state' in parameters:
        _add_modem('0')
        _add_call('0', 'c1', parameters['call-state'])


def _modem(name):
    return f'{MAIN_OBJ}/Modem/{name}'


def _call(name):
    return f'{MAIN_OBJ}/Call/{name}'


def _add_modem(name):
    main.AddObject(_modem(name), MODEM_IFACE, {'Manufacturer': dbus.String('Harrow')}, [])
    objects[_modem(name)].AddProperties(VOICE_IFACE, {'Calls': dbus.Array([], signature='o'),
                                                      'EmergencyOnly': dbus.Boolean(False)})


def _set_calls(modem, calls, announce):
    voice = objects[_modem(modem)]
    voice.props[VOICE_IFACE]['Calls'] = dbus.Array(calls, signature='o')
    if announce:
        voice.EmitSignal('org.freedesktop.DBus.Properties', 'PropertiesChanged', 'sa{sv}as',
                         [VOICE_IFACE, {'Calls': dbus.Array(calls, signature='o')}, []])


def _add_call(modem, name, state, announce=False):
    # A state that is no number stands for itself.
    value = dbus.Int32(int(state)) if state.lstrip('-').isdigit() else dbus.String(state)
    main.AddObject(_call(name), CALL_IFACE, {'State': value, 'Number': dbus.String('1')}, [])
    calls = list(objects[_modem(modem)].props[VOICE_IFACE]['Calls'])
    _set_calls(modem, [*calls, dbus.ObjectPath(_call(name))], announce)


@dbus.service.method(MOCK_IFACE, in_signature='s', out_signature='')
def AddModem(self, name):
    _add_modem(name)
    self.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesAdded', 'oa{sa{sv}}',
                    [dbus.ObjectPath(_modem(name)), objects[_modem(name)].props])


@dbus.service.method(MOCK_IFACE, in_signature='s', out_signature='')
def RemoveModem(self, name):
    self.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesRemoved', 'oas',
                    [dbus.ObjectPath(_modem(name)), list(objects[_modem(name)].props)])
    self.RemoveObject(_modem(name))


@dbus.service.method(MOCK_IFACE, in_signature='sss', out_signature='')
def AddCall(self, modem, name, state):
    """State: a number, or text for a call whose state is no number."""
    _add_call(modem, name, state, announce=True)
    objects[_modem(modem)].EmitSignal(VOICE_IFACE, 'CallAdded', 'o', [dbus.ObjectPath(_call(name))])


@dbus.service.method(MOCK_IFACE, in_signature='si', out_signature='')
def SetCallState(self, name, state):
    call = objects[_call(name)]
    old = call.props[CALL_IFACE]['State']
    call.props[CALL_IFACE]['State'] = dbus.Int32(state)
    call.EmitSignal(CALL_IFACE, 'StateChanged', 'iiu', [old, state, dbus.UInt32(0)])


@dbus.service.method(MOCK_IFACE, in_signature='ss', out_signature='')
def DeleteCall(self, modem, name):
    calls = [c for c in objects[_modem(modem)].props[VOICE_IFACE]['Calls'] if c != _call(name)]
    objects[_modem(modem)].EmitSignal(VOICE_IFACE, 'CallDeleted', 'o', [dbus.ObjectPath(_call(name))])
    _set_calls(modem, calls, True)
    self.RemoveObject(_call(name))


@dbus.service.method(MOCK_IFACE, in_signature='', out_signature='')
def TalkNonsense(self):
    """Every signal that is listened to, with other types than it has."""
    self.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesAdded', 's', ['modem'])
    self.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesAdded', 'oa{sa{sv}}', [
        dbus.ObjectPath(_modem('9')), {VOICE_IFACE: {'Calls': dbus.Array(['call', ''], signature='s')}}])
    self.EmitSignal(OBJECT_MANAGER_IFACE, 'InterfacesRemoved', 'u', [dbus.UInt32(1)])
    self.EmitSignal(VOICE_IFACE, 'CallAdded', 's', ['/no/path'])
    self.EmitSignal(VOICE_IFACE, 'CallAdded', '', [])
    self.EmitSignal(VOICE_IFACE, 'CallDeleted', 'ai', [dbus.Array([1], signature='i')])
    for path in [p for p in objects if '/Call/' in p]:
        objects[path].EmitSignal(CALL_IFACE, 'StateChanged', 'sss', ['active', 'active', 'why'])
        objects[path].EmitSignal('org.freedesktop.DBus.Properties', 'PropertiesChanged', 'ss', [CALL_IFACE, 'State'])
        objects[path].EmitSignal('org.freedesktop.DBus.Properties', 'PropertiesChanged', 'sa{sv}as',
                                 [CALL_IFACE, {'State': dbus.Array([4], signature='i')}, []])


@dbus.service.method(MOCK_IFACE, in_signature='ss', out_signature='')
def Flood(self, modem, number):
    """So many calls that nobody can ask about, each told to have begun."""
    for i in range(int(number)):
        for signal, signature, arguments in (('CallAdded', 'o', [dbus.ObjectPath(f'{MAIN_OBJ}/Call/none{i}')]),
                                             ('CallDeleted', 'ss', ['', ''])):
            message = dbus.lowlevel.SignalMessage(_modem(modem), VOICE_IFACE, signal)
            message.append(*arguments, signature=signature)
            self.connection.send_message(message)
