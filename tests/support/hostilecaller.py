#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""hostilecaller.py ADDRESS KIND COUNT [vanish|paced]: calls the program over the bus in ways that a library would not let
one call, without waiting for answers, as fast as it can or, paced, every millisecond. Unless it vanishes it then asks for
something that must be answered, and ends with 0 when the answer came, with 3 when the bus threw it out."""
import itertools
import os
import socket
import struct
import sys
import time

NAME = "com.harrow.orlan.sorelkit.KestrelService"
INTERFACE = "com.harrow.orlan.sorelkit.KestrelInterface"
serials = itertools.count(1)


def aligned(data, to):
    return data + b"\0" * (-len(data) % to)


def string(text):
    raw = text if isinstance(text, bytes) else text.encode()
    return struct.pack("<I", len(raw)) + raw + b"\0"


def strings(texts):
    """An array of strings."""
    body = bytearray()
    for text in texts:
        body += b"\0" * (-len(body) % 4)
        body += string(text)
    return struct.pack("<I", len(body)) + bytes(body)


def body_of(*parts):
    """Parts that begin at multiples of 4, one behind the other."""
    data = b""
    for part in parts:
        data = aligned(data, 4) + part
    return data


def call(member, signature="", body=b"", name=NAME, interface=INTERFACE, path="/", no_reply=False):
    fields = b""
    for code, kind, value in ((1, b"o", string(path)), (2, b"s", string(interface)), (3, b"s", string(member)),
                              (6, b"s", string(name)), (8, b"g", bytes([len(signature)]) + signature.encode() + b"\0")):
        if code == 8 and not signature:
            continue
        fields = aligned(fields, 8) + bytes([code, 1]) + kind + b"\0" + value
    serial = next(serials)
    head = struct.pack("<cBBBIII", b"l", 1, 1 if no_reply else 0, 1, len(body), serial, len(fields)) + fields
    return serial, aligned(head, 8) + body


def number(value):
    return struct.pack("<I", value)


def window(*rest):
    return body_of(number(7), string("title"), *rest)


def uri(index):
    return f"file:///videos/{index}.mp4"


def message(kind, index):
    """One call; `index` makes each another one."""
    if kind == "mixed":
        kind = ("play", "launch", "launch-list", "playlist", "wrong-signature", "empty", "no-member")[index % 7]
    return {
        "play": lambda: call("play", "asu", body_of(strings([uri(index)]), number(index % 60))),
        "launch": lambda: call("launch", "us", window()),
        "launch-list": lambda: call("launch", "usas", window(strings([uri(index)]))),
        "playlist": lambda: call("play", "usus", window(number(index), string("list"))),
        "wrong-signature": lambda: call("play", "ai", struct.pack("<Ii", 4, index)),
        "no-member": lambda: call("pause"),
        "empty": lambda: call("play", "as", strings([])),
        "empty-address": lambda: call("play", "as", strings([""])),
        "many": lambda: call("play", "as", strings(uri(i) for i in range(100_000))),
        "megabyte": lambda: call("play", "as", strings(["file:///" + "x" * (1 << 20)])),
        "megabyte-title": lambda: call("launch", "us", body_of(number(7), string("t" * (1 << 20)))),
        "invalid-utf8": lambda: call("play", "as", strings([b"file:///\xff\xfe\xc0\xaf.mp4"])),
        "lying-length": lambda: call("play", "as", struct.pack("<I", 0x00ffffff) + string(uri(index))),
    }[kind]()


class Bus:
    def __init__(self, address):
        path = dict(part.split("=", 1) for part in address.split(";")[0].split(":", 1)[1].split(","))
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect("\0" + path["abstract"] if "abstract" in path else path["path"])
        self.socket.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\n")
        self.socket.recv(1024)
        self.socket.sendall(b"BEGIN\r\n")
        self.buffer = b""
        self.ask("Hello", name="org.freedesktop.DBus", interface="org.freedesktop.DBus")

    def exactly(self, count):
        while len(self.buffer) < count:
            data = self.socket.recv(1 << 16)
            if not data:
                raise ConnectionResetError("thrown out")
            self.buffer += data
        data, self.buffer = self.buffer[:count], self.buffer[count:]
        return data

    def wait_for_reply(self, serial):
        while True:
            head = self.exactly(16)
            body, _, fields = struct.unpack("<III", head[4:])
            header = aligned(self.exactly(fields + -fields % 8), 8)
            self.exactly(body)
            if head[1] in (2, 3) and b"\x05\x01u\0" + struct.pack("<I", serial) in header:
                return

    def ask(self, member, **where):
        serial, data = call(member, **where)
        self.socket.sendall(data)
        self.wait_for_reply(serial)


def main():
    address, kind, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
    try:
        bus = Bus(address)
        begin = time.monotonic()
        for index in range(count):
            if "paced" in sys.argv[4:]:
                time.sleep(max(0.0, begin + index / 1000 - time.monotonic()))
            bus.socket.sendall(message(kind, index)[1])
        if "vanish" not in sys.argv[4:]:
            # Answered by the program's window thread, after everything before it.
            serial, data = call("play", "usus", window(number(0), string("the last")))
            bus.socket.sendall(data)
            bus.wait_for_reply(serial)
    except (ConnectionResetError, BrokenPipeError):
        return 3
    return 0


if __name__ == "__main__":
    sys.exit(main())
