# SPDX-License-Identifier: GPL-3.0-or-later
"""Where the gallery's pictures are taken: displays of any size, homes with videos in them, a keyboard on the screen."""
import contextlib
import os
import pathlib
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile

import e2e
from PIL import Image, ImageDraw

# No frames, and what a phone's shell does with a full-screen program when its keyboard comes: its window keeps the rest.
SHELL = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <keyboard>
    <keybind key="W-k">
      <action name="ToggleFullscreen"/>
      <action name="MoveResizeTo"><x>0</x><y>0</y><width>{width}</width><height>{height}</height></action>
    </keybind>
  </keyboard>
  <theme><keepBorder>no</keepBorder></theme>
  <applications><application class="*"><decor>no</decor></application></applications>
</openbox_config>
"""


def keyboard_height(size):
    """Of a phone's keyboard: three eighths of a screen that is held upright, less than half of one on its side."""
    width, height = size
    return height * 3 // 8 if height > width else height * 4 // 9


class Display:
    """An X display with a window manager, told to the programs by DISPLAY."""

    def __init__(self, size):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="display-"))
        (self.folder / "rc.xml").write_text(SHELL.format(width=size[0], height=size[1] - keyboard_height(size)))
        number = self.folder / "number"
        with number.open("w", encoding="ascii") as told:
            self.server = subprocess.Popen(["Xvfb", "-displayfd", str(told.fileno()), "-screen", "0", f"{size[0]}x{size[1]}x24", "-nolisten", "tcp",
                                            "-ac", "-r", "-nocursor", "-fbdir", str(self.folder)], pass_fds=(told.fileno(),), stderr=subprocess.DEVNULL)
        e2e.wait_until("a display", lambda: number.read_text(encoding="ascii").endswith("\n"))
        os.environ["DISPLAY"] = ":" + number.read_text(encoding="ascii").strip()
        self.manager = subprocess.Popen(["openbox", "--sm-disable", "--config-file", str(self.folder / "rc.xml"), "--startup",
                                         f"touch {self.folder}/ready"], stderr=subprocess.DEVNULL)
        e2e.wait_until("a window manager", (self.folder / "ready").exists)

    def picture(self):
        """What the screen shows, out of the server's own memory: a machine that is busy would miss what shows for seconds only."""
        data = (self.folder / "Xvfb_screen0").read_bytes()
        header = struct.unpack_from(">25I", data)  # as xwd writes it
        size, line, colors = header[4:6], header[12], header[19]
        return Image.frombytes("RGB", size, data[header[0] + 12 * colors:], "raw", "BGRX", line, 1)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in (self.manager, self.server):
            process.terminate()
            process.wait(10)
        shutil.rmtree(self.folder)


class Home:
    """A person's home with videos, and a session in it: its bus, and the services that are started there."""

    def __init__(self, folder, videos, copies=1):
        self.folder = folder
        self.videos = folder / "Videos"
        (folder / ".config").mkdir(parents=True, exist_ok=True)
        (folder / ".config/user-dirs.dirs").write_text('XDG_VIDEOS_DIR="$HOME/Videos"\n')
        (folder / "run").mkdir(mode=0o700)
        if videos is None:
            self.videos.mkdir()
        else:
            for number in range(copies):
                target = self.videos / f"again/{number}" if number else self.videos
                shutil.copytree(videos, target, copy_function=shutil.copy2)
        self.bus = None

    def __enter__(self):
        self.bus = e2e.Bus("DBUS_SESSION_BUS_ADDRESS")
        self.inhabit()
        return self

    def inhabit(self):
        """What is started from now on is started here."""
        for name in ("XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_VIDEOS_DIR"):
            os.environ.pop(name, None)
        os.environ["HOME"] = str(self.folder)
        os.environ["XDG_RUNTIME_DIR"] = str(self.folder / "run")
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address

    def __exit__(self, *_):
        for service in ("kestrel-store", "kestrel-thumbnailer"):
            e2e.end_service(service)
        self.bus.stop()


