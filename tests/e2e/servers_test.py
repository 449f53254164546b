# SPDX-License-Identifier: GPL-3.0-or-later
"""A library on a server: browsed, played over the network, written back to, kept current, and out of reach for a while. Through both
drivers, against a real server."""
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import urllib.parse
import urllib.request

os.environ["GSETTINGS_BACKEND"] = "keyfile"  # which other programs change

import accessbus  # noqa: E402
import control  # noqa: E402
import e2e  # noqa: E402
from accessbus import Atspi, has  # noqa: E402

SCHEMAS = e2e.BIN.parent / "share/glib-2.0/schemas"
ONTOLOGY = "http://tracker.api.gnome.org/ontology/v3/"
PREFIXES = "".join(f"PREFIX {name}: <{ONTOLOGY}{name}#> " for name in ("nmm", "nie", "nfo"))
TYPE = "<http://www.w3.org/1999/02/22-rdf-syntax-ns#type>"
GRAPH = "urn:kestrel:videos"
UNREACHABLE = "The library cannot be reached"
PATIENCE = 60  # seconds


class Server:
    """A Virtuoso server of the test's own."""

    def __init__(self):
        self.process = subprocess.Popen([sys.executable, str(e2e.SOURCE / "tests/support/virtuososerver.py"), "--graph", GRAPH],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.facts = self.answer()

    def answer(self):
        answer = json.loads(self.process.stdout.readline() or '{"error": "it has ended"}')
        if "error" in answer:
            raise AssertionError(answer["error"])
        return answer

    def command(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        return self.answer()

    def stop(self):
        self.process.stdin.close()
        self.process.wait(60)
        self.process.stdout.close()

    def load(self, triples):
        with tempfile.NamedTemporaryFile("w", suffix=".nt", encoding="utf-8") as file:
            file.write("".join(f"{' '.join(triple)} .\n" for triple in triples))
            file.flush()
            self.command(f"load {file.name} {GRAPH}")

    def ask(self, parameter, text):
        data = urllib.parse.urlencode({parameter: PREFIXES + text, "format": "application/sparql-results+json"}).encode()
        with urllib.request.urlopen(f"http://{self.facts['http']}/sparql", data, timeout=30) as reply:
            return reply.read()

    def update(self, text):
        self.ask("update", f"WITH <{GRAPH}> {text}")

    def values(self, subject, name):
        rows = json.loads(self.ask("query", f"SELECT ?o FROM <{GRAPH}> WHERE {{ <{subject}> {name} ?o }}"))["results"]["bindings"]
        return [row["o"]["value"] for row in rows]

    def value(self, subject, name):
        return next(iter(self.values(subject, name)), None)


def video_triples(subject, title, address):
    def literal(text):
        return json.dumps(text)

    def iri(name):
        prefix, local = name.split(":")
        return f"<{ONTOLOGY}{prefix}#{local}>"

    name = address.rsplit("/", 1)[1]
    facts = [(TYPE, iri("nmm:Video")), (TYPE, iri("nfo:FileDataObject")), (iri("nie:url"), literal(address)),
             (iri("nfo:fileName"), literal(name)), (iri("nie:title"), literal(title)), (iri("nie:mimeType"), literal("video/mp4")),
             (iri("nfo:duration"), f'"{control.SECONDS}"^^<http://www.w3.org/2001/XMLSchema#integer>')]
    return [(f"<{subject}>", predicate, thing) for predicate, thing in facts]


class Servers(accessbus.Case, control.Case):
    MODE = None
    TITLES = ("Alpine lake", "Birthday", "Coast in autumn")

    def id(self):
        return f"{super().id()}_{self.MODE.lower()}"  # also of its folder of pictures

    def make_videos(self):
        """On a server of the network; this machine has none."""
        served = pathlib.Path(tempfile.mkdtemp(prefix="served-", dir=self.home))
        state = pathlib.Path(tempfile.mkdtemp(prefix="server-", dir=self.home))
        film = e2e.clip(served / "1.mp4", control.SECONDS, "320x180", extra=("-movflags", "faststart"))
        for number in range(2, 5):
            os.link(film, served / f"{number}.mp4")
        for path in (self.first, self.second):
            path.unlink()
        self.peer("mediaserver.py", str(served), str(state))
        self.web = f"http://127.0.0.1:{(state / 'port').read_text()}"

    def begin(self):
        self.server = Server()
        self.addCleanup(self.server.stop)
        self.server.load([triple for number, title in enumerate(self.TITLES, 1)
                          for triple in video_triples(self.urn(number), title, self.address(number))])
        self.set_up_mode()
        self.set("graph", GRAPH)
        self.set("poll-interval", "1")
        self.addCleanup(lambda: (self.home / ".config/glib-2.0/settings/keyfile").unlink(missing_ok=True))

    def set(self, key, value):
        (self.home / ".config/glib-2.0/settings").mkdir(parents=True, exist_ok=True)
        subprocess.run(["gsettings", "--schemadir", str(SCHEMAS), "set", "com.harrow.kestrel.server", key, value], check=True)

    def urn(self, number):
        return f"urn:video:{number}"

    def address(self, number):
        return f"{self.web}/plain/{number}.mp4"

    def open(self):
        self.start("-trackerconnectionmode", self.MODE)

    def open_list(self):
        self.open()
        self.list = self.eventually("the list", lambda: self.find_list(len(self.TITLES)), PATIENCE)

    def start(self, *arguments):
        accessbus.Case.start(self, *arguments)
        e2e.wait_until("the program on the bus", lambda: self.bus.name_has_owner(control.SERVICE))

    def rows(self):
        shown = self.find(Atspi.Role.LIST)
        return [(shown.get_child_at_index(row) or shown).get_name() for row in range(shown.get_child_count())] if shown else []

    def plays(self, beyond):
        return self.status() == "Playing" and self.position() > beyond

    def leave_player(self):
        self.tour.screen.key("BackSpace")
        self.list = self.eventually("the list again", lambda: self.find_list(len(self.TITLES)), PATIENCE)

    def quit(self):
        self.tour.program.terminate()
        self.ended()

    def rename(self, row, title):
        self.choose(row, "Rename")
        sheet = self.await_node(Atspi.Role.DIALOG, "Rename video")
        field = self.find(Atspi.Role.TEXT, within=sheet)
        save = self.find(Atspi.Role.PUSH_BUTTON, "Save", within=sheet)
        self.eventually("the field with the focus", lambda: has(field, Atspi.StateType.FOCUSED))
        self.write(field, title)
        self.eventually("something to save", lambda: has(save, Atspi.StateType.ENABLED))
        self.act(save, "Press")
        self.await_end(Atspi.Role.DIALOG)

    def on_server(self, what, number, name, condition):
        return e2e.wait_until(what, lambda: condition(self.server.value(self.urn(number), name)), PATIENCE)

    def test_found_played_resumed_and_renamed(self):
        self.open_list()
        self.assertEqual(self.rows(), list(self.TITLES))
        self.tour.keep("list", self.tour.still("the list at rest"))

        self.tour.screen.key("ctrl+f")
        field = self.await_node(Atspi.Role.TEXT, "Filter videos")
        self.eventually("the field with the focus", lambda: has(field, Atspi.StateType.FOCUSED))
        self.assertTrue(field.get_editable_text_iface().insert_text(0, "birth", 5))
        self.eventually("one match", lambda: self.rows() == ["Birthday"])
        self.act(self.find(Atspi.Role.LIST).get_child_at_index(0), "Press")
        self.eventually("it plays", lambda: self.plays(3), PATIENCE)
        self.assertEqual(str(self.player()["Metadata"]["xesam:url"]), self.address(2))
        self.leave_player()
        place = int(self.on_server("the place on the server", 2, "nmm:runTime", lambda value: value))
        self.assertTrue(3 <= place < control.SECONDS, place)
        self.on_server("the play on the server", 2, "nie:usageCounter", lambda value: value == "1")
        self.on_server("its time on the server", 2, "nie:contentAccessed",
                       lambda value: re.fullmatch(r"20\d\d-\d\d-\d\dT\d\d:\d\d:\d\dZ", value or ""))
        self.quit()

        self.open_list()
        self.act(self.list.get_child_at_index(1), "Press")
        self.eventually("it goes on", lambda: self.plays(place - 0.5), PATIENCE)
        self.assertLess(self.position(), place + 20)  # it did not begin anew: that far takes longer
        self.leave_player()
        self.on_server("the second play", 2, "nie:usageCounter", lambda value: value == "2")

        self.rename(2, "Aurora <b>& more")
        self.eventually("the new title where it belongs", lambda: self.rows() == ["Alpine lake", "Aurora <b>& more", "Birthday"], PATIENCE)
        self.on_server("the title on the server", 3, "nie:title", lambda value: value == "Aurora <b>& more")
        self.assertEqual(len(self.server.values(self.urn(3), "nie:title")), 1)
        self.quit()

    def test_what_others_change_shows(self):
        self.open_list()
        self.server.update('DELETE { ?v nie:title ?t } INSERT { ?v nie:title "Birthdaz" } WHERE { ?v nie:title ?t . FILTER(?t = "Birthday") }')
        self.eventually("the other title", lambda: self.rows() == ["Alpine lake", "Birthdaz", "Coast in autumn"], PATIENCE)
        self.server.load(video_triples(self.urn(4), "Dunes", self.address(4)))
        self.eventually("the new video", lambda: self.rows() == ["Alpine lake", "Birthdaz", "Coast in autumn", "Dunes"], PATIENCE)
        self.server.update(f"DELETE {{ <{self.urn(1)}> ?p ?o }} WHERE {{ <{self.urn(1)}> ?p ?o }}")
        self.eventually("one less", lambda: self.rows() == ["Birthdaz", "Coast in autumn", "Dunes"], PATIENCE)
        self.quit()

    def test_the_list_outlives_the_server(self):
        self.open_list()
        self.server.command("kill")
        self.eventually("the banner", lambda: self.find(Atspi.Role.ALERT, UNREACHABLE), PATIENCE)
        self.tour.keep("banner")
        self.assertEqual(self.rows(), list(self.TITLES))
        self.await_end(Atspi.Role.ALERT, UNREACHABLE)
        self.server.command("restart")
        self.server.update('DELETE { ?v nie:title ?t } INSERT { ?v nie:title "Barn" } WHERE { ?v nie:title ?t . FILTER(?t = "Birthday") }')
        self.eventually("what was changed meanwhile", lambda: self.rows() == ["Alpine lake", "Barn", "Coast in autumn"], 2 * PATIENCE)
        self.rename(0, "Alps")
        self.on_server("the title on the server", 1, "nie:title", lambda value: value == "Alps")
        self.quit()

    def test_a_server_that_comes_late(self):
        self.server.command("kill")
        self.open()
        self.eventually("what is the matter", lambda: self.find(Atspi.Role.LABEL, UNREACHABLE), PATIENCE)
        self.assertIsNone(self.find(Atspi.Role.LIST))
        self.tour.keep("unreachable", self.tour.still("the page at rest"))
        self.server.command("restart")
        self.list = self.eventually("the list", lambda: self.find_list(len(self.TITLES)), 2 * PATIENCE)
        self.assertEqual(self.rows(), list(self.TITLES))
        self.quit()


class Endpoint(Servers):
    MODE = "QSPARQL_ENDPOINT"

    def set_up_mode(self):
        self.set("query-address", f"http://{self.server.facts['http']}/sparql")


class Virtuoso(Servers):
    MODE = "QVIRTUOSO"

    def set_up_mode(self):
        self.set("odbc-server", self.server.facts["sql"])
        file = self.home / ".config/kestrel/credentials"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.touch(mode=0o600)
        file.write_text(f"[{self.server.facts['sql']}]\nuser = {self.server.facts['user']}\npassword = {self.server.facts['password']}\n",
                        encoding="utf-8")


def load_tests(loader, _tests, _pattern):
    """Servers itself has no driver."""
    return unittest.TestSuite(loader.loadTestsFromTestCase(case) for case in (Endpoint, Virtuoso))


if __name__ == "__main__":
    unittest.main()
