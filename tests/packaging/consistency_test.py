# SPDX-License-Identifier: GPL-3.0-or-later
"""What the packaging files say agrees with the programs, the catalogs and the change log."""
import configparser
import pathlib
import re
import sys
import unittest
import xml.etree.ElementTree as ElementTree

SOURCE, METAINFO = (pathlib.Path(argument) for argument in sys.argv[1:3])
ID = "com.harrow.Kestrel"
LANG = "{http://www.w3.org/XML/1998/namespace}lang"


class Consistency(unittest.TestCase):
    def setUp(self):
        parser = configparser.RawConfigParser(delimiters="=", interpolation=None)
        parser.optionxform = str
        parser.read(SOURCE / f"packaging/{ID}.desktop", encoding="utf-8")
        self.entry = parser["Desktop Entry"]
        self.metainfo = ElementTree.parse(METAINFO).getroot()
        self.languages = {path.stem.removeprefix("video_") for path in (SOURCE / "translations").glob("video_*.ts")} - {"en"}

    def test_the_entry_starts_what_is_installed(self):
        self.assertEqual("kestrel %f", self.entry["Exec"])
        self.assertEqual("true", self.entry["DBusActivatable"])
        self.assertEqual(ID, self.entry["Icon"])
        self.assertEqual("Workstation;Mobile;", self.entry["X-Purism-FormFactor"])
        self.assertEqual("desktop;tablet;handset;", self.entry["X-KDE-FormFactor"])

    def test_every_format_that_is_read_can_be_opened(self):
        formats = (SOURCE / "services/media-worker/formats.cpp").read_text(encoding="utf-8")
        read = {found for found in re.findall(r'Container\{"[^"]+",\s*"([^"]+)"\}', formats) if found.startswith("video/")}
        self.assertGreater(len(read), 5)
        self.assertEqual(set(), read - set(self.entry["MimeType"].split(";")))

    def test_texts_are_there_in_every_language_of_the_program(self):
        self.assertTrue(self.languages)
        for language in self.languages:
            for key in ("Name", "GenericName", "Comment", "Keywords"):
                self.assertIn(f"{key}[{language}]", self.entry)
            for what in ("summary", "description/p", "description/ul/li", "screenshots/screenshot/caption"):
                english = [node for node in self.metainfo.findall(what) if LANG not in node.attrib]
                translated = [node for node in self.metainfo.findall(what) if node.get(LANG) == language]
                self.assertEqual(len(english), len(translated), f"{what} in {language}")

    def test_screenshots_are_pictures_of_the_project(self):
        images = [image for image in self.metainfo.iter("image") if image.get("type") == "source"]
        self.assertTrue(images)
        for image in images:
            path = SOURCE / image.text[image.text.index("docs/screenshots/"):]
            size = path.read_bytes()[16:24]
            self.assertEqual((image.get("width"), image.get("height")), tuple(str(int.from_bytes(n, "big")) for n in (size[:4], size[4:])), path)

    def test_releases_are_those_of_the_change_log(self):
        log = (SOURCE / "CHANGELOG.md").read_text(encoding="utf-8")
        version = re.search(r"project\(kestrel VERSION (\S+)", (SOURCE / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)
        logged = [name if name[0].isdigit() else version for name in re.findall(r"^## \[?([^\]\s]+)", log, re.M)]
        self.assertEqual(logged, [release.get("version") for release in self.metainfo.iter("release")])

    def test_names_on_the_bus_are_those_of_the_service_files(self):
        named = {node.text for node in self.metainfo.findall("provides/dbus")}
        files = {path.name.removesuffix(".service.in") for path in (SOURCE / "packaging").glob("*.service.in")}
        self.assertEqual(named, files - {f"{ID}.Store", f"{ID}.Thumbnailer"})
        for path in (SOURCE / "packaging").glob("*.service.in"):
            self.assertIn(f"Name={path.name.removesuffix('.service.in')}\n", path.read_text(encoding="utf-8"))

    def test_icons_are_square(self):
        for path in (SOURCE / "theme/kestrel.svg", SOURCE / f"packaging/icons/{ID}-symbolic.svg"):
            picture = ElementTree.parse(path).getroot()
            self.assertEqual(picture.get("width"), picture.get("height"), path)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
