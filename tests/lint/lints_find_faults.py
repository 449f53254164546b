#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""The lints are worth what they find: each must see the fault it is for in a tree made for the purpose."""
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import check_catalogs  # noqa: E402
import check_layers  # noqa: E402
import check_sources  # noqa: E402

LICENCE = "// SPDX-License-Identifier: GPL-3.0-or-later\n"


def tree(files):
    root = pathlib.Path(tempfile.mkdtemp())
    for name, text in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(LICENCE + text)
    return root


class Lints(unittest.TestCase):
    def test_upward_include_is_found(self):
        root = tree({"src/app/a.h": "", "src/data/b.cpp": "#include <app/a.h>\n"})
        self.assertEqual(check_layers.check(root)[0], ["src/data/b.cpp: data may not include app/a.h"])

    def test_siblings_do_not_meet(self):
        root = tree({"src/player/a.h": "", "src/library/b.cpp": "#include <player/a.h>\n"})
        self.assertEqual(len(check_layers.check(root)[0]), 1)

    def test_foreign_header_above_the_platform_is_found(self):
        root = tree({"src/player/b.cpp": "#include <gst/gst.h>\n", "src/platform/media/c.cpp": "#include <gst/gst.h>\n"})
        self.assertEqual(check_layers.check(root)[0], ["src/player/b.cpp: includes gst/gst.h"])

    def test_downward_include_is_fine(self):
        root = tree({"src/data/a.h": "", "src/library/b.cpp": "#include <data/a.h>\n"})
        self.assertEqual(check_layers.check(root)[0], [])

    def test_sleep_is_found(self):
        root = tree({"tests/unit/a.cpp": "void f() { QTest::qWait(5); }\n"})
        self.assertEqual(len(check_sources.check(root)[0]), 1)

    def test_missing_licence_is_found(self):
        root = tree({})
        (root / "src").mkdir()
        (root / "src/a.cpp").write_text("int a;\n")
        self.assertEqual(check_sources.check(root)[0], ["src/a.cpp: no licence line"])

    # What authors of extensions build with and copy, and nothing else.
    def licences(self, files):
        root = pathlib.Path(tempfile.mkdtemp())
        for name, licence in files.items():
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(f"# SPDX-License-Identifier: {licence}\n", encoding="utf-8")
        return check_sources.check(root)[0]

    def test_wrong_licence_is_found(self):
        free, own = "MIT", "GPL-3.0-or-later"
        self.assertEqual(self.licences({"include/kestrel/a.h": free, "extensions/template/b.cpp": free, "src/c.h": own,
                                        "extensions/related/d.cpp": own, "extensions/template/CMakeLists.txt": free,
                                        "include/KestrelExtensionConfig.cmake.in": free, "include/CMakeLists.txt": own}), [])
        for name in ("include/kestrel/a.h", "extensions/template/b.cpp", "extensions/template/CMakeLists.txt",
                     "include/KestrelExtensionConfig.cmake.in"):
            self.assertEqual(self.licences({name: own}), [f"{name}: authors of extensions need it under MIT"])
            self.assertEqual(self.licences({name: "other"}), [f"{name}: no licence line"])
        for name in ("src/a.h", "services/store/a.cpp", "tests/unit/a.cpp", "extensions/related/a.h", "extensions/templates/a.cpp"):
            self.assertEqual(self.licences({name: free}), [f"{name}: under MIT, which is for what authors of extensions need"])


def message(text, name="qtn_a", comment="a word", source="%1 <b>films</b>", state=""):
    kind = f' type="{state}"' if state else ""
    note = f"<extracomment>{comment}</extracomment>" if comment else ""
    escape = lambda plain: plain.replace("&", "&amp;").replace("<", "&lt;")  # noqa: E731
    return f'<message id="{name}"><source>{escape(source)}</source>{note}<translation{kind}>{escape(text)}</translation></message>'


def plural(*forms):
    written = "".join(f"<numerusform>{form}</numerusform>" for form in forms)
    return f'<message id="qtn_n" numerus="yes"><source>%n film(s)</source><extracomment>a</extracomment><translation>{written}</translation></message>'


def catalog(language, *messages):
    return f'<TS version="2.1" language="{language}"><context><name></name>{"".join(messages)}</context></TS>'


ENGLISH = message("%1 <b>films</b>")


