#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""CPU seconds (user and system) and memory of 20 s of 1080p30 and of 10 s of 2160p30 H.264 played and painted: ours beside
gst-play-1.0 and mpv, and beside totem for 8 s in the midst of it; the same clip in the same run. The X server's share is in none
of them. Beside them, of ours, the pictures that were dropped."""
import os
import subprocess
import sys
import tempfile
import time

import dbus

PLAYER = "org.mpris.MediaPlayer2.totem"
SPAN = 8  # seconds in the midst of a video
PATIENCE = 30  # seconds until a player plays


class Use:
    """Of a process that has ended well: seconds of CPU, MiB at most, and what it wrote."""

    def __init__(self, command):
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.output = process.stdout.read().decode()
        _, status, usage = os.wait4(process.pid, 0)
        if status != 0:
            sys.exit(f"bench_playback: {command[0]} failed")
        self.cpu = usage.ru_utime + usage.ru_stime
        self.memory = usage.ru_maxrss / 1024


def make_clip(folder, size, seconds, bits):
    clip = os.path.join(folder, f"{size}.mp4")
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc2=s={size}:r=30:d={seconds}", "-c:v", "libx264", "-preset", "veryfast",
                    "-b:v", bits, "-pix_fmt", "yuv420p", "-g", "60", clip], check=True)
    return clip


def ours(clip, size):
    return [os.path.join(os.environ["KESTREL_BIN_DIR"], "bench_videowindow"), "play", clip, size]


def mpv(clip, size):
    return ["mpv", "--no-config", "--vo=x11", "--hwdec=no", "--no-audio", "--no-osc", "--really-quiet", "--no-border", f"--geometry={size}+0+0", clip]


def gst_play(clip):
    return ["gst-play-1.0", "--no-interactive", "-q", "--videosink=ximagesink", clip]


def compare(name, mine, peer_name, peer):
    print(f"{name} {mine.cpu:.2f} s | {peer_name} {peer.cpu:.2f} s | ratio {mine.cpu / peer.cpu:.2f}", flush=True)
    print(f"{name}-memory {mine.memory:.0f} MiB | {peer_name} {peer.memory:.0f} MiB | ratio {mine.memory / peer.memory:.2f}", flush=True)


def tell_dropped(name, mine, frames):
    """The limit: a picture every two seconds."""
    limit = frames // 60
    dropped = max(0, frames - int(mine.output.split()[-1]))
    print(f"{name}-dropped {dropped} of {frames} | limit {limit} | ratio {dropped / limit:.2f}", flush=True)


def used_by(pid):
    fields = open(f"/proc/{pid}/stat", encoding="ascii").read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def midst(command, plays):
    """CPU seconds of a while in the midst of it; None when it does not begin to play. It is ended then."""
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        end = time.monotonic() + PATIENCE
        while not plays():
            if time.monotonic() > end or process.poll() is not None:
                return None
            time.sleep(0.1)
        time.sleep(2)
        before = used_by(process.pid)
        time.sleep(SPAN)
        return used_by(process.pid) - before
    finally:
        process.kill()
        process.wait()


def totem_plays(bus):
    if not bus.name_has_owner(PLAYER):
        return False
    player = dbus.Interface(bus.get_object(PLAYER, "/org/mpris/MediaPlayer2"), "org.freedesktop.DBus.Properties")
    return player.Get("org.mpris.MediaPlayer2.Player", "PlaybackStatus") == "Playing"


def beside_totem(clip, size):
    bus = dbus.SessionBus()
    peer = midst(["totem", "--fullscreen", clip], lambda: totem_plays(bus))
    if peer is None:
        print("bench_playback: totem does not play here", file=sys.stderr)
        return
    mine = midst(ours(clip, size), lambda: True)
    print(f"playback-totem {mine:.2f} s | totem {peer:.2f} s | ratio {mine / peer:.2f}", flush=True)


def main():
    with tempfile.TemporaryDirectory() as folder:
        # The first use of GStreamer under a new home looks through all plug-ins, once; that is not playing.
        subprocess.run(["gst-inspect-1.0", "playbin3"], check=True, stdout=subprocess.DEVNULL)
        clip = make_clip(folder, "1920x1080", 20, "8M")
        mine, gst, peer = (Use(command) for command in (ours(clip, "1920x1080"), gst_play(clip), mpv(clip, "1920x1080")))
        compare("playback", mine, "gst-play-1.0", gst)
        compare("playback-mpv", mine, "mpv", peer)
        good = mine.cpu < gst.cpu and mine.cpu < peer.cpu
        tell_dropped("playback", mine, 600)
        compare("playback-854x480", Use(ours(clip, "854x480")), "mpv", Use(mpv(clip, "854x480")))
        beside_totem(clip, "1920x1080")

        clip = make_clip(folder, "3840x2160", 10, "25M")
        mine, gst, peer = (Use(command) for command in (ours(clip, "1920x1080"), gst_play(clip), mpv(clip, "1920x1080")))
        compare("playback-2160p", mine, "gst-play-1.0", gst)
        compare("playback-2160p-mpv", mine, "mpv", peer)
        tell_dropped("playback-2160p", mine, 300)
        return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
