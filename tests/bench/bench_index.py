#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Files a second that the store service takes into an empty store, beside one gst-discoverer-1.0 over the same files.

    KESTREL_BIN_DIR=build/bench/bin tests/bench/bench_index.py [files]

A few clips are encoded; the others are copies that differ in some bytes which no reader of the format minds."""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

import dbus

ENCODES = [
    ("mp4", "320x240", ["-c:v", "libx264", "-c:a", "aac"]),
    ("mp4", "640x360", ["-c:v", "mpeg4", "-c:a", "aac"]),
    ("mkv", "320x240", ["-c:v", "libx264", "-c:a", "libvorbis"]),
    ("webm", "320x240", ["-c:v", "libvpx", "-deadline", "realtime", "-c:a", "libvorbis"]),
]
NAME, PATH = "com.harrow.Kestrel.Store", "/com/harrow/Kestrel/Store"


def filler(suffix):
    """Bytes of its own at the end of a file: a free box, or a void element."""
    content = os.urandom(24)
    if suffix == "mp4":
        return (8 + len(content)).to_bytes(4, "big") + b"free" + content
    return b"\xec" + (0x80 | len(content)).to_bytes(1, "big") + content


def make_clips(folder, count):
    seeds = []
    for number, (suffix, size, codecs) in enumerate(ENCODES):
        seed = folder.parent / f"seed{number}.{suffix}"
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc=size={size}:rate=15:duration=2",
                        "-f", "lavfi", "-i", "sine=duration=2", *codecs, str(seed)], check=True)
        seeds.append((suffix, seed.read_bytes()))
    an_hour_ago = time.time() - 3600
    for number in range(count):
        suffix, content = seeds[number % len(seeds)]
        clip = folder / f"clip{number:04}.{suffix}"
        clip.write_bytes(content + filler(suffix))
        os.utime(clip, (an_hour_ago, an_hour_ago))


def index(program, environment, count):
    """Seconds from the start of the program until it has done every file."""
    bus = dbus.SessionBus()
    begin = time.monotonic()
    service = subprocess.Popen([program], env=environment, stderr=subprocess.DEVNULL)
    try:
        while time.monotonic() - begin < 600:
            time.sleep(0.02)
            if not bus.name_has_owner(NAME):
                continue
            scanning, seen, done = bus.get_object(NAME, PATH).Progress(dbus_interface=NAME)
            if not scanning and done >= count:
                return time.monotonic() - begin
        raise SystemExit("bench_index: the scan does not end")
    finally:
        service.terminate()
        service.wait()


def discover(folder):
    begin = time.monotonic()
    subprocess.run(["gst-discoverer-1.0", str(folder)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return time.monotonic() - begin


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 1000
    program = pathlib.Path(os.environ["KESTREL_BIN_DIR"]) / "kestrel-store"
    with tempfile.TemporaryDirectory(prefix="kestrel-index.") as home:
        videos = pathlib.Path(home) / "Videos"
        videos.mkdir()
        runtime = pathlib.Path(home) / "run"
        runtime.mkdir(mode=0o700)
        make_clips(videos, count)
        environment = dict(os.environ, HOME=home, XDG_RUNTIME_DIR=str(runtime), XDG_DATA_HOME=f"{home}/data",
                           XDG_CONFIG_HOME=f"{home}/config", XDG_CACHE_HOME=f"{home}/cache")
        discover(videos / "clip0000.mp4")  # the peer's list of plug-ins is in the cache
        peer = count / discover(videos)
        ours = count / index(str(program), environment, count)
    print(f"index {ours:.0f} files/s | gst-discoverer-1.0 {peer:.0f} files/s | ratio {peer / ours:.2f}")


if __name__ == "__main__":
    main()
