#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""From the D-Bus call "play" of another program to the first frame on the screen, read off the screen: the median of ten
videos in the running program with its list, and of five starts by D-Bus activation (the store runs by then). The limit is the
one of a tap, plus, for activation, that of a start."""
import os
import pathlib
import statistics
import subprocess
import sys
import time

import dbus
from PIL import ImageGrab

SERVICE = "com.harrow.orlan.sorelkit.KestrelService"
INTERFACE = "com.harrow.orlan.sorelkit.KestrelInterface"
LIMIT, START_LIMIT = 150, 1000  # ms
VIDEOS, STARTS = 10, 5
# A column of the screen: dark in the list, and in the clips an edge of one colour or the other, so that what is left of the
# video before is not taken for the next.
COLUMN, ROWS = (470, 60, 471, 800), range(40, 740, 140)
EDGES = ("red", "lime")


def shown(edge):
    column = ImageGrab.grab(bbox=COLUMN, xdisplay=os.environ["DISPLAY"]).convert("RGB")
    pixels = [column.getpixel((0, row)) for row in ROWS]
    strong, weak = (0, 1) if edge == "red" else (1, 0)
    return all(pixel[strong] > 150 and pixel[weak] < 90 for pixel in pixels)


def dark():
    """And stays so for half a second: nothing moves any more."""
    end = time.monotonic() + 0.5
    while time.monotonic() < end:
        column = ImageGrab.grab(bbox=COLUMN, xdisplay=os.environ["DISPLAY"]).convert("L")
        if column.getextrema()[1] > 60:
            return False
    return True


def wait_until(what, condition, seconds=20.0):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"bench_request: {what}: not within {seconds:.0f} s")
        time.sleep(0.002)


class Session:
    def __init__(self):
        self.home = pathlib.Path(os.environ["HOME"])
        self.videos = self.home / "Videos"
        self.videos.mkdir()
        (self.home / ".config").mkdir(exist_ok=True)
        (self.home / ".config/user-dirs.dirs").write_text('XDG_VIDEOS_DIR="$HOME/Videos"\n')
        for edge in EDGES:
            subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i",
                            f"testsrc2=s=1920x1080:r=30:d=8,drawbox=w=iw:h=60:color={edge}:t=fill", "-f", "lavfi", "-i", "sine=d=8", "-c:v",
                            "libx264", "-preset", "veryfast", "-b:v", "8M", "-pix_fmt", "yuv420p", str(self.home / f"{edge}.mp4")],
                           check=True)
        self.clips = []
        for number in range(VIDEOS + STARTS + 1):
            edge = EDGES[number % 2]
            path = self.videos / f"Clip {number:02d}.mp4"
            # Other bytes: a video of its own.
            path.write_bytes((self.home / f"{edge}.mp4").read_bytes() + number.to_bytes(8, "big"))
            self.clips.append((path, edge))
        services = self.home / ".local/share/dbus-1/services"
        services.mkdir(parents=True)
        (services / f"{SERVICE}.service").write_text(
            f"[D-BUS Service]\nName={SERVICE}\nExec={os.environ['KESTREL_BIN_DIR']}/kestrel -servicefw\n")
        self.bus = dbus.SessionBus()
        self.bus.call_blocking("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "ReloadConfig", "", ())

    def call(self, method, signature="", *arguments):
        self.bus.call_blocking(SERVICE, "/", INTERFACE, method, signature, arguments, timeout=60)

    def request(self, clip):
        path, edge = clip
        begin = time.monotonic()
        self.call("play", "as", [path.as_uri()])
        wait_until("the first frame", lambda: shown(edge))
        return (time.monotonic() - begin) * 1000

    def end(self):
        self.call("cancel")
        wait_until("the end", lambda: not self.bus.name_has_owner(SERVICE))
        wait_until("the window's end", dark)


def running(session):
    with subprocess.Popen([os.path.join(os.environ["KESTREL_BIN_DIR"], "kestrel")], stderr=subprocess.DEVNULL) as program:
        wait_until("the program", lambda: session.bus.name_has_owner(SERVICE))
        session.request(session.clips[0])  # not counted: it looks through GStreamer's plug-ins
        times = []
        for clip in session.clips[1:VIDEOS + 1]:
            subprocess.run(["xdotool", "key", "BackSpace"], check=True)
            wait_until("the list", dark)
            times.append(session.request(clip))
        session.end()
        program.wait(20)
    return times


def activated(session):
    times = []
    for clip in session.clips[VIDEOS + 1:]:
        times.append(session.request(clip))
        session.end()
    return times


def main():
    session = Session()
    figures = (("request", running(session), LIMIT), ("request-activation", activated(session), LIMIT + START_LIMIT))
    for name, times, limit in figures:
        figure = statistics.median(times)
        print(f"{name} {figure:.0f} ms | limit {limit} ms | ratio {figure / limit:.2f}", flush=True)
        print(f"bench_request: {name}: " + ", ".join(f"{value:.0f}" for value in times), file=sys.stderr)
    for service in ("Store", "Thumbnailer"):
        pid = session.bus.call_blocking("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetConnectionUnixProcessID", "s",
                                        [f"com.harrow.Kestrel.{service}"])
        os.kill(int(pid), 15)
    return 0 if all(statistics.median(times) <= limit for _, times, limit in figures) else 1


if __name__ == "__main__":
    sys.exit(main())
