# SPDX-License-Identifier: GPL-3.0-or-later
"""The gallery's states of the player: what the finger does to a film, its options, streams, what goes wrong, what is no film."""
import contextlib
import os
import pathlib
import subprocess
import tempfile
import time

import e2e
from e2e import touring

SEEK_LINE = 76  # above the foot
LAST_ROW = 28
OPTIONS = ("subtitles", "sound", "speed", "loop", "chapters")

CUES = {
    "eng": ("The harbour lies still.", "Only the ferry has its lamp on,\nand somebody sings below deck."),
    "fra": ("Le port est calme.", "Seul le bac a allumé sa lampe,\net quelqu’un chante sous le pont."),
}
CHAPTERS = ("Before the sun", "The ferry", "Over the hills and back to the landing stage")


def film(folder):
    """A video of everything that the options know: two languages to hear, two to read, chapters."""
    source = next(pathlib.Path(os.environ["HOME"]).rglob("Autumn*.mp4"))
    target = folder / "Autumn in the harbour.mkv"
    inputs, tags = [], []
    for number, (language, cues) in enumerate(CUES.items()):
        text = folder / f"{language}.srt"
        text.write_text("".join(f"{count}\n00:00:{begin:02d},000 --> 00:00:{begin + 5:02d},000\n{cues[count % 2]}\n\n"
                                for count, begin in enumerate(range(0, 55, 5), 1)), encoding="utf-8")
        inputs += ["-i", str(text)]
        tags += [f"-metadata:s:s:{number}", f"language={language}", f"-metadata:s:a:{number}", f"language={language}"]
    marks = folder / "chapters"
    marks.write_text(";FFMETADATA1\n" + "".join(f"[CHAPTER]\nTIMEBASE=1/1\nSTART={20 * number}\nEND={20 * number + 20}\ntitle={title}\n"
                                                for number, title in enumerate(CHAPTERS)), encoding="utf-8")
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-i", str(source), *inputs, "-i", str(marks), "-map", "0:v", "-map", "0:a", "-map",
                    "0:a", "-map", "1", "-map", "2", "-map_chapters", "3", "-c", "copy", "-c:s", "srt", *tags, "-disposition:s:0", "default",
                    str(target)], check=True)
    return target


