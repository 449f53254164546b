# SPDX-License-Identifier: GPL-3.0-or-later
"""Times of moves within a video, ours and mpv's: the same clip, the same places, the same size of window."""
import json
import os
import random
import socket
import subprocess
import time


# Codecs at 1080p30, a key frame every two seconds.
SIZE = "1920x1080"
SECONDS = 40
CODECS = {"h264": ("mp4", ["-c:v", "libx264", "-preset", "veryfast", "-b:v", "8M", "-g", "60", "-c:a", "aac"]),
          "hevc": ("mp4", ["-c:v", "libx265", "-preset", "ultrafast", "-b:v", "6M", "-x265-params", "keyint=60:log-level=none",
                           "-c:a", "aac"]),
          "vp9": ("webm", ["-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-row-mt", "1", "-threads", "4",
                           "-b:v", "6M", "-g", "60", "-c:a", "libopus"])}


def make_clip(folder, name):
    container, arguments = CODECS[name]
    path = os.path.join(folder, f"{name}.{container}")
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc2=s={SIZE}:r=30:d={SECONDS}", "-f", "lavfi",
                    "-i", f"sine=d={SECONDS}", *arguments, "-pix_fmt", "yuv420p", path], check=True)
    return path


def random_places(count):
    chance = random.Random(5)
    return [chance.randrange(0, (SECONDS - 2) * 1000) for _ in range(count)]


def finger_places(count):
    """A finger that goes from one end to the other and back, over most of the time line."""
    span = (SECONDS - 2) * 1000
    return [int(span * abs(((2 * step / count) % 2) - 1)) for step in range(count)]


def ours(mode, clip, places):
    command = [os.path.join(os.environ["KESTREL_BIN_DIR"], "bench_videoplaces"), mode, clip, SIZE, *map(str, places)]
    output = subprocess.run(command, check=True, capture_output=True, text=True, timeout=120).stdout
    times = [float(line) for line in output.split()]
    if len(times) < len(places):
        raise SystemExit(f"{mode}: {len(times)} of {len(places)} places reached")
    return times


class Mpv:
    """mpv in a window, paused, moved over its socket."""

    def __init__(self, clip, folder):
        path = os.path.join(folder, "mpv.socket")
        self.process = subprocess.Popen(["mpv", "--no-config", "--vo=x11", "--hwdec=no", "--no-osc", "--really-quiet", "--pause",
                                         "--no-border", "--ao=null", f"--geometry={SIZE}+0+0", f"--input-ipc-server={path}",
                                         clip], stdin=subprocess.DEVNULL)
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(20)
        deadline = time.monotonic() + 20
        while True:
            try:
                self.socket.connect(path)
                break
            except OSError:
                if time.monotonic() > deadline:
                    raise
                time.sleep(0.05)
        self.buffer = b""
        self.command("get_property", "time-pos")
        while self.answer(lambda message: "error" in message).get("data") is None:
            time.sleep(0.05)
            self.command("get_property", "time-pos")

    def command(self, *words):
        self.socket.sendall(json.dumps({"command": list(words)}).encode() + b"\n")

    def answer(self, wanted):
        while True:
            while b"\n" in self.buffer:
                line, self.buffer = self.buffer.split(b"\n", 1)
                message = json.loads(line)
                if wanted(message):
                    return message
            self.buffer += self.socket.recv(65536)

    def seek(self, place, flags):
        """ms until mpv says that it plays from there on."""
        start = time.perf_counter()
        self.command("seek", place / 1000, flags)
        self.answer(lambda message: message.get("event") == "playback-restart")
        return (time.perf_counter() - start) * 1000

    def close(self):
        self.command("quit")
        self.process.wait(timeout=20)
        self.socket.close()


def mpv(flags, clip, places, folder):
    player = Mpv(clip, folder)
    try:
        return [player.seek(place, flags) for place in places]
    finally:
        player.close()


def percentile(times, share):
    ordered = sorted(times)
    return ordered[min(len(ordered) - 1, int(len(ordered) * share))]