@contextlib.contextmanager
def held_scan(files):
    """Services that are started meanwhile read so many files and no more: each further one is waited for ten seconds. The
    pictures of those that were read are made."""
    with tempfile.TemporaryDirectory(prefix="held-") as folder:
        worker = pathlib.Path(folder) / "worker"
        command = [sys.executable, str(e2e.SOURCE / "tests/support/heldworker.py"), f"{folder}/read", str(files), str(e2e.BIN / "kestrel-media-worker")]
        worker.write_text(f"#!/bin/sh\nexec {shlex.join(command)} \"$@\"\n")
        worker.chmod(0o755)
        # In bubblewrap there is no interpreter; the media worker shuts itself in.
        held = {"KESTREL_MEDIA_WORKER_PROGRAM": str(worker), "KESTREL_NO_BUBBLEWRAP": "1"}
        before = {name: os.environ.get(name) for name in held}
        os.environ.update(held)
        try:
            yield
        finally:
            for name, value in before.items():
                os.environ.pop(name) if value is None else os.environ.update({name: value})


# One character more than a question shows of a title, in both directions of writing. The year tells the filter which.
LONG_TITLES = {
    "1987": "The summer of 1987, from the first ferry in the morning fog to the last campfire on the island: how we lost the map on the "
            "second day, found the old mill and slept in it, rowed across the lake against the wind with one oar and a broom, met the "
            "people of the lighthouse, who gave us bread and a kitten, learned to sail from a man who could not swim, and came home a week "
            "late with the kitten, three new friends and not one dry sock between us all",
    "1988": "صيف عام 1988 من أول عبّارة في ضباب الصباح إلى آخر نار على شاطئ الجزيرة: كيف أضعنا الخريطة في اليوم الثاني ووجدنا الطاحونة "
            "القديمة ونمنا فيها، وعبرنا البحيرة بمجداف واحد في وجه الريح، والتقينا أهل المنارة الذين أعطونا الخبز وقطة صغيرة، وتعلمنا "
            "الإبحار من رجل لا يعرف السباحة، ثم عدنا إلى البيت متأخرين أسبوعين كاملين ومعنا القطة وثلاثة أصدقاء جدد، ولم يبق معنا جورب واحد "
            "جاف، لكننا ضحكنا طوال الطريق حتى نسينا التعب والجوع والبرد",
}


def add_long_titles(folder):
    """Two clips more, the same as another but for the title in them."""
    source = min(folder.rglob("*.mp4"), key=lambda path: path.stat().st_size)
    for year, title in LONG_TITLES.items():
        title = title[:401]
        if len(title.strip()) != 401:
            raise AssertionError(f"the title of {year} has {len(title)} characters")
        subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-i", str(source), "-c", "copy", "-metadata", f"title={title}",
                        str(folder / f"{year}.mp4")], check=True)


KEYS = {False: ("#161A20", "#2A313B", "#4FA3FF"), True: ("#E4E8ED", "#FFFFFF", "#1066D0")}  # ground, key, action; light or not


def with_keyboard(image, size, light):
    """The picture of a program on a screen of this size whose rest the keyboard has."""
    ground, key, action = KEYS[light]
    whole = Image.new("RGB", size, ground)
    whole.paste(image, (0, 0))
    draw = ImageDraw.Draw(whole)
    width, height = size
    top = image.height + 12
    row = (height - top - 4) / 4
    side = 5
    step = (width - 2 * side) / 10
    for line, count in enumerate((10, 9, 7)):
        left = (width - count * step) / 2
        for number in range(count):
            x = left + number * step
            draw.rounded_rectangle((x + 3, top + line * row + 3, x + step - 3, top + (line + 1) * row - 5), 8, fill=key)
    y = (top + 3 * row + 3, top + 4 * row - 5)
    draw.rounded_rectangle((side + step * 2 + 3, y[0], side + step * 7 - 3, y[1]), 8, fill=key)
    draw.rounded_rectangle((side + step * 7 + 3, y[0], width - side - 3, y[1]), 8, fill=action)
    return whole
