#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""virtuososerver.py [--videos N] [--graph IRI] [--buffers N]: a real Virtuoso server in a temporary folder.

Its ports are free ones of 127.0.0.1. Once both answer (and the graph is filled, when videos are asked for) one line of
JSON is written: "sql" and "http" (host:port), "user" and "password" of somebody who may read and write, "reader" (the
same password) who may only read, "graph", "pid" of the server, "folder". Updates over /sparql are open to everybody, over
/sparql-auth and ODBC to the user.

Then commands come by lines and each is answered by a line of JSON, with "error" when it failed:
    fill N [GRAPH]   replaces the graph by N videos     kill       SIGKILL, at once
    restart          on the same ports and data         stop       ends it in good order
    load FILE GRAPH  adds an N-Triples file to a graph
    sql TEXT         one statement as the administrator; "text" is what isql writes
The server ends, and the folder goes, with the end of standard input.
"""
import argparse
import ctypes
import http.client
import json
import os
import pathlib
import secrets
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

READY_SECONDS = 120
LOADERS = 3
PR_SET_PDEATHSIG = 1
ONTOLOGY = "http://tracker.api.gnome.org/ontology/v3/"
RDF_TYPE = "<http://www.w3.org/1999/02/22-rdf-syntax-ns#type>"
XSD = "http://www.w3.org/2001/XMLSchema#"

SETTINGS = """
[Database]
DatabaseFile = {folder}/data.db
ErrorLogFile = {folder}/server.log
LockFile = {folder}/data.lck
TransactionFile = {folder}/data.trx
xa_persistent_file = {folder}/data.pxa
FileExtend = 200
MaxCheckpointRemap = 2000
TempStorage = TempDatabase
[TempDatabase]
DatabaseFile = {folder}/temp.db
TransactionFile = {folder}/temp.trx
MaxCheckpointRemap = 2000
[Parameters]
ServerPort = 127.0.0.1:{sql}
DisableUnixSocket = 1
ServerThreads = 20
CheckpointInterval = 0
NumberOfBuffers = {buffers}
MaxDirtyBuffers = {dirty}
DirsAllowed = {folder}
ThreadsPerQuery = 2
AsyncQueueMaxThreads = 2
[HTTPServer]
ServerPort = 127.0.0.1:{http}
ServerThreads = 10
MaxKeepAlives = 10
KeepAliveTimeout = 10
EnabledDavVSP = 0
[SPARQL]
ResultSetMaxRows = 2000000
"""

USERS = """
DB.DBA.USER_CREATE('{user}', '{password}');
DB.DBA.USER_CREATE('{reader}', '{password}');
grant SPARQL_SELECT to "{user}";
grant SPARQL_UPDATE to "{user}";
grant SPARQL_SELECT to "{reader}";
grant SPARQL_UPDATE to "SPARQL";
DB.DBA.RDF_DEFAULT_USER_PERMS_SET('nobody', 7);
checkpoint;
"""


def end_with_parent():
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGKILL)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def iri(name):
    prefix, local = name.split(":")
    return f"<{ONTOLOGY}{prefix}#{local}>"


def video_triples(number):
    """One video as the indexer describes one."""
    video = f"<urn:uuid:{number:08x}-0000-4000-8000-{number:012x}>"
    whole = f"^^<{XSD}integer>"
    date = f'"{2000 + number % 24}-{1 + number % 12:02}-{1 + number % 28:02}T12:00:00Z"^^<{XSD}dateTime>'
    facts = [
        (RDF_TYPE, iri("nmm:Video")),
        (RDF_TYPE, iri("nfo:FileDataObject")),
        (iri("nie:url"), f'"file:///srv/videos/{number // 1000:04}/clip%20{number:07}.mp4"'),
        (iri("nfo:fileName"), f'"clip {number:07}.mp4"'),
        (iri("nie:title"), f'"Video {number}"'),
        (iri("nie:mimeType"), '"video/mp4"'),
        (iri("nfo:duration"), f'"{60 + number % 7000}"{whole}'),
        (iri("nfo:fileSize"), f'"{1000000 + number}"{whole}'),
        (iri("nmm:runTime"), f'"{number % 60}"{whole}'),
        (iri("nie:usageCounter"), f'"{number % 10}"{whole}'),
        (iri("nie:contentAccessed"), date),
        (iri("nrl:added"), date),
    ]
    return "".join(f"{video} {predicate} {thing} .\n" for predicate, thing in facts)


class Failure(Exception):
    pass


class Server:
    user, reader, administrator = "kestrel", "kestrelreader", "dba"

    def __init__(self, folder, buffers):
        self.folder = pathlib.Path(folder)
        self.password = secrets.token_hex(12)
        self.process = None
        self.buffers = buffers
        self.sql_port = self.http_port = 0

    def open(self):
        for attempts_left in (4, 3, 2, 1, 0):
            self.sql_port, self.http_port = free_port(), free_port()
            self.write_settings()
            try:
                self.start()
                break
            except Failure:
                # Somebody else may have taken a port meanwhile.
                if attempts_left == 0:
                    raise
                for file in self.folder.iterdir():
                    file.unlink()
        self.run_sql(USERS.format(user=self.user, reader=self.reader, password=self.password))

    def write_settings(self):
        text = SETTINGS.format(folder=self.folder, sql=self.sql_port, http=self.http_port, buffers=self.buffers,
                               dirty=self.buffers * 3 // 5)
        (self.folder / "virtuoso.ini").write_text(text)

    def start(self):
        # A server that was killed leaves its lock behind.
        (self.folder / "data.lck").unlink(missing_ok=True)
        with open(self.folder / "output.log", "ab") as output:
            self.process = subprocess.Popen(
                ["virtuoso-t", "+foreground", "+configfile", str(self.folder / "virtuoso.ini")], cwd=self.folder,
                stdin=subprocess.DEVNULL, stdout=output, stderr=output, preexec_fn=end_with_parent)
        deadline = time.monotonic() + READY_SECONDS
        while not self.answers():
            if self.process.poll() is not None or time.monotonic() > deadline:
                self.kill()
                raise Failure("the server does not start:\n" + self.log())
            time.sleep(0.05)

    def log(self):
        file = self.folder / "server.log"
        return file.read_text(errors="replace")[-2000:] if file.exists() else "no log"

    def answers(self):
        try:
            connection = http.client.HTTPConnection("127.0.0.1", self.http_port, timeout=10)
            connection.request("GET", "/sparql?query=ASK%20%7B%7D")
            if connection.getresponse().status != 200:
                return False
            self.run_sql("status();")
            return True
        except (OSError, http.client.HTTPException, Failure):
            return False

    def run_sql(self, text):
        isql = subprocess.run(["isql-vt", f"127.0.0.1:{self.sql_port}", self.administrator, self.administrator],
                              input=text, capture_output=True, text=True, check=False, preexec_fn=end_with_parent)
        if isql.returncode != 0 or "*** Error" in isql.stdout + isql.stderr:
            raise Failure(isql.stdout[-2000:] + isql.stderr[-2000:])
        return isql.stdout

    def load(self, files, graph):
        orders = "".join(f"ld_dir('{self.folder}', '{file.name}', '{graph}');\n" for file in files)
        self.run_sql("delete from DB.DBA.load_list;\n" + orders)
        # What the loaders write is in no log: the checkpoint makes it last.
        loaders = [subprocess.Popen(
            ["isql-vt", f"127.0.0.1:{self.sql_port}", self.administrator, self.administrator,
             "exec=log_enable(2); rdf_loader_run();"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, preexec_fn=end_with_parent) for _ in files]
        for loader in loaders:
            loader.wait()
        bad = self.run_sql("select 'not loaded', ll_file, ll_error from DB.DBA.load_list "
                           "where ll_state <> 2 or ll_error is not null;\ncheckpoint;\n")
        for file in files:
            file.unlink()
        if "\nnot loaded" in bad:
            raise Failure(bad)

    def fill(self, videos, graph):
        self.run_sql(f"log_enable(2);\nSPARQL CLEAR GRAPH <{graph}>;\n")
        files = []
        for part in range(LOADERS if videos > 1000 else 1):
            files.append(self.folder / f"part{part}.nt")
            with open(files[-1], "w", encoding="utf-8") as out:
                step = LOADERS if videos > 1000 else 1
                out.writelines(video_triples(number) for number in range(part, videos, step))
        self.load(files, graph)

    def kill(self):
        if self.process:
            self.process.kill()
            self.process.wait()

    def stop(self):
        if self.process.poll() is None:
            self.process.terminate()
            self.process.wait()

    def facts(self):
        return {"sql": f"127.0.0.1:{self.sql_port}", "http": f"127.0.0.1:{self.http_port}", "user": self.user,
                "reader": self.reader, "password": self.password, "pid": self.process.pid, "folder": str(self.folder)}

    def obey(self, line, graph):
        command, _, rest = line.strip().partition(" ")
        words = rest.split()
        if command == "fill" and words:
            self.fill(int(words[0]), words[1] if len(words) > 1 else graph)
        elif command == "load" and len(words) == 2:
            copy = self.folder / "load.nt"
            shutil.copyfile(words[0], copy)
            self.load([copy], words[1])
        elif command == "sql":
            return {"text": self.run_sql(rest + ";\n")}
        elif command == "kill":
            self.kill()
        elif command == "stop":
            self.stop()
        elif command == "restart":
            self.stop()
            self.start()
            return self.facts()
        else:
            raise Failure(f"no such command: {line}")
        return {}


def say(answer):
    print(json.dumps(answer), flush=True)


def serve(server, graph):
    for line in sys.stdin:
        try:
            say(server.obey(line, graph))
        except (Failure, OSError, ValueError) as error:
            say({"error": str(error)})


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--videos", type=int, default=0)
    options.add_argument("--graph", default="urn:kestrel:videos")
    options.add_argument("--buffers", type=int, default=20000, help="pages of 8 KiB kept in memory")
    chosen = options.parse_args()
    # The folder is removed also when somebody ends this by a signal.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    with tempfile.TemporaryDirectory(prefix="kestrel-virtuoso.") as folder:
        server = Server(folder, chosen.buffers)
        try:
            server.open()
            if chosen.videos > 0:
                server.fill(chosen.videos, chosen.graph)
            say({**server.facts(), "graph": chosen.graph})
            serve(server, chosen.graph)
        except (Failure, OSError) as error:
            say({"error": str(error)})
            return 1
        finally:
            server.kill()
    return 0


if __name__ == "__main__":
    sys.exit(main())
