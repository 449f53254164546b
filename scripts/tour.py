#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives the real program from outside, as a person would, by pointer and keys, and looks at the screen.

Each step waits for what a person would wait for, read off the screen itself: cells that hold pictures, a list that
became shorter, a picture that moves, a sun that stands where it stood (the demo's clips are clocks: their sun crosses
the picture once from left to right). A picture of each state is written; the first step that fails ends the tour.
"""
import argparse
import os
import pathlib
import re
import subprocess
import sys
import time

from PIL import Image, ImageChops, ImageGrab, ImageStat

CELL = 136
HEADER = 76


class Failed(Exception):
    pass


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False)


class Screen:
    """The display: pictures of it, pointer and keys."""

    def __init__(self):
        geometry = re.search(r"geometry (\d+)x(\d+)", run("xwininfo", "-root").stdout)
        self.size = tuple(int(n) for n in geometry.groups())

    def picture(self):
        # The display's own picture, in ten milliseconds: who walks through all windows for it holds the X server for seconds.
        return ImageGrab.grab(xdisplay="").convert("RGB")

    def move(self, x, y):
        run("xdotool", "mousemove", str(round(x)), str(round(y)))

    def tap(self, x, y):
        run("xdotool", "mousemove", str(round(x)), str(round(y)), "click", "1")

    def key(self, *keys):
        run("xdotool", "key", "--clearmodifiers", *keys)

    def type(self, text):
        run("xdotool", "type", "--delay", "60", text)


def is_picture(image):
    """A cell's picture, told from the quiet dark placeholder and from the bare page by its upper left quarter."""
    quarter = image.crop((4, 4, image.width // 2, image.height // 2))
    return max(ImageStat.Stat(quarter).mean) > 34


def difference(a, b):
    return ImageStat.Stat(ImageChops.difference(a, b).convert("L")).mean[0]


class Tour:
    def __init__(self, arguments):
        self.arguments = arguments
        self.screen = Screen()
        self.program = None
        self.pictures = []
        self.window = (0, 0, *self.screen.size)
        self.handset = min(self.screen.size) < 720
        self.turned = False  # the player's scene
        self.typing = False  # a text field has the focus
        self.rtl = re.match(r"(ar|he|fa|ur)", os.environ.get("LANGUAGE") or os.environ.get("LC_ALL") or os.environ.get("LANG") or "") is not None

    # --- looking

    def look(self):
        x, y, width, height = self.window
        return self.screen.picture().crop((x, y, x + width, y + height))

    def wait(self, what, condition, seconds=30.0):
        end = time.monotonic() + seconds
        while True:
            if self.program.poll() is not None:
                raise Failed(f"{what}: the program ended with status {self.program.returncode}")
            image = self.look()
            result = condition(image)
            if result:
                return image
            if time.monotonic() > end:
                self.keep("failed", image)
                raise Failed(f"{what}: not within {seconds:.0f} s")
            time.sleep(0.1)

    def still(self, what, seconds=30.0):
        """Waits until nothing moved for a second. A text cursor that blinks does not count."""
        reference = [None, 0.0]

        def same(image):
            now = time.monotonic()
            if reference[0] is None or difference(reference[0], image) >= 0.1:
                reference[:] = image, now
            return now - reference[1] >= 1
        return self.wait(what, same, seconds)

    def keep(self, name, image=None):
        path = pathlib.Path(self.arguments.pictures) / f"{len(self.pictures) + 1:02d}-{name}.png"
        (image or self.look()).save(path)
        self.pictures.append(path)

    # --- the list

    @property
    def scale(self):
        return min(self.window[2], self.window[3]) / 480 if self.handset else 1.0

    @property
    def list_turned(self):
        """The list stands upright on a handset that is held so: on a landscape screen the scene is turned, but as long as
        a text field has the focus: the keyboard on the screen stands as the screen does."""
        return not self.typing and self.handset and self.window[2] > self.window[3]

    def portrait(self, image):
        """The list upright."""
        return image.rotate(-90, expand=True) if self.list_turned else image

    def list_point(self, x, y):
        """From a point of the upright list to one of the screen."""
        x0, y0, _, height = self.window
        return (x0 + y, y0 + height - x) if self.list_turned else (x0 + x, y0 + y)

    @property
    def list_size(self):
        """Of the upright list, in pixels of the screen."""
        return tuple(reversed(self.window[2:])) if self.list_turned else self.window[2:]

    def cell_picture(self, image, row, top=HEADER):
        image = self.portrait(image)
        s = self.scale
        width = min(image.width / s, 720)
        margin = (image.width / s - width) / 2
        left = margin + 16 if not self.rtl else image.width / s - margin - 16 - 206
        y = top + row * CELL + 10
        return image.crop((round(left * s), round(y * s), round((left + 206) * s), round((y + 116) * s)))

    def rows_on_screen(self, image):
        return int((self.portrait(image).height / self.scale - HEADER) // CELL)

    def cells_with_pictures(self, image, top=HEADER):
        count = 0
        for row in range(self.rows_on_screen(image)):
            cell = self.cell_picture(image, row, top)
            if is_picture(cell):
                count += 1
            else:
                break
        return count

    def list_shown(self, image):
        """Cells on the dark page: the strip between header and first cell is bare."""
        s = self.scale
        upright = self.portrait(image)
        strip = upright.crop((0, round((HEADER - 2) * s), upright.width, round((HEADER + 4) * s)))
        return max(ImageStat.Stat(strip).mean) < 26 and self.cells_with_pictures(image) >= 1

    # --- the player

    def landscape(self, image):
        """The player's picture upright: on a portrait handset the scene is turned."""
        return image.rotate(90, expand=True) if self.turned else image

    def player_point(self, x, y):
        """From a point of the upright player picture to one of the screen."""
        x0, y0, width, _ = self.window
        return (x0 + width - y, y0 + x) if self.turned else (x0 + x, y0 + y)

    def sun(self, image):
        """Where the sun stands in the player, as a fraction of its way; None without a sun."""
        upright = self.landscape(image)
        return self.sun_in(upright.crop(self.picture_rectangle(upright)))

    @staticmethod
    def sun_in(sky):
        middle = round(sky.height * 0.28)
        columns = []
        for x in range(sky.width):
            red, green, blue = sky.getpixel((x, middle))
            if min(red, green, blue) > 200 and max(red, green, blue) - min(red, green, blue) < 34:
                columns.append(x)
        if len(columns) < sky.width * 0.03:
            return None
        radius = 0.12 * sky.height
        return (sum(columns) / len(columns) - radius) / (sky.width - 2 * radius)

    @staticmethod
    def picture_rectangle(upright):
        """A 16:9 picture fitted into the page."""
        width = min(upright.width, upright.height * 16 / 9)
        height = width * 9 / 16
        left, top = (upright.width - width) / 2, (upright.height - height) / 2
        return round(left), round(top), round(left + width), round(top + height)

    # --- the steps

    def start(self, *address):
        with open(os.path.join(self.arguments.pictures, "kestrel.log"), "a", encoding="utf-8") as log:
            self.program = subprocess.Popen([self.arguments.program, *address], stdout=subprocess.DEVNULL, stderr=log)
        end = time.monotonic() + 20
        while time.monotonic() < end:
            found = run("xdotool", "search", "--onlyvisible", "--pid", str(self.program.pid)).stdout.split()
            if found:
                break
            if self.program.poll() is not None:
                raise Failed(f"start: the program ended with status {self.program.returncode}")
            time.sleep(0.1)
        else:
            self.keep("failed", self.screen.picture())
            raise Failed("start: no window within 20 s; the display has\n" + run("xwininfo", "-root", "-tree").stdout)
        self.window = self.window_at_rest(found[-1])
        self.handset = self.window[2:] == self.screen.size and min(self.screen.size) < 720
        self.turned = False
        self.typing = False

    def window_at_rest(self, window):
        """Where the window's own area lies, without its frame, once the window manager has placed it."""
        last = None
        end = time.monotonic() + 10
        while time.monotonic() < end:
            # xdotool's own answer counts the frame twice.
            told = run("xwininfo", "-id", window).stdout
            x, y, width, height = (int(re.search(name + r":\s+(-?\d+)", told).group(1))
                                   for name in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))
            if (x, y, width, height) == last:
                break
            last = (x, y, width, height)
            time.sleep(0.3)
        else:
            raise Failed("start: the window does not come to rest")
        if x < 0 or y < 0 or x + width > self.screen.size[0] or y + height > self.screen.size[1]:
            raise Failed(f"start: a part of the window is off the screen: {width}x{height}+{x}+{y}")
        frame = re.search(r"= (\d+), (\d+), (\d+), (\d+)", run("xprop", "-id", window, "_NET_FRAME_EXTENTS").stdout)
        left, right, top, bottom = (int(n) for n in frame.groups()) if frame else (0, 0, 0, 0)
        if x < left or y < top or x + width + right > self.screen.size[0] or y + height + bottom > self.screen.size[1]:
            raise Failed(f"start: a part of the window's frame is off the screen: {width}x{height}+{x}+{y} in {frame.groups()}")
        return last

    def step_list(self):
        want = [1]

        def full(image):
            want[0] = self.rows_on_screen(image)
            return self.cells_with_pictures(image) >= want[0]
        self.wait("list: every visible cell holds a picture", full, 90)
        self.keep("list", self.still("list: at rest"))

    def step_scroll(self):
        before = self.look()
        width, height = self.list_size
        self.screen.move(*self.list_point(width / 2, height * 0.8))
        run("xdotool", "mousedown", "1")
        for moved in range(1, 13):
            self.screen.move(*self.list_point(width / 2, height * (0.8 - moved * 0.05)))
            time.sleep(0.015)
        run("xdotool", "mouseup", "1")
        self.wait("scroll: the list moves", lambda image: difference(image, before) > 4)
        self.keep("scrolled", self.still("scroll: at rest"))
        for _ in range(60):
            run("xdotool", "click", "4")
        self.wait("scroll: back at the top", lambda image: difference(image, before) < 6)

    def step_filter(self):
        before = self.still("filter: at rest")
        self.screen.type("concert")
        self.typing = self.handset
        self.wait("filter: fewer cells", lambda image: 1 <= self.cells_with_pictures(image, HEADER + 80) <= 3 and difference(image, before) > 4)
        self.keep("filter", self.still("filter: at rest"))
        self.screen.type("xyz")
        self.wait("filter: no results", lambda image: self.cells_with_pictures(image, HEADER + 80) == 0)
        self.keep("no-results", self.still("filter: at rest"))
        # The clear button at the end of the field.
        s = self.scale
        width = self.list_size[0] / s
        margin = (width - min(width, 720)) / 2
        x = margin + 16 + 30 if self.rtl else width - margin - 46
        self.screen.tap(*self.list_point(x * s, (HEADER + 40) * s))
        self.wait("filter: the list is back", lambda image: self.cells_with_pictures(image, HEADER + 80) >= min(3, self.rows_on_screen(image)))
        # Return takes the focus from the field; an empty one that nobody uses goes away after five seconds.
        self.screen.key("Return")
        self.typing = False
        self.wait("filter: the empty field goes away", lambda image: difference(image, before) < 1.5, 15)

    def tap_first_cell(self):
        self.screen.tap(*self.list_point(self.list_size[0] / 2, (HEADER + CELL / 2) * self.scale))

    def find_turn(self):
        self.turned = self.handset and self.window[3] > self.window[2]

    def step_play(self):
        self.find_turn()
        self.tap_first_cell()
        self.wait("play: a picture with a sun", self.player_shown)
        first = self.sun(self.look())
        self.wait("play: the sun moves", lambda image: (self.sun(image) or 0) > first + 0.06)
        self.keep("playing")
        return first

    def player_shown(self, image):
        return not self.list_shown(image) and self.sun(image) is not None

    def controls_shown(self, image):
        """The bar lies on a scrim that darkens the top of the picture; above a picture that leaves room, the mark of the
        way back stands bright on black."""
        upright = self.landscape(image)
        if self.picture_rectangle(upright)[1] > HEADER:
            x = upright.width - HEADER if self.rtl else 0
            return upright.crop((x, 0, x + HEADER, HEADER)).convert("L").getextrema()[1] > 200
        top = upright.crop((upright.width // 4, 2, upright.width * 3 // 4, 10))
        return max(ImageStat.Stat(top).mean) < 110

    def show_controls(self):
        upright = self.landscape(self.look())
        self.screen.tap(*self.player_point(upright.width * 0.3, upright.height * 0.3))
        return upright

    def bring_controls(self, what):
        """A picture with them. They go by themselves after three seconds: on a slow machine before they were looked at."""
        for attempt in range(6):
            self.show_controls()
            end = time.monotonic() + 5
            while time.monotonic() < end:
                image = self.look()
                if self.controls_shown(image):
                    return image
                time.sleep(0.1)
        raise Failed(f"{what}: a tap shows no controls")

    def step_controls(self):
        self.keep("controls", self.bring_controls("controls"))
        self.wait("controls: they go away by themselves", lambda image: not self.controls_shown(image), 8)

    def tap_back(self):
        upright = self.landscape(self.bring_controls("back"))
        x = upright.width - 38 if self.rtl else 38
        scale = max(1.0, self.scale)
        self.screen.tap(*self.player_point(x * scale, 38 * scale))

    def step_back(self):
        self.tap_back()
        self.wait("back: the list", self.list_shown)
        # The store reports the change and the cell shows the still and the time that remains.
        self.wait("back: the cell shows the remaining time", lambda image: self.has_accent(self.cell_picture(image, 0)))
        image = self.still("back: at rest")
        self.keep("back", image)
        # The still in the cell is the frame that was left.
        self.left_at = self.sun_in(self.cell_picture(image, 0))
        if self.left_at is None:
            raise Failed("back: no sun on the still")

    @staticmethod
    def has_accent(cell):
        """The bar along the foot that shows how far the video was watched."""
        foot = cell.crop((0, cell.height - 3, cell.width, cell.height - 1))
        blue = sum(1 for r, g, b in foot.getdata() if b > 180 and b > r + 60)
        return blue > foot.width * 0.02

    def step_resume(self, name="resumed"):
        self.tap_first_cell()
        image = self.wait("resume: a picture with a sun", self.player_shown)
        at = self.sun(image)
        # The still is small: a second or so either way; and the picture is looked at a moment after it began to move.
        second = 1 / 60
        if not self.left_at - 1.5 * second < at < self.left_at + 4 * second:
            self.keep("failed", image)
            raise Failed(f"resume: left at {self.left_at * 60:.1f} s, went on at {at * 60:.1f} s")
        self.keep(name, image)

    def step_restart(self):
        self.screen.key("BackSpace")
        self.wait("restart: back in the list", self.list_shown)
        self.wait("restart: the cell shows the remaining time", lambda image: self.has_accent(self.cell_picture(image, 0)))
        self.still("restart: at rest")
        self.program.kill()
        self.program.wait()
        self.start()
        self.wait("restart: the list after a kill", lambda image: self.cells_with_pictures(image) >= self.rows_on_screen(image))
        self.wait("restart: the place is kept", lambda image: self.has_accent(self.cell_picture(image, 0)))
        self.keep("after-kill", self.still("restart: at rest"))

    def everything(self):
        self.start()
        for name in ("list", "scroll", "filter", "play", "controls", "back", "resume", "restart"):
            print(f"  {name}", flush=True)
            getattr(self, f"step_{name}")()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--pictures", required=True)
    parser.add_argument("--videos", required=True)
    parser.add_argument("address", nargs="*")
    tour = Tour(parser.parse_args())
    for old in pathlib.Path(tour.arguments.pictures).glob("[0-9][0-9]-*.png"):
        old.unlink()
    status = 0
    try:
        tour.everything()
    except Failed as failure:
        print(f"tour: failed at {failure}", file=sys.stderr)
        status = 1
    finally:
        if tour.program and tour.program.poll() is None:
            tour.program.terminate()
            try:
                tour.program.wait(5)
            except subprocess.TimeoutExpired:
                tour.program.kill()
                tour.program.wait()
    for path in tour.pictures:
        print(path)
    return status


if __name__ == "__main__":
    sys.exit(main())
