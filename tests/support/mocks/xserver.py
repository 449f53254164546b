# SPDX-License-Identifier: GPL-3.0-or-later
"""The part of an X server that a client needs to ask for the power of the screens (DPMS 1.1): xserver.py SOCKET
[--without-dpms]. Commands on standard input: "level N", "enabled 0|1", "silent" (requests wait), "speak", "leave" (the
connections are cut). Writes "ready", then "asked" for each question after the power. Servers for tests have no DPMS."""
import os
import selectors
import socket
import struct
import sys

DPMS_OPCODE = 130
QUERY_EXTENSION, GET_INPUT_FOCUS = 98, 43
DPMS_INFO = 7

path = sys.argv[1]
has_dpms = "--without-dpms" not in sys.argv
power = {"level": 0, "enabled": 1}
silent = False
selector = selectors.DefaultSelector()
clients = {}


class Client:
    def __init__(self, connection):
        self.connection = connection
        self.received = b""
        self.sequence = 0
        self.order = ""

    def take(self, size):
        taken, self.received = self.received[:size], self.received[size:]
        return taken

    def set_up(self):
        if len(self.received) < 12:
            return False
        self.order = "<" if self.received[:1] == b"l" else ">"
        name, data = struct.unpack(self.order + "6x2H2x", self.received[:12])
        size = 12 + (name + 3 & ~3) + (data + 3 & ~3)
        if len(self.received) < size:
            return False
        self.take(size)
        screen = struct.pack(self.order + "5I6HI4B", 1, 2, 0xffffff, 0, 0, 480, 854, 60, 110, 1, 1, 3, 0, 0, 24, 0)
        body = struct.pack(self.order + "4I2H8B4x", 1, 0x200000, 0x1fffff, 0, 0, 0xffff, 1, 0, 0, 0, 32, 32, 8, 255) + screen
        self.connection.sendall(struct.pack(self.order + "BxHHH", 1, 11, 0, len(body) // 4) + body)
        return True

    def serve(self):
        if not self.order and not self.set_up():
            return
        while not silent and len(self.received) >= 4:
            opcode, minor, length = struct.unpack(self.order + "BBH", self.received[:4])
            if len(self.received) < 4 * length:
                return
            self.sequence += 1
            self.answer(opcode, minor, self.take(4 * length))

    def answer(self, opcode, minor, request):
        if opcode == QUERY_EXTENSION:
            size = struct.unpack(self.order + "H", request[4:6])[0]
            found = has_dpms and request[8:8 + size] == b"DPMS"
            self.reply(struct.pack("BBBB", found, DPMS_OPCODE if found else 0, 0, 0))
        elif opcode == DPMS_OPCODE and minor == DPMS_INFO:
            print("asked", flush=True)
            self.reply(struct.pack(self.order + "HB", power["level"], power["enabled"]))
        elif opcode == GET_INPUT_FOCUS:
            self.reply(b"")

    def reply(self, body):
        self.connection.sendall(struct.pack(self.order + "BxHI", 1, self.sequence & 0xffff, 0) + body.ljust(24, b"\0"))


def leave(client):
    selector.unregister(client.connection)
    client.connection.close()
    clients.pop(client, None)


def command(words):
    global silent
    if words[0] in power:
        power[words[0]] = int(words[1])
    elif words[0] in ("silent", "speak"):
        silent = words[0] == "silent"
        for client in list(clients):
            client.serve()
    elif words[0] == "leave":
        for client in list(clients):
            leave(client)


listener = socket.socket(socket.AF_UNIX)
listener.bind(path)
listener.listen()
selector.register(listener, selectors.EVENT_READ, None)
selector.register(sys.stdin, selectors.EVENT_READ, sys.stdin)
print("ready", flush=True)
while True:
    for key, _ in selector.select():
        if key.data is sys.stdin:
            lines = os.read(0, 4096).decode()
            if not lines:
                sys.exit(0)
            for line in lines.splitlines():
                command(line.split())
        elif key.data is None:
            client = Client(listener.accept()[0])
            clients[client] = True
            selector.register(client.connection, selectors.EVENT_READ, client)
        elif key.data in clients:
            data = key.data.connection.recv(65536)
            if data:
                key.data.received += data
                key.data.serve()
            else:
                leave(key.data)
