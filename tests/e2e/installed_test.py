# SPDX-License-Identifier: GPL-3.0-or-later
"""The installed program as desktops and other programs meet it: started by the bus, opened by a file manager, started
twice, called by who means no good."""
import os
import pathlib
import shutil
import signal
import socket
import struct
import subprocess
import time
import unittest
import urllib.parse

import dbus
import dbus.bus

import e2e

INSTANCE = "com.harrow.Kestrel"
INSTANCE_PATH = "/com/harrow/Kestrel"
APPLICATION = "org.freedesktop.Application"
SERVICE = "com.harrow.orlan.sorelkit.KestrelService"
INTERFACE = "com.harrow.orlan.sorelkit.KestrelInterface"
RED, BLUE = (0xD0, 0x10, 0x10), (0x10, 0x30, 0xE0)
NAMES = (INSTANCE, SERVICE, "com.harrow.Kestrel.Store", "com.harrow.Kestrel.Thumbnailer")


def coloured_clip(path, colour):
    """Nothing but one colour, so that the screen tells which file plays."""
    path.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                    "color=c=0x%02x%02x%02x:size=640x360:rate=10:duration=60" % colour, "-c:v", "libx264", "-preset", "ultrafast",
                    "-pix_fmt", "yuv420p", str(path)], check=True)
    return path


def shows(image, colour):
    small = image.resize((24, 24))
    near = [all(abs(a - b) < 48 for a, b in zip(pixel, colour)) for pixel in small.getdata()]
    return sum(near) > len(near) / 2


def escaped(path):
    """As a file manager writes it."""
    return "file://" + urllib.parse.quote(str(path))