class Catalogs(unittest.TestCase):
    def faults(self, language, *messages, english=(ENGLISH,), code='qtTrId("qtn_a");', listed=None):
        files = {f"translations/video_{language}.ts": catalog(language, *messages)} if messages else {}
        files["translations/video_en.ts"] = catalog("en_GB", *english)
        files["translations/music_en.ts"] = catalog("en_GB", message("Play", "qtn_p", source="Play"))
        if messages:
            files[f"translations/music_{language}.ts"] = catalog(language, message("Los", "qtn_p", source="Play"))
        root = tree({"src/a.cpp": code})
        for name, text in files.items():
            (root / name).parent.mkdir(exist_ok=True)
            (root / name).write_text(text, encoding="utf-8")
        named = listed or (f"en {language}" if messages else "en")
        (root / "translations/CMakeLists.txt").write_text(f"set(KESTREL_LANGUAGES {named})\n", encoding="utf-8")
        return check_catalogs.check(root)[0]

    def test_whole_catalogs_have_no_fault(self):
        self.assertEqual(self.faults("de", message("%1 <b>Filme</b>")), [])

    def test_missing_text_is_found(self):
        self.assertEqual(self.faults("de", message("x", "qtn_b", source="x")),
                         ["video_de.ts: qtn_a is missing", "video_de.ts: qtn_b is not in the English catalog"])

    def test_empty_and_unfinished_texts_are_found(self):
        self.assertEqual(self.faults("de", message(" ")), ["video_de.ts: qtn_a: empty"])
        self.assertEqual(self.faults("de", message("%1 <b>Filme</b>", state="unfinished")),
                         ["video_de.ts: qtn_a: the translation is unfinished"])

    def test_empty_english_text_is_found(self):
        self.assertIn("video_en.ts: qtn_a: empty", self.faults("en", english=(message(""),)))

    def test_text_without_a_word_for_translators_is_found(self):
        self.assertEqual(self.faults("de", message("%1 <b>Filme</b>", comment="")),
                         ["video_de.ts: qtn_a: no comment for translators"])

    def test_lost_doubled_and_invented_placeholders_are_found(self):
        for text in ("<b>Filme</b>", "%1 %1 <b>Filme</b>", "%1 %2 <b>Filme</b>", "% 1 <b>Filme</b>", "%n <b>Filme</b>"):
            errors = self.faults("de", message(text))
            self.assertEqual(len(errors), 1, text)
            self.assertIn("placeholders", errors[0])

    def test_different_mark_up_is_found(self):
        for text in ("%1 Filme", "%1 <b>Filme", "%1 <i>Filme</i>", "%1 <b>Filme</b>\nx", "%1 <b>Filme</b> &amp;"):
            errors = self.faults("de", message(text))
            self.assertEqual(len(errors), 1, text)
            self.assertIn("mark-up", errors[0])

    def test_outdated_source_is_found(self):
        self.assertEqual(self.faults("de", message("%1 <b>Filme</b>", source="%1 <b>movies</b>")),
                         ["video_de.ts: qtn_a: the source is not the English text"])

    def test_text_that_stands_twice_is_found(self):
        self.assertIn("video_de.ts: qtn_a stands there 2 times", self.faults("de", ENGLISH, ENGLISH))
        self.assertIn("music_en.ts: qtn_p is in another catalog, too", self.faults("en", english=(ENGLISH, message("Play", "qtn_p", source="Play"))))

    def test_unknown_id_in_the_code_is_found(self):
        self.assertEqual(self.faults("en", code='return {"qtn_z", true};'), ["src/a.cpp: qtn_z is in no catalog"])

    def test_wrong_number_of_plural_forms_is_found(self):
        english, code = (plural("%n film", "%n films"),), 'qtTrId("qtn_n", 3);'
        self.assertEqual(self.faults("ar", plural("لا", "واحد", "اثنان", "%n", "%n", "%n"), english=english, code=code), [])
        self.assertEqual(self.faults("ar", plural("%n", "%n"), english=english, code=code), ["video_ar.ts: qtn_n: 2 plural forms, not 6"])
        self.assertEqual(self.faults("ru", plural("%n", "", "%n"), english=english, code=code), ["video_ru.ts: qtn_n: empty"])

    def test_lost_number_in_a_plural_form_is_found(self):
        english, code = (plural("one film", "%n films"),), 'qtTrId("qtn_n", 3);'
        self.assertEqual(self.faults("de", plural("ein Film", "%n Filme"), english=english, code=code), [])
        for language, forms in {"de": ("ein Film", "Filme"), "ru": ("фильм", "%n", "%n"), "fr": ("un film", "%n films")}.items():
            errors = self.faults(language, plural(*forms), english=english, code=code)
            self.assertEqual(len(errors), 1, language)
            self.assertIn("placeholders", errors[0])

    def test_plural_without_a_number_is_found(self):
        self.assertEqual(self.faults("en", english=(ENGLISH, plural("%n film", "%n films")), code='qtTrId("qtn_n"); qtTrId("qtn_a", 2);'),
                         ["src/a.cpp: qtn_n is asked for without a number", "src/a.cpp: qtn_a is asked for with a number"])

    def test_language_that_is_not_built_or_has_no_file_is_found(self):
        self.assertIn("video_de.ts is not compiled in", self.faults("de", message("%1 <b>Filme</b>"), listed="en"))
        self.assertIn("video_fr.ts is missing", self.faults("de", message("%1 <b>Filme</b>"), listed="en de fr"))


if __name__ == "__main__":
    unittest.main()
