# SPDX-License-Identifier: GPL-3.0-or-later
"""What is chosen for a video from its controls, by the pointer. Subtitles, out of the video and out of a file beside it: read off the
screen, put off, and the same again the next time that the video is played. A section: played again and again."""
import subprocess
import time
import unittest

import e2e
from accessbus import Atspi, walk
from playermenu_test import Player

SECONDS = 120
EVERY = 2  # seconds, a new one
# One line, two lines, and a long line: told from each other by the room that they take on the screen.
ENGLISH = "Ship ahoy {}"
GERMAN = "Land in Sicht {}\nAlle an Deck"
FRENCH = "Mais où sommes-nous donc arrivés, mon capitaine ? {}"
BRIGHT = 235  # of the words; the picture stays below


def times(second):
    return f"{second // 3600:02d}:{second // 60 % 60:02d}:{second % 60:02d},000"


def write_subtitles(path, text):
    cues = (f"{number + 1}\n{times(start)} --> {times(start + EVERY)}\n{text.format(start)}\n"
            for number, start in enumerate(range(0, SECONDS, EVERY)))
    path.write_text("\n".join(cues), encoding="utf-8")
    return path


class Options(Player):
    def option(self, start):
        """A row of the list by the beginning of its name."""
        return self.eventually(start, lambda: next((node for node in self.rows() if node.get_name().startswith(start)), None))

    def rows(self):
        sheet = self.find(Atspi.Role.DIALOG)
        return [] if sheet is None else [node for node in walk(sheet) if node.get_role() in (Atspi.Role.PUSH_BUTTON, Atspi.Role.RADIO_BUTTON)]

    def tap_option(self, start):
        """Scrolled to, where the list is longer than the sheet."""
        def in_sight():
            left, top, width, height = self.tour.window
            x, y, row_width, row_height = self.place(self.option(start))
            if left <= x and top <= y and x + row_width <= left + width and y + row_height <= top + height:
                return True
            self.tour.screen.move(left + width / 2, top + height - 60)
            subprocess.run(["xdotool", "click", "5"], check=True)
            return False
        self.eventually(f"{start} in sight", in_sight)
        self.tap(self.option(start))

    def chosen(self):
        return [node.get_name() for node in self.rows() if node.get_name().endswith(", selected")]

    def open_options(self, topic, now):
        self.show_bar()
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Options")
        self.await_node(Atspi.Role.DIALOG, "Playback")
        self.tap_option(f"{topic}, {now}")
        self.await_node(Atspi.Role.DIALOG, topic)
        self.assertNotIn("", [node.get_name() for node in self.rows()])

    def close_options(self):
        self.tour.screen.key("Escape")
        self.await_node(Atspi.Role.DIALOG, "Playback")
        self.tour.screen.key("Escape")
        self.await_end(Atspi.Role.DIALOG)
        # A pointer that rests on the controls would keep them.
        upright = self.tour.landscape(self.tour.look())
        self.tour.screen.move(*self.tour.player_point(upright.width * 0.3, upright.height * 0.3))


