# SPDX-License-Identifier: GPL-3.0-or-later
"""A Wayland compositor without a screen, and a person before it: a pointer and a keyboard that speak the compositor's
protocols, pictures of the output, and what the compositor knows of the windows."""
import array
import io
import json
import os
import pathlib
import shutil
import socket
import struct
import subprocess
import tempfile

import e2e
from PIL import Image

CONFIG = """output * mode {width}x{height}
output * bg #336655 solid_color
default_border none
xwayland disable
exec touch {folder}/ready
"""
KEYMAP = (b'xkb_keymap { xkb_keycodes { include "evdev+aliases(qwerty)" }; xkb_types { include "complete" }; '
          b'xkb_compat { include "complete" }; xkb_symbols { include "pc+us+inet(evdev)" }; };\0')
KEYS = {letter: code for row, first in (("qwertyuiop", 16), ("asdfghjkl", 30), ("zxcvbnm", 44)) for code, letter in enumerate(row, first)}
KEYS.update(Return=28, BackSpace=14, Escape=1, space=57)
LEFT_BUTTON = 0x110


class Connection:
    """The wire: requests out, events in. Numbers and texts are all that is sent here."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(path)
        self.received = b""
        self.last_id = 1
        self.globals = {}
        self.registry = self.new_id()
        self.send(1, 1, self.registry)
        self.sync()

    def new_id(self):
        self.last_id += 1
        return self.last_id

    def send(self, target, opcode, *arguments, descriptor=None):
        body = b""
        for argument in arguments:
            if isinstance(argument, str):
                text = argument.encode() + b"\0"
                body += struct.pack("=I", len(text)) + text + b"\0" * (-len(text) % 4)
            else:
                body += struct.pack("=I", argument)
        message = struct.pack("=II", target, (len(body) + 8) << 16 | opcode) + body
        rights = [] if descriptor is None else [(socket.SOL_SOCKET, socket.SCM_RIGHTS, array.array("i", [descriptor]))]
        self.socket.sendmsg([message], rights)

    def event(self):
        while len(self.received) < 8 or len(self.received) < struct.unpack_from("=I", self.received, 4)[0] >> 16:
            data = self.socket.recv(65536)
            if not data:
                raise AssertionError("the compositor went away")
            self.received += data
        sender, word = struct.unpack_from("=II", self.received)
        body, self.received = self.received[8:word >> 16], self.received[word >> 16:]
        return sender, word & 0xffff, body

    def sync(self):
        """Until the compositor has handled all that was sent."""
        callback = self.new_id()
        self.send(1, 0, callback)
        while True:
            sender, opcode, body = self.event()
            if sender == callback:
                return
            if (sender, opcode) == (1, 0):
                raise AssertionError(f"the compositor complains: {body!r}")
            if (sender, opcode) == (self.registry, 0):
                name, length = struct.unpack_from("=II", body)
                self.globals[body[8:8 + length - 1].decode()] = name

    def bind(self, interface):
        new = self.new_id()
        self.send(self.registry, 0, self.globals[interface], interface, 1, new)
        return new


class Seat:
    """A virtual pointer and a virtual keyboard, in place of the tour's tools for X displays."""

    def __init__(self, compositor):
        self.compositor = compositor
        self.wire = Connection(compositor.display)
        self.time = 0
        seat = self.wire.bind("wl_seat")
        self.pointer = self.made_by("zwlr_virtual_pointer_manager_v1", seat)
        self.keyboard = self.made_by("zwp_virtual_keyboard_manager_v1", seat)
        keymap = os.memfd_create("keymap")
        os.write(keymap, KEYMAP)
        self.wire.send(self.keyboard, 0, 1, len(KEYMAP), descriptor=keymap)
        os.close(keymap)
        self.wire.sync()

    def made_by(self, interface, seat):
        manager = self.wire.bind(interface)
        device = self.wire.new_id()
        self.wire.send(manager, 0, seat, device)
        return device

    @property
    def size(self):
        return self.compositor.size

    def picture(self):
        return self.compositor.picture()

    def now(self):
        self.time += 20  # ms, of the events' own clock
        return self.time

    def frame(self):
        self.wire.send(self.pointer, 4)
        self.wire.sync()

    def move(self, x, y):
        self.wire.send(self.pointer, 1, self.now(), round(x), round(y), *self.size)
        self.frame()

    def tap(self, x, y):
        self.move(x, y)
        for pressed in (1, 0):
            self.wire.send(self.pointer, 2, self.now(), LEFT_BUTTON, pressed)
            self.frame()

    def key(self, *names):
        for name in names:
            for pressed in (1, 0):
                self.wire.send(self.keyboard, 1, self.now(), KEYS[name], pressed)
        self.wire.sync()

    def type(self, text):
        self.key(*text)

    def close(self):
        self.wire.socket.close()


def as_somebody_else():
    """What to start a program with that does not run as root."""
    if os.getuid() != 0:
        return []
    nobody = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"]
    if subprocess.run([*nobody, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
        return nobody
    return ["unshare", "--user", "--map-user=1000", "--map-group=1000"]


class Compositor:
    """An output of that size. `display` is what WAYLAND_DISPLAY is to be."""

    def __init__(self, size):
        self.size = size
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kestrel-wayland.", dir="/tmp"))  # a home is closed to others
        (self.folder / "config").write_text(CONFIG.format(width=size[0], height=size[1], folder=self.folder))
        if os.getuid() == 0:
            self.folder.chmod(0o777)
        (self.folder / "run").mkdir()
        starter = as_somebody_else()
        if "setpriv" in starter:
            os.chown(self.folder / "run", 65534, 65534)
        (self.folder / "run").chmod(0o700)
        environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "SWAYSOCK")}
        environment.update(HOME=str(self.folder), XDG_RUNTIME_DIR=str(self.folder / "run"), WLR_BACKENDS="headless", WLR_LIBINPUT_NO_DEVICES="1",
                           WLR_RENDERER="pixman")
        self.log = (self.folder / "log").open("wb")
        self.process = subprocess.Popen([*starter, "sway", "--config", str(self.folder / "config")], env=environment, cwd=self.folder,
                                        stdout=self.log, stderr=self.log)
        try:
            e2e.wait_until("a compositor", self.is_ready)
        except AssertionError as error:
            told = (self.folder / "log").read_text(errors="replace")
            self.stop()
            raise AssertionError(f"{error}\n{told}") from error

    def is_ready(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the compositor ended with status {self.process.returncode}")
        self.display = next((str(path) for path in (self.folder / "run").glob("wayland-*") if path.is_socket()), None)
        self.control = next((str(path) for path in (self.folder / "run").glob("sway-ipc*")), None)
        return (self.folder / "ready").exists() and self.display and self.control

    def ask(self, *arguments):
        environment = dict(os.environ, SWAYSOCK=self.control)
        return subprocess.run(["swaymsg", "--raw", *arguments], env=environment, check=True, capture_output=True, text=True).stdout

    def windows(self):
        """By the programs' ids, what the compositor tells of each."""
        found = {}

        def walk(node):
            if node.get("app_id"):
                found[node["app_id"]] = node
            for child in node["nodes"] + node["floating_nodes"]:
                walk(child)
        walk(json.loads(self.ask("--type", "get_tree")))
        return found

    def picture(self):
        environment = dict(os.environ, WAYLAND_DISPLAY=self.display)
        data = subprocess.run(["grim", "-t", "ppm", "-"], env=environment, check=True, capture_output=True).stdout
        return Image.open(io.BytesIO(data)).convert("RGB")

    def stop(self):
        self.process.terminate()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.log.close()
        shutil.rmtree(self.folder)
