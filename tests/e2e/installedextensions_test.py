# SPDX-License-Identifier: GPL-3.0-or-later
"""Extensions of an installed program: its own is found below its prefix, and an author who has nothing but what is installed
builds another, which takes its place."""
import os
import pathlib
import re
import shutil
import subprocess
import unittest

import details_test
import e2e
from accessbus import Atspi


class Installation(details_test.Page):
    @classmethod
    def setUpClass(cls):
        # A blank in the prefix: whoever writes or reads a path has to think of it.
        cls.prefix = pathlib.Path(os.environ["TMPDIR"]) / "a prefix"
        environment = {name: value for name, value in os.environ.items() if name != "DESTDIR"}
        subprocess.run(["cmake", "--install", str(e2e.BIN.parent), "--prefix", str(cls.prefix)], check=True,
                       stdout=subprocess.DEVNULL, env=environment)
        cls.built, e2e.BIN = e2e.BIN, cls.prefix / "bin"

    @classmethod
    def tearDownClass(cls):
        e2e.BIN = cls.built

    def loaded(self):
        """Name and library of each extension that the program says it loaded."""
        log = (self.pictures / "kestrel.log").read_text(encoding="utf-8")
        return re.findall("loaded “(.*)” from (.*)", log)

    def tap_below_the_labels(self, distance, name):
        self.tour.screen.key("End")
        self.is_not_blank(name)
        x, y, width, height = self.place(self.find(Atspi.Role.LABEL, f"Folder: ~/{self.videos.name}"))
        self.tour.screen.tap(x + width / 2, y + height + distance)


class Own(Installation):
    def test_the_programs_own_extension_is_found(self):
        self.open_details(1)
        self.details("Beta", "Length: 00:40")
        self.eventually("the extension", self.loaded)
        self.assertEqual([("Related videos", str(self.prefix / "lib/kestrel/extensions/relatedextension.so"))], self.loaded())
        # The other video of the folder stands below the labels, and is played.
        self.details(f"Folder: ~/{self.videos.name}")
        self.tap_below_the_labels(190, "related")
        self.plays((self.videos / "Alpha.mp4").as_uri())


class Author(Installation):
    def document(self):
        """The commands of the walk-through, with this prefix in place of the usual one."""
        text = next((self.prefix / "share/doc").rglob("extensions.md")).read_text(encoding="utf-8")
        commands = re.search(r"^   ```sh\n(.*?)^   ```$", text, re.MULTILINE | re.DOTALL)[1]
        self.assertIn("kestrel=/usr\n", commands)
        return commands.replace("kestrel=/usr\n", f'kestrel="{self.prefix}"\n')

    def begin(self):
        """Before the program is started: the commands of the document as they stand there, in an empty folder."""
        folder = self.home / "work"
        folder.mkdir()
        self.addCleanup(shutil.rmtree, folder)
        made = subprocess.run(["sh", "-ec", self.document()], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual(0, made.returncode, made.stdout)
        super().begin()

    def test_an_authors_extension_takes_its_place(self):
        self.open_details(1)
        self.details("Beta", f"Folder: ~/{self.videos.name}")
        library = self.home / ".local/share/kestrel/extensions/myextension.so"
        self.assertEqual([("My extension", str(library))], self.loaded())
        # “More about …” stands below the labels, a page opens, and what stands there plays the video.
        self.tap_below_the_labels(56, "author")
        self.await_node(Atspi.Role.HEADING, "My page")
        self.is_not_blank("page")
        self.tour.screen.tap(self.tour.window[0] + 240, self.tour.window[1] + e2e.touring.HEADER + 32)
        self.plays((self.videos / "Beta.mp4").as_uri())


if __name__ == "__main__":
    unittest.main()