class Subtitles(Options):
    TITLES = ("Voyage",)

    def make_videos(self):
        """A dark film with two tracks, and a third one in a file."""
        tracks = [write_subtitles(self.home / "en.srt", ENGLISH), write_subtitles(self.home / "de.srt", GERMAN)]
        self.video = self.videos / "Voyage.mkv"
        part = self.home / "voyage.mkv"
        subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi", "-i", f"color=c=0x203040:size=320x180:rate=12:duration={SECONDS}",
                        "-f", "lavfi", "-i", f"sine=frequency=330:duration={SECONDS}", "-i", str(tracks[0]), "-i", str(tracks[1]),
                        "-map", "0", "-map", "1", "-map", "2", "-map", "3", "-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-g", "24",
                        "-c:a", "aac", "-c:s", "srt", "-disposition:s", "0", "-metadata:s:a:0", "language=eng", "-metadata:s:s:0", "language=eng",
                        "-metadata:s:s:1", "language=ger", str(part)], check=True)
        write_subtitles(self.videos / "Voyage.fr.srt", FRENCH)
        part.rename(self.video)
        for track in tracks:
            track.unlink()

    # --- what is read

    def words(self):
        """What is told to those who listen; it is what stands on the picture."""
        first = {text.split(" {}")[0] for text in (ENGLISH, GERMAN, FRENCH)}
        return [name for name in self.texts(self.window) if any(name.startswith(start) for start in first)]

    def area(self):
        """Width and height of what is bright in the lower half of the picture and in the room below it, in parts of the picture;
        nothing is (0, 0)."""
        upright = self.tour.landscape(self.tour.look())
        left, top, right, bottom = self.tour.picture_rectangle(upright)
        half = upright.crop((left, (top + bottom) // 2, right, upright.height)).convert("L").point(lambda value: 255 if value >= BRIGHT else 0)
        box = half.getbbox() or (0, 0, 0, 0)
        return (box[2] - box[0]) / (right - left), (box[3] - box[1]) / (bottom - top)

    def wait_for_words(self, text):
        """Those of the place that plays; lines are read out as one."""
        text = text.replace("\n", " ")

        def read():
            words = self.words()
            if not words:
                return False
            start, end = text.split("{}")
            second = words[0].removeprefix(start).removesuffix(end)
            return len(words) == 1 and second.isdigit() and words[0] == text.format(second) and -1 <= self.position() - int(second) <= EVERY + 2
        self.eventually(text, read)

    def wait_for_none(self):
        self.eventually("no words", lambda: not self.words())

    def seen(self, what):
        """The room that the words take, when the controls have gone."""
        self.tour.wait(f"{what}: the controls have gone", lambda image: not self.bar_shown(image))
        found = e2e.wait_until(f"{what}: words on the screen", lambda: self.area()[0] > 0.05 and self.area())
        self.tour.keep(what)
        return found

    def nothing_seen(self, what):
        self.tour.wait(f"{what}: the controls have gone", lambda image: not self.bar_shown(image))
        e2e.wait_until(f"{what}: no words on the screen", lambda: self.area() == (0, 0))
        self.tour.keep(what)

    def bar_shown(self, image):
        """The mark of the way back stands out, be it on its way out; the picture itself is darker."""
        corner = self.tour.landscape(image).crop((0, 0, 76, 76))
        return corner.convert("L").getextrema()[1] > 80

    # --- what is chosen

    def choose_track(self, start):
        self.tap_option(start)
        self.eventually(f"{start} is marked", lambda: len(self.chosen()) == 1 and self.chosen()[0].startswith(start))

    def leave(self):
        self.show_bar()
        self.tap_on(Atspi.Role.PUSH_BUTTON, "Back")
        self.library("Voyage")

    def enter(self):
        self.tap_row(0)
        self.plays(self.video.as_uri())
        self.tour.find_turn()

    def test_the_words_that_were_chosen(self):
        self.enter()
        self.nothing_seen("none-at-first")  # who understands what is said reads nothing
        self.assertEqual(self.words(), [])

        # All that there is, and what holds.
        self.open_options("Subtitles", "Off")
        self.eventually("off, three tracks and their steps", lambda: [node.get_name().split(",")[0] for node in self.rows()
                                                                      if node.get_name().startswith(("Off", "English", "German", "French"))]
                        == ["Off", "French", "English", "German"])
        self.assertEqual(self.chosen(), ["Off, selected"])
        self.choose_track("English")
        self.wait_for_words(ENGLISH)  # at once, with the list still there
        self.tour.keep("options")
        self.plays(self.video.as_uri())
        self.close_options()
        one_line = self.seen("english")

        self.open_options("Subtitles", "English")
        self.choose_track("German")
        self.wait_for_words(GERMAN)
        self.close_options()
        two_lines = self.seen("german")
        self.assertGreater(two_lines[1], 1.6 * one_line[1])

        # The file beside it.
        self.open_options("Subtitles", "German")
        self.choose_track("French")
        self.wait_for_words(FRENCH)
        self.close_options()
        long_line = self.seen("french")
        self.assertGreater(long_line[0], 1.5 * one_line[0])

        # Left, and played again: what was chosen is read at once.
        self.leave()
        self.wait_for_none()
        self.enter()
        self.wait_for_words(FRENCH)
        self.assertGreater(self.seen("french-again")[0], 1.5 * one_line[0])

        # Put off: nothing is read, now and the next time, of another run of the program, too.
        self.open_options("Subtitles", "French")
        self.choose_track("Off")
        self.wait_for_none()
        self.close_options()
        self.nothing_seen("off")
        self.leave()
        self.tour.program.terminate()
        self.tour.program.wait(10)
        self.begin()
        self.enter()
        self.open_options("Subtitles", "Off")
        self.assertEqual(self.chosen(), ["Off, selected"])
        self.choose_track("German")
        self.wait_for_words(GERMAN)
        self.close_options()
        self.leave()

        # And what is chosen is there for the next run.
        self.tour.program.terminate()
        self.tour.program.wait(10)
        self.begin()
        self.enter()
        self.wait_for_words(GERMAN)
        self.assertGreater(self.seen("german-again")[1], 1.6 * one_line[1])


class Loop(Options):
    TITLES = ("Round",)

    def make_videos(self):
        e2e.clip(self.videos / "Round.mp4", 60, "320x180")

    def test_a_section_is_repeated(self):
        address = (self.videos / "Round.mp4").as_uri()
        self.tap_row(0)
        self.plays(address)
        self.tour.find_turn()
        self.eventually("some seconds", lambda: self.position() > 6)
        self.open_options("Repeat a section", "Off")
        start = self.position()
        self.tap_option("Start here")
        self.eventually("its start", lambda: self.option("Start here").get_name() != "Start here")
        self.eventually("some seconds on", lambda: self.position() > start + 5)
        self.tap_option("End here")
        self.eventually("its end", lambda: self.option("End here").get_name() != "End here")
        end = self.position()
        self.close_options()
        self.eventually("back at its start", lambda: self.position() < start + 2.5)
        self.eventually("the way on", lambda: self.position() > start + 3)
        self.eventually("and back again", lambda: self.position() < start + 2.5)
        self.assertGreater(self.position(), start - 0.5)
        self.show_bar()
        time.sleep(0.5)
        self.tour.keep("repeated")
        # Put off, the video goes on beyond it.
        self.open_options("Repeat a section", "0")
        self.tap_option("Off")
        self.close_options()
        self.eventually("beyond its end", lambda: self.position() > end + 3)


if __name__ == "__main__":
    unittest.main()
