#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""gallery.py --pictures DIR --videos FOLDER [--only WORD]...: the real program driven through every state, in every shape and look.

Each variant (portrait, landscape, desktop; dark, light, more contrast, right-to-left, text twice as large) is a display of its
own size with its own window manager; the library, its store and its pictures are shared by all, so that a variant takes as
long as its states do. The pictures of one variant stand in the folder of its name. --only takes the variants and states in whose
names the word stands. Ends with 1 when a state could not be reached at the second try either, with its picture as it was then.
"""
import argparse
import contextlib
import dataclasses
import os
import pathlib
import shutil
import sys
import tempfile
import time

import dbus
import detailsstates
import e2e
import playerstates
import relatedstates
import serverstates
import stage
from e2e import touring
from PIL import Image

SERVICE = "com.harrow.orlan.sorelkit.KestrelService"
INTERFACE = "com.harrow.orlan.sorelkit.KestrelInterface"


@dataclasses.dataclass(frozen=True)
class Variant:
    name: str
    screen: tuple
    profile: str = "handset"
    window: tuple = ()  # of the desktop
    look: tuple = ()  # environment
    states: tuple = ()  # these alone

    @property
    def rtl(self):
        return "rtl" in self.name

    @property
    def light(self):
        return "light" in self.name


LOOKS = {
    "dark": (("KESTREL_COLOR_SCHEME", "dark"),),
    "light": (("KESTREL_COLOR_SCHEME", "light"),),
    "rtl": (("KESTREL_COLOR_SCHEME", "dark"), ("LANGUAGE", "ar"), ("LC_ALL", "ar_EG.UTF-8")),
    "large": (("KESTREL_COLOR_SCHEME", "dark"), ("KESTREL_TEXT_SCALE", "2")),
    "light-large": (("KESTREL_COLOR_SCHEME", "light"), ("KESTREL_TEXT_SCALE", "2")),
    "contrast": (("KESTREL_COLOR_SCHEME", "dark"), ("KESTREL_HIGH_CONTRAST", "1")),
    "light-contrast": (("KESTREL_COLOR_SCHEME", "light"), ("KESTREL_HIGH_CONTRAST", "1")),
}
SHAPES = {
    "portrait": ((480, 854), "handset", ()),
    "landscape": ((854, 480), "desktop", (854, 480)),
    "desktop": ((1280, 800), "desktop", (1280, 800)),
}
ELSEWHERE = ("light-large", "contrast", "light-contrast")  # one shape shows them
VARIANTS = [Variant(f"{shape}-{look}", *SHAPES[shape], LOOKS[look]) for shape in SHAPES for look in LOOKS
            if shape == "portrait" or look not in ELSEWHERE]
# A handset held on its side: the list stands upright in it, but for as long as something is typed.
VARIANTS.append(Variant("turned-dark", (854, 480), "handset", (), LOOKS["dark"], ("list", "filter", "rename", "player", *detailsstates.DetailsStates.DETAILS)))

LARGE = 3 << 30  # takes a while to copy

MENU = ("details", "share", "rename", "delete")  # of a video


class Gallery(detailsstates.DetailsStates, relatedstates.RelatedStates, playerstates.PlayerStates, serverstates.ServerStates, touring.Tour):
    """One variant: its pictures, by state."""

    def __init__(self, variant, pictures, only, display):
        arguments = e2e.Arguments(pictures / variant.name, None)
        pathlib.Path(arguments.pictures).mkdir(parents=True, exist_ok=True)
        for old in pathlib.Path(arguments.pictures).glob("*-failed.png"):
            old.unlink()
        super().__init__(arguments)
        self.screen.picture = display.picture
        self.variant = variant
        self.only = only
        self.rtl = variant.rtl
        self.failures = []
        self.listed = False
        self.last = None

    # --- the program

    def start(self, *address):
        super().start(*address)
        self.window_id = touring.run("xdotool", "search", "--onlyvisible", "--pid", str(self.program.pid)).stdout.split()[-1]
        if self.variant.window:
            touring.run("xdotool", "windowmove", self.window_id, "0", "0")
            touring.run("xdotool", "windowsize", "--sync", self.window_id, *map(str, self.variant.window))
            self.window = self.window_at_rest(self.window_id)
        self.handset = self.variant.profile == "handset"
        self.find_turn()

    @contextlib.contextmanager
    def program_runs(self, *address):
        self.start(*address)
        try:
            yield
        finally:
            self.program.terminate()
            self.program.wait(15)

    @property
    def scale(self):
        side = min(self.window[2:])
        return side / 480 if self.handset else min(1.0, side / 480)

    def wanted(self, state):
        if self.variant.states and state not in self.variant.states:
            return False
        return not self.only or any(word in state.replace("_", "-") for word in self.only)

    def keep(self, name, image=None):
        if name == "failed":  # of a wait: it is kept when the state gives up
            self.last = image
            return
        (image or self.look()).save(pathlib.Path(self.arguments.pictures) / f"{name}.png")

    # --- looking and touching, at logical points of the upright list or player

    def rest(self, seconds=8.0):
        """A picture in which nothing moves any more; of one that never rests, the last."""
        try:
            return self.still(f"{self.variant.name}: at rest", seconds)
        except touring.Failed:
            return self.look()

    def side(self, x):
        return self.list_size[0] / self.scale - x if self.rtl else x

    def at(self, x, y):
        return self.list_point(self.side(x) * self.scale, y * self.scale)

    def pointer(self, action, button="1"):
        touring.run("xdotool", action, button)

    def cell(self, row, top=touring.HEADER):
        """The middle of a cell."""
        return self.at(self.list_size[0] / self.scale / 2, top + (row + 0.5) * self.cell_height())

    def cell_height(self):
        return 194 if "large" in self.variant.name else touring.CELL

    def settled(self, what, condition):
        """The first picture of a state that is like the one before: what fades in is there."""
        last = [None]

        def same(image):
            before, last[0] = last[0], image
            return condition(image) and before is not None and touring.difference(image, before) < 0.02
        return self.wait(what, same)

    def changed(self, before, what, by=0.5):
        self.wait(what, lambda image: touring.difference(image, before) > by)
        return self.rest()

    # --- the states of the library

    LIBRARY = ("press", "scrolled", "keyboard_focus", "filter", "no_results", "object_menu", "rename", "delete", "share", "banner", "lost_video")

    def library(self):
        states = [(state, 2) for state in self.LIBRARY if self.wanted(state)]
        with contextlib.ExitStack() as running:
            while states or self.wanted("list") and not self.listed:
                running.close()
                running.enter_context(self.program_runs())
                before = self.rest(15)
                if self.wanted("list"):
                    self.keep("list", before)
                self.listed = True
                # One after the other in the same program, as long as it stands as it stood.
                while states:
                    state, tries = states.pop(0)
                    if not self.attempt(state, before, last=tries == 1) and tries > 1:
                        states.insert(0, (state, tries - 1))
                        break
                    if touring.difference(self.rest(), before) > 0.1:
                        break

    def attempt(self, state, before, last):
        try:
            getattr(self, state)(before)
            return True
        except touring.Failed as failure:
            if last:
                self.failures.append(f"{self.variant.name}: {state}: {failure}")
                self.keep(f"{state.replace('_', '-')}-failed", self.last)
            return False
        finally:
            self.screen.move(*self.at(4, 4))

    def press(self, before):
        # A press that lasts becomes a long tap, which dims the page: on a slow machine the picture may come too late.
        for _ in range(10):
            self.screen.move(*self.cell(1))
            self.pointer("mousedown")
            end = time.monotonic() + 0.4
            last, image = None, self.look()
            while time.monotonic() < end and (image != last or touring.difference(image, before) < 0.5):
                last, image = image, self.look()
            for step in range(1, 5):  # taken back by moving away
                self.screen.move(*self.at(240, touring.HEADER + 1.5 * self.cell_height() + 12 * step))
            self.pointer("mouseup")
            if touring.difference(image, before) > 0.5 and self.same_head(image, before):
                self.keep("press", image)
                break
            self.rest()
        else:
            raise touring.Failed("no picture of a pressed cell")

    def same_head(self, image, before):
        """Nothing dims the page: its title shines."""
        heads = [upright.crop((0, 0, upright.width, round(touring.HEADER * self.scale))) for upright in map(self.portrait, (image, before))]
        return touring.difference(*heads) < 0.1

    def scrolled(self, before):
        self.screen.move(*self.cell(1))
        for _ in range(3):
            self.pointer("click", "5")
        self.wait("the list moves", lambda image: touring.difference(image, before) > 1)
        time.sleep(0.3)
        self.keep("scrolled")

    def keyboard_focus(self, before):
        self.screen.key("Down", "Down")
        self.keep("keyboard-focus", self.changed(before, "the current cell", 0.15))

    def filter(self, before):
        self.screen.type("concert" if not self.rtl else "con")
        self.keep("filter", self.changed(before, "the filter"))

    def no_results(self, before):
        self.screen.type("xyz")
        self.keep("no-results", self.changed(before, "no results"))

    def open_menu(self, before, *cell):
        self.screen.move(*self.cell(*cell))
        self.pointer("click", "3")
        return self.changed(before, "the menu of a video")

    def object_menu(self, before):
        self.keep("object-menu", self.open_menu(before, 1))

    def choose(self, before, entry, what, cell=(1,)):
        """An entry of the menu, by keys: it stands at a place that depends on its size, and the pointer may be on one."""
        opened = self.open_menu(before, *cell)
        self.screen.key("Home", *["Down"] * MENU.index(entry), "Return")
        return self.changed(opened, what)

    def rename(self, before):
        """On a handset with a keyboard below it."""
        self.keep("rename", self.above_keyboard(self.choose(before, "rename", "the rename sheet")))

    def above_keyboard(self, image):
        """The same, when a handset's keyboard has come below it."""
        if not self.handset:
            return image
        width, height = self.screen.size
        self.screen.key("super+k")
        self.window = (0, 0, width, height - stage.keyboard_height(self.screen.size))
        self.wait("the sheet above the keyboard", self.window_shrunk)
        return self.with_keyboard(self.rest())

    def put_keyboard_away(self):
        if self.handset:
            self.screen.key("super+k")
            self.window = (0, 0, *self.screen.size)
            self.wait("the whole window", self.window_shrunk)

    def with_keyboard(self, image):
        return stage.with_keyboard(image, self.screen.size, self.variant.light) if self.handset else image

    def window_shrunk(self, _):
        told = touring.run("xdotool", "getwindowgeometry", "--shell", self.window_id).stdout
        return f"HEIGHT={self.window[3]}\n" in told

    def delete(self, before):
        """The question about a video whose title is longer than what it shows of it."""
        self.screen.type("1988" if self.rtl else "1987")
        narrowed = self.changed(before, "the filter")
        self.keep("delete-question", self.choose(narrowed, "delete", "the question", (0, touring.HEADER + 80)))

    def share(self, before):
        self.keep("share-sheet", self.choose(before, "share", "the share sheet"))

    def banner(self, before):
        """The address of a video was copied."""
        self.choose(before, "share", "the share sheet")
        self.screen.key("Tab", "Return")
        self.keep("banner", self.settled("the banner on the list", lambda image: self.has_banner(self.portrait(image)) and self.same_head(image, before)))

    def lost_video(self, _):
        """Another program asks for a video that is not there any more."""
        bus = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        bus.call_blocking(SERVICE, "/", INTERFACE, "play", "as", [["file:///nowhere/at/all.mp4"]])
        bus.close()
        self.keep("lost-video", self.settled("the banner", lambda image: self.has_banner(self.portrait(image)) or self.has_message(image)))

    def has_banner(self, upright):
        """Its ground, one of the schemes' second surfaces, in the middle of the page's foot."""
        grounds = ((0x20, 0x26, 0x2E), (0xE4, 0xE8, 0xED), (0x1C, 0x22, 0x2A))
        x, y, side = upright.width / 2, upright.height - 56 * self.scale, 20 * self.scale
        middle = upright.crop((round(x - 3 * side), round(y - side), round(x + 3 * side), round(y + side)))
        return sum(count for count, color in middle.getcolors(1 << 16) if color in grounds) > 0.5 * middle.width * middle.height

    # --- the states of the player, and of the device

    def player(self):
        with self.program_runs():
            before = self.rest(15)
            self.screen.tap(*self.cell(0))
            self.wait("the player", lambda image: touring.difference(image, before) > 12)
            time.sleep(2.5)
            self.keep("player-playing")
            self.keep("player-controls", self.controls_over_the_film())
            self.screen.key("space")
            self.keep("player-paused", self.rest())

    def controls_over_the_film(self):
        """All of them, before they go again."""
        for _ in range(6):
            self.bring_controls("the controls")
            time.sleep(0.8)
            image = self.look()
            if self.controls_shown(image):
                return image
        raise touring.Failed("the controls go too soon")

    # What the menu of the player's bar leads to, for a stored video and for one that is only here.
    PLAYER_MENU = ("share", "rename", "delete")

    def open_player_menu(self):
        """The video waits, and the menu dims it."""
        side = 38 * max(1.0, self.scale)
        for _ in range(4):  # the controls go by themselves: on a slow machine before the pointer is there
            shown = self.look()
            if not self.controls_shown(shown):
                shown = self.bring_controls("the menu of the player")
            width = self.landscape(shown).width
            self.screen.tap(*self.player_point(side if self.rtl else width - side, side))
            with contextlib.suppress(touring.Failed):
                self.wait("the menu of the player", lambda image: self.brightness(image) < 0.75 * self.brightness(shown), 5)
                return self.rest()
        raise touring.Failed("the menu of the player does not open")

    @staticmethod
    def brightness(image):
        return touring.ImageStat.Stat(image.convert("L")).mean[0]

    def choose_in_player(self, opened, entry, what):
        self.screen.key("Home", *["Down"] * entry, "Return")
        return self.changed(opened, what, 3)  # more than the row that is pressed

    def player_menu(self):
        for state in ("player-menu", "player-rename", "player-delete"):
            if not self.wanted(state):
                continue
            with self.program_runs():
                listed = self.rest(15)
                self.screen.type("autumn")  # a long one: it is not over before the picture is taken
                before = self.changed(listed, "the filter")
                self.screen.tap(*self.cell(0, touring.HEADER + 80))
                self.wait("the player", lambda image: touring.difference(image, before) > 12)
                self.screen.key(*["Left"] * 6)  # from its beginning: the states before may have left it near its end
                opened = self.open_player_menu()
                if state == "player-menu":
                    self.keep(state, opened)
                else:
                    entry = self.PLAYER_MENU.index(state.removeprefix("player-"))
                    image = self.choose_in_player(opened, entry, f"what the menu leads to: {state}")
                    self.keep(state, self.above_keyboard(image) if state == "player-rename" else image)

    def save_as(self):
        """A video that lies elsewhere, and takes a while to copy."""
        source = max(pathlib.Path(os.environ["HOME"]).rglob("*.mp4"), key=lambda path: path.stat().st_size)
        folder = pathlib.Path(tempfile.mkdtemp(dir="/dev/shm"))  # no home shares its blocks
        video = folder / "Our first day on the island.mp4"
        taken = source.parent / video.name
        try:
            shutil.copy(source, video)
            with video.open("ab") as file:
                file.write((1).to_bytes(4, "big") + b"free" + LARGE.to_bytes(8, "big"))
                file.truncate(file.tell() + LARGE - 16)
            taken.write_bytes(b"somebody's")
            with self.program_runs(str(video)):
                self.wait("the player", lambda image: self.sun(image) is not None)
                opened = self.open_player_menu()
                self.keep("player-save-as", opened)
                form = self.choose_in_player(opened, 0, "the form")
                self.screen.key("Return")
                question = self.changed(form, "the question about the name")
                self.keep("save-as-taken", question)
                self.screen.key("Escape")
                self.changed(question, "the form again")
                form = self.above_keyboard(self.rest())
                self.keep("save-as", form)
                plain = self.look()
                self.screen.type("and/or")
                self.keep("save-as-error", self.with_keyboard(self.changed(plain, "what is wrong with the name")))
                self.put_keyboard_away()
                form = self.rest()
                self.screen.key("ctrl+a")
                self.screen.type("Island")
                self.screen.key("Return")
                with e2e.reading_held(self.program.pid, "save-as copy", video, LARGE // 4):
                    self.wait("the progress", lambda image: touring.difference(image, form) > 1)
                    self.keep("save-as-progress", self.rest())
                self.screen.key("Escape")
        finally:
            shutil.rmtree(folder)
            taken.unlink(missing_ok=True)

    def card_away(self, usb):
        with self.program_runs():
            before = self.rest(15)
            usb.command("mode mass_storage")
            usb.command("state mass_storage")
            try:
                self.keep("card-away", self.changed(before, "the page about the card"))
            finally:
                usb.command("mode charging_only")

    @contextlib.contextmanager
    def elsewhere(self, work, videos):
        """The program with a library that is not the one that all other states share."""
        bare = pathlib.Path(tempfile.mkdtemp(dir=work))
        try:
            with stage.Home(bare / "home", videos, 8), self.program_runs():
                yield
        finally:
            shutil.rmtree(bare, ignore_errors=True)

    def empty(self, work):
        with self.elsewhere(work, None):
            time.sleep(1.5)
            self.keep("empty", self.rest())

    def first_scan(self, work, videos):
        read = sum(1 for path in videos.rglob("*") if path.is_file())  # each once; of the others none is
        with stage.held_scan(read), self.elsewhere(work, videos):
            self.wait("a first scan under way", self.scan_is_told, 60)
            self.keep("first-scan", self.rest(15))

    def twice(self, state, take, parts=()):
        """Takes the pictures of a state, and when that fails once more: the waits are those of a machine that does nothing else."""
        if not any(self.wanted(part) for part in parts or (state,)):
            return
        for last in (False, True):
            try:
                take()
                return
            except touring.Failed as failure:
                if last:
                    self.failures.append(f"{self.variant.name}: {state}: {failure}")
                    self.keep(f"{state}-failed", self.last)

    def scan_is_told(self, image):
        """The line below the heading that shows how far it is, above videos that were read."""
        upright = self.portrait(image)
        line = upright.crop((0, round((touring.HEADER - 3) * self.scale), upright.width, round((touring.HEADER - 1) * self.scale)))
        blue = sum(1 for red, _, blue in line.getdata() if blue > 120 and blue > red + 60)
        return 0.1 * line.width < blue / line.height < 0.95 * line.width and touring.is_picture(self.cell_picture(image, 0))


def prepared(display, attempts=3):
    """The library read, with all its pictures, and one video left in the middle."""
    tour = Gallery(VARIANTS[0], pathlib.Path(os.environ["TMPDIR"]), (), display)
    try:
        with tour.program_runs():
            tour.step_list()
            tour.step_play()
            tour.step_back()
    except touring.Failed:  # the waits are those of a machine that does nothing else
        if attempts == 1:
            raise
        prepared(display, attempts - 1)


def sheets(folder):
    """All pictures of a state side by side, to look at together."""
    states = sorted({path.stem for path in folder.glob("*/*.png")})
    for state in states:
        images = [Image.open(path) for path in sorted(folder.glob(f"*/{state}.png"))]
        height = 480
        scaled = [image.resize((image.width * height // image.height, height), Image.LANCZOS) for image in images]
        whole = Image.new("RGB", (sum(image.width + 8 for image in scaled) - 8, height), (128, 128, 128))
        x = 0
        for image in scaled:
            whole.paste(image, (x, 0))
            x += image.width + 8
        whole.save(folder / f"{state}.png")


def tour_variant(variant, pictures, only, work, full, usb):
    os.environ["KESTREL_PROFILE"] = variant.profile
    before = {name: os.environ.get(name) for name, _ in variant.look}
    os.environ.update(variant.look)
    with stage.Display(variant.screen) as display:
        gallery = Gallery(variant, pictures, only, display)
        gallery.library()
        gallery.twice("player", gallery.player)
        gallery.player_states()
        gallery.details_states()
        gallery.related_states()
        gallery.twice("server", gallery.server_states, gallery.SERVER)
        gallery.twice("player-menu", gallery.player_menu, ("player-menu", "player-rename", "player-delete"))
        gallery.twice("save-as", gallery.save_as)
        gallery.twice("card-away", lambda: gallery.card_away(usb))
        gallery.twice("empty", lambda: gallery.empty(work))
        gallery.twice("first-scan", lambda: gallery.first_scan(work, full.videos))
    full.inhabit()
    for name, value in before.items():
        os.environ.pop(name) if value is None else os.environ.update({name: value})
    return gallery.failures


def chosen(words):
    """The variants that the words name, all when none does, and the words that name states. A whole name is one variant's."""
    names = [variant.name for variant in VARIANTS]
    taken = {name for word in words for name in names if (word == name if word in names else word in name)}
    return ([variant for variant in VARIANTS if variant.name in taken or not taken],
            [word for word in words if not any(word in name for name in names)])


def main(words=None):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--pictures", required=True, type=pathlib.Path)
    parser.add_argument("--videos", required=True, type=pathlib.Path)
    parser.add_argument("--only", nargs="*", default=())
    arguments = parser.parse_args(words)
    os.environ.pop("WAYLAND_DISPLAY", None)
    os.environ.update(QT_QPA_PLATFORM="xcb", QT_ACCESSIBILITY="0", NO_AT_BRIDGE="1", GSETTINGS_BACKEND="memory")
    variants, states = chosen(arguments.only)
    failures = []
    work = pathlib.Path(tempfile.mkdtemp(prefix="gallery-"))
    os.environ["TMPDIR"] = tempfile.tempdir = str(work)
    system = e2e.Bus("DBUS_SYSTEM_BUS_ADDRESS")
    usb = e2e.Peer("usb_mode_daemon.py")
    try:
        with stage.Home(work / "home", arguments.videos) as home:
            stage.add_long_titles(home.videos)
            os.environ.update(LANGUAGE="en", LANG="C.UTF-8", LC_ALL="C.UTF-8", KESTREL_COLOR_SCHEME="dark")
            with stage.Display(SHAPES["portrait"][0]) as display:
                prepared(display)
            for variant in variants:
                print(f"  {variant.name}", flush=True)
                failures += tour_variant(variant, arguments.pictures, states, work, home, usb)
    finally:
        usb.stop()
        system.stop()
        shutil.rmtree(work, ignore_errors=True)
    sheets(arguments.pictures)
    for failure in failures:
        print(f"gallery: {failure}", file=sys.stderr)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