class Installed(e2e.Case):
    @classmethod
    def setUpClass(cls):
        # A blank in the prefix: whoever writes or reads a path has to think of it.
        cls.prefix = pathlib.Path(os.environ["TMPDIR"]) / "a prefix"
        environment = {name: value for name, value in os.environ.items() if name != "DESTDIR"}
        subprocess.run(["cmake", "--install", str(e2e.BIN.parent), "--prefix", str(cls.prefix)], check=True,
                       stdout=subprocess.DEVNULL, env=environment)

    def setUp(self):
        super().setUp()
        self.usual_bus = os.environ["DBUS_SESSION_BUS_ADDRESS"]
        self.log = self.pictures / "programs.log"
        self.processes = []
        self.children = []
        self.start_bus()

    def start_bus(self):
        """A session bus that knows the prefix; what it starts has its environment and writes into its log."""
        environment = dict(os.environ, XDG_DATA_DIRS=f"{self.prefix}/share:/usr/local/share:/usr/share")
        with open(self.log, "ab") as log:
            daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], env=environment,
                                      stdout=subprocess.PIPE, stderr=log, text=True)
        self.children.append(daemon)
        self.address = daemon.stdout.readline().strip()
        self.use_bus(self.address)

    def use_bus(self, address):
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = address
        self.bus = dbus.bus.BusConnection(address)

    def tearDown(self):
        for name in NAMES:
            pid = self.owner(name)
            if pid:
                os.kill(pid, signal.SIGTERM)
                self.wait_until(f"{name} ends", lambda pid=pid: not e2e.alive(pid))
        self.bus.close()
        for child in reversed(self.children):
            child.terminate()
            child.wait(10)
            if child.stdout:
                child.stdout.close()
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.usual_bus
        super().tearDown()

    # --- asking

    def call(self, name, path, interface, method, signature="", *arguments):
        return self.bus.call_blocking(name, path, interface, method, signature, arguments, timeout=20.0)

    def application(self, method, signature, *arguments):
        return self.call(INSTANCE, INSTANCE_PATH, APPLICATION, method, signature, *arguments)

    def open(self, *uris):
        self.application("Open", "asa{sv}", list(uris), {})

    def play(self, *uris):
        self.call(SERVICE, "/", INTERFACE, "play", "as", list(uris))

    def owner(self, name):
        """The process that serves a name, or None. Starts nothing."""
        try:
            return int(self.bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                              "GetConnectionUnixProcessID", "s", (name,)))
        except dbus.DBusException:
            return None

    def wait_until(self, what, condition, seconds=20.0):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                self.tour.keep("failed", self.tour.screen.picture())
                self.fail(f"{what}: not within {seconds:.0f} s")
            time.sleep(0.05)

    def is_installed(self, pid):
        return pathlib.Path(os.readlink(f"/proc/{pid}/exe")).is_relative_to(self.prefix)

    def arguments_of(self, pid):
        return pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().decode().split("\0")[:-1]

    # --- looking

    def wait_for_colour(self, colour, but_never=None):
        def condition():
            image = self.tour.screen.picture()
            self.assertFalse(but_never and shows(image, but_never), "the wrong file plays")
            return shows(image, colour)
        self.wait_until(f"a picture of colour {colour}", condition)

    def wait_for_library(self, cells):
        def condition():
            image = self.tour.screen.picture()
            return self.tour.list_shown(image) and self.tour.cells_with_pictures(image) == cells
        self.tour.window, self.tour.handset = (0, 0, *self.tour.screen.size), True
        self.wait_until(f"the library with {cells} pictures", condition, 30)

    @staticmethod
    def windows(*query):
        return subprocess.run(["xdotool", *query], capture_output=True, text=True, check=False).stdout.split()

    def is_active(self, process):
        active = self.windows("getactivewindow")
        return active != [] and active[0] in self.windows("search", "--onlyvisible", "--pid", str(process.pid))

    def start(self, *arguments, **environment):
        """A start by hand, with what it says in the log."""
        with open(self.log, "ab") as log:
            return subprocess.Popen([str(self.prefix / "bin/kestrel"), *arguments], stdout=log, stderr=log,
                                    env=dict(os.environ, **environment))

    # --- the stories

    def test_play_starts_the_program_and_cancel_ends_it(self):
        """Another program asks to play; Kestrel does not run yet."""
        red = coloured_clip(self.videos / "Red.mp4", RED)
        self.play(escaped(red))
        self.wait_for_colour(RED)
        program = self.owner(SERVICE)
        self.assertTrue(self.is_installed(program))
        self.assertEqual(["-servicefw"], self.arguments_of(program)[1:])
        self.call(SERVICE, "/", INTERFACE, "cancel")
        self.wait_until("the program ends", lambda: not e2e.alive(program))
        self.assertIsNone(self.owner(INSTANCE))

    def test_tapping_the_icon_shows_the_library(self):
        """The desktop starts what its entry says can be activated; all services come from the prefix."""
        coloured_clip(self.videos / "Red.mp4", RED)
        coloured_clip(self.videos / "Blue.mp4", BLUE)
        self.application("Activate", "a{sv}", {"activation-token": "some-token"})
        self.wait_for_library(2)
        for name in (INSTANCE, "com.harrow.Kestrel.Store", "com.harrow.Kestrel.Thumbnailer"):
            self.assertTrue(self.is_installed(self.owner(name)), name)
        self.assertEqual([], self.arguments_of(self.owner(INSTANCE))[1:])
        # Schema, catalogs, theme and icons were found.
        self.assertNotRegex(self.log.read_text(), "not found|no catalog|cannot be read|is no theme|no icon")

    def test_a_file_manager_opens_a_file(self):
        """Names with all that has to be escaped: once with the program down, then while it plays, then from outside the
        library, in the spelling of another toolkit."""
        red = coloured_clip(self.videos / "Höhe #1; 100% [größer].mp4", RED)
        blue = coloured_clip(self.home / "Elsewhere/a b?c&d+ü.mp4", BLUE)
        self.open(escaped(red))
        self.wait_for_colour(RED)
        program = self.owner(INSTANCE)
        self.open(escaped(blue), escaped(red))
        self.wait_for_colour(BLUE)
        self.open("file://localhost" + str(red).replace("%", "%25").replace(" ", "%20").replace("#", "%23"))
        self.wait_for_colour(RED)
        self.assertEqual(program, self.owner(INSTANCE))
        self.open()
        self.assertEqual(program, self.owner(INSTANCE))

    def test_a_second_start_brings_the_first_to_the_front(self):
        """The person taps the icon again, or a file with a launcher that knows no bus: nothing else plays."""
        red = coloured_clip(self.videos / "Red.mp4", RED)
        blue = coloured_clip(self.videos / "Blue.mp4", BLUE)
        first = self.start()
        self.children.append(first)
        self.wait_until("the name", lambda: self.owner(INSTANCE) == first.pid)
        self.wait_until("its window is active", lambda: self.is_active(first))
        other = subprocess.Popen(["xev", "-geometry", "200x200+50+50"], stdout=subprocess.DEVNULL)
        self.children.append(other)

        def another_is_active():
            # A window that comes while the first one is still being raised may not be given the focus.
            self.windows("search", "--name", "Event Tester", "windowactivate")
            return not self.is_active(first) and self.windows("getactivewindow")
        self.wait_until("another window is active", another_is_active)
        second = self.start(str(red), DESKTOP_STARTUP_ID="launcher/kestrel/1-0-host_TIME1")
        self.assertEqual(0, second.wait(20))
        self.wait_until("the first is active again", lambda: self.is_active(first))
        self.open(escaped(blue))
        self.wait_for_colour(BLUE, but_never=RED)
        # The name of the play interface is there by now.
        self.call(SERVICE, "/", INTERFACE, "cancel")
        self.assertEqual(0, first.wait(20))

    def test_a_bus_that_does_not_know_the_prefix(self):
        """Unpacked somewhere and started by hand: the services are found from where the program lies."""
        coloured_clip(self.videos / "Red.mp4", RED)
        self.bus.close()
        self.use_bus(self.usual_bus)
        self.children.append(self.start())
        self.wait_for_library(1)
        for name in NAMES[2:]:
            self.assertTrue(self.is_installed(self.owner(name)), name)

    def test_callers_that_mean_no_good(self):
        program = self.start()
        self.children.append(program)
        self.wait_until("the name", lambda: self.owner(INSTANCE) == program.pid)
        self.open(*["file:///nowhere/%d.mp4" % number for number in range(100000)])
        for address in ("x" * (1 << 20), "file:///" + "%41" * (1 << 19)):
            with self.assertRaises(dbus.DBusException) as refused:
                self.open(address)
            self.assertEqual("org.freedesktop.DBus.Error.InvalidArgs", refused.exception.get_dbus_name())
        for method, signature, arguments in (("Open", "s", ("x",)), ("Open", "asas", (["x"], ["y"])), ("Activate", "", ()),
                                             ("Activate", "a{ss}", ({"a": "b"},)), ("ActivateAction", "ss", ("a", "b")),
                                             ("Close", "", ())):
            with self.assertRaises(dbus.DBusException, msg=f"{method}({signature})"):
                self.application(method, signature, *arguments)
        for strange in ("", "file:///%FF%FE%00.mp4", "file://", "file:", "%", "file:///a%", "\u202egnp.4pm", "urn:", "gopher:x"):
            self.open(strange)
        deep = dbus.String("x", variant_level=30)
        for data in ({"activation-token": deep}, {"activation-token": dbus.Array([1, 2], signature="i")},
                     {"desktop-startup-id": "_TIME99999999999999999999"}, {"desktop-startup-id": "a" * 100000 + "_TIME5"},
                     {"activation-token": "a\nb=c\x01"}):
            self.application("Activate", "a{sv}", data)
            self.application("ActivateAction", "sava{sv}", "no-such-action", [], data)
        self.assertTrue(self.bus_refuses_broken_text())
        self.assertIsNone(program.poll())
        self.assertEqual(program.pid, self.owner(INSTANCE))
        # It still does what it is there for.
        self.open(escaped(coloured_clip(self.home / "Elsewhere/Red.mp4", RED)))
        self.wait_for_colour(RED)

    def bus_refuses_broken_text(self):
        """Open() with bytes that are no UTF-8, written by hand because no library would: the bus hangs up on the caller."""
        def text(value):
            return struct.pack("<I", len(value)) + value + b"\0"

        def message(serial, destination, path, interface, member, signature, body):
            fields = b""
            for code, kind, value in ((1, b"o", path), (6, b"s", destination), (2, b"s", interface), (3, b"s", member), (8, b"g", signature)):
                if code == 8 and not value:
                    continue
                fields += b"\0" * (-len(fields) % 8) + bytes((code, 1)) + kind + b"\0"
                fields += bytes((len(value),)) + value + b"\0" if kind == b"g" else text(value)
            head = struct.pack("<cBBBIII", b"l", 1, 0, 1, len(body), serial, len(fields)) + fields
            return head + b"\0" * (-len(head) % 8) + body

        path = self.address.split("path=")[1].split(",")[0]
        with socket.socket(socket.AF_UNIX) as peer:
            peer.settimeout(20)
            peer.connect(path)
            peer.sendall(b"\0AUTH EXTERNAL " + str(os.getuid()).encode().hex().encode() + b"\r\nBEGIN\r\n")
            peer.sendall(message(1, b"org.freedesktop.DBus", b"/org/freedesktop/DBus", b"org.freedesktop.DBus", b"Hello", b"", b""))
            received = b""
            while b"NameAcquired" not in received:
                received += peer.recv(65536)
            uri = text(b"file:///\xff\xfe.mp4")
            body = struct.pack("<I", len(uri)) + uri
            body += b"\0" * (-len(body) % 4) + struct.pack("<I", 0)
            body += b"\0" * (-len(body) % 8)
            peer.sendall(message(2, INSTANCE.encode(), INSTANCE_PATH.encode(), APPLICATION.encode(), b"Open", b"asa{sv}", body))
            return peer.recv(65536) == b""


if __name__ == "__main__":
    unittest.main()