class PlayerStates:
    """Of a gallery: what is seen over a video."""

    FILM = ("player-scrub", "player-seeking", "player-volume", "player-brightness", "player-fast", "player-options",
            *(f"player-options-{topic}" for topic in OPTIONS))
    OTHERS = ("player-stream", "player-buffering", "player-error", "player-sound", "player-upright")

    # --- the finger

    def part(self, x, y):
        """By parts of the picture."""
        width, height = self.landscape(self.look()).size
        return self.player_point(round(width * x), round(height * y))

    def above_foot(self, x, y):
        width, height = self.landscape(self.look()).size
        return self.player_point(round(width * x), round(height - y * self.scale))

    def hold(self, start, end, name):
        """A finger that went somewhere and rests there."""
        self.screen.move(*start)
        self.pointer("mousedown")
        for step in range(1, 9):
            self.screen.move(*(round(a + (b - a) * step / 8) for a, b in zip(start, end)))
            time.sleep(0.02)
        time.sleep(0.7)
        if self.wanted(name):
            self.keep(name)
        self.pointer("mouseup")
        time.sleep(0.8)

    def plays(self, past=0.0):
        """The film, that far on its way. Of a white window, in which nothing is yet, the sun would be anywhere."""
        def shown(image):
            upright = self.landscape(image)
            hills = max(upright.getpixel((upright.width // 2, round(upright.height * 0.8))))
            return hills < 180 and (self.sun(image) or -1) >= past
        self.wait("the film", shown, 30)

    # --- a film

    def film_states(self):
        if not any(self.wanted(state) for state in self.FILM):
            return
        with tempfile.TemporaryDirectory() as folder, self.program_runs(str(film(pathlib.Path(folder)))):
            self.plays(0.03)
            self.hold(self.part(0.35, 0.45), self.part(0.6, 0.45), "player-seeking")
            self.hold(self.part(0.75, 0.3), self.part(0.75, 0.6), "player-volume")
            self.hold(self.part(0.6, 0.4), self.part(0.6, 0.4), "player-fast")
            self.pause()
            self.hold(self.above_foot(0.4, SEEK_LINE), self.above_foot(0.6, SEEK_LINE), "player-scrub")
            self.options()
            self.hold(self.part(0.25, 0.3), self.part(0.25, 0.5), "player-brightness")  # it stays as dark as that

    def pause(self):
        """The controls stay over a video that waits."""
        self.screen.key("space")
        self.wait("the controls", self.controls_shown)
        time.sleep(0.5)

    def options(self):
        for number, topic in enumerate(("", *OPTIONS)):
            name = f"player-options-{topic}" if topic else "player-options"
            if not self.wanted(name):
                continue
            before = self.rest()
            self.screen.tap(*self.options_button())
            image = self.changed(before, "the options", 1)
            if topic:
                self.screen.key(*["Down"] * number, "Return")
                image = self.changed(image, f"the options: {topic}", 0.2)
            self.keep(name, image)
            self.screen.key(*["Escape"] * (2 if topic else 1))
            self.wait("the player again", lambda image, before=before: touring.difference(image, before) < 1)

    def options_button(self):
        """At the end of the last row; beside it, on the desktop, the one that fills the screen."""
        width, height = self.landscape(self.look()).size
        x = 36 + (0 if self.handset else 56)
        x = x * self.scale if self.rtl else width - x * self.scale
        return self.player_point(round(x), round(height - LAST_ROW * self.scale))

    # --- others

    def stream(self, how, name):
        """The address of a video on a web server that does as it is told, on this machine."""
        @contextlib.contextmanager
        def served():
            source = next(pathlib.Path(os.environ["HOME"]).rglob("Autumn*.mp4"))
            with tempfile.TemporaryDirectory() as folder:
                stopped = pathlib.Path(folder) / "stream.mp4"
                subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-i", str(source), "-c", "copy", "-movflags", "+faststart", str(stopped)],
                               check=True)
                state = pathlib.Path(folder) / "state"
                state.mkdir()
                server = e2e.Peer("mediaserver.py", folder, str(state))
                try:
                    yield f"http://127.0.0.1:{(state / 'port').read_text()}/{how}/{name}"
                finally:
                    server.stop()
        return served()

    def player_stream(self):
        with self.stream("plain", "stream.mp4") as address, self.program_runs(address):
            self.plays()
            time.sleep(1)
            self.pause()
            self.keep("player-stream", self.rest())

    def player_buffering(self):
        """Of a server that has less to give than the video takes."""
        with self.stream("rate=12000", "stream.mp4") as address, self.program_runs(address):
            self.keep("player-buffering", self.wait("a percentage in the ring", self.has_percentage, 30))

    def has_percentage(self, image):
        upright = self.landscape(image)
        x, y, side = upright.width / 2, upright.height / 2, 20 * self.scale
        middle = upright.crop((round(x - side), round(y - side), round(x + side), round(y + side))).convert("L")
        corner = upright.getpixel((4, 4))
        return max(corner) < 40 and middle.getextrema()[1] > 200

    def player_error(self):
        with self.stream("status=503", "stream.mp4") as address, self.program_runs(address):
            self.keep("player-error", self.wait("the message", self.has_message, 30))

    def has_message(self, image):
        """Its ground, dark in both schemes, somewhere over the picture."""
        grounds = ((0x20, 0x26, 0x2E), (0x1C, 0x22, 0x2A))
        found = sum(count for count, color in image.getcolors(1 << 24) if color in grounds)
        return found > 5000 * self.scale**2 and self.controls_shown(image)

    def player_sound(self):
        self.whole("Zither", "player-sound")

    def player_upright(self):
        self.whole("Height", "player-upright")

    def whole(self, word, name):
        """A video with the controls over it, while it waits."""
        video = next(pathlib.Path(os.environ["HOME"]).rglob(f"{word}*.mp4"))
        with self.program_runs(str(video)):
            self.wait("the player", lambda image: not self.list_shown(image))
            time.sleep(3)
            self.screen.key("space")
            time.sleep(1)
            self.keep(name, self.rest())

    def player_states(self):
        self.twice("player-film", self.film_states, self.FILM)
        for state in self.OTHERS:
            self.twice(state, getattr(self, state.replace("-", "_")))
