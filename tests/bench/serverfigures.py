# SPDX-License-Identifier: GPL-3.0-or-later
"""What bench_endpoint.py and bench_virtuoso.py have in common: a real server with a made-up library, the settings of the program, and the
figures of one driver: loading beside curl with the same result, memory, a title until it shows, the first cells on the screen.

Everything is asked of one server in one run, in turn. curl gets the result as JSON from the server's HTTP port and throws it away."""
import json
import os
import pathlib
import statistics
import subprocess
import sys
import time

TOP = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ["KESTREL_BIN_DIR"])
GRAPH = "urn:kestrel:bench"
PATIENCE = 1800  # seconds
SIZES = {100000: 3, 1000000: 1}  # videos: rounds


class Server:
    """virtuososerver.py of the tests, with memory for a large library."""

    def __init__(self):
        self.process = subprocess.Popen([sys.executable, str(TOP / "tests/support/virtuososerver.py"), "--buffers", "120000", "--graph", GRAPH],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.facts = self.answer()

    def answer(self):
        answer = json.loads(self.process.stdout.readline() or '{"error": "it has ended"}')
        if "error" in answer:
            raise SystemExit(f"the server: {answer['error']}")
        return answer

    def command(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        return self.answer()

    def fill(self, videos, first):
        """Adds the made-up videos from the number `first` up to `videos`."""
        file = pathlib.Path(self.facts["folder"]) / "made-up.ttl"
        with file.open("w", encoding="utf-8") as out:
            subprocess.run([sys.executable, str(TOP / "scripts/library-triples"), str(videos - first), "--first", str(first)], stdout=out, check=True)
        begin = time.monotonic()
        self.command(f"load {file} {GRAPH}")
        file.unlink()
        return time.monotonic() - begin

    def stop(self):
        self.process.stdin.close()
        self.process.wait(120)


def set_up(facts):
    """The settings and the password of a person who uses this server."""
    config = pathlib.Path(os.environ["XDG_CONFIG_HOME"])
    (config / "glib-2.0/settings").mkdir(parents=True, exist_ok=True)
    os.environ["GSETTINGS_BACKEND"] = "keyfile"
    values = {"query-address": f"http://{facts['http']}/sparql", "odbc-server": facts["sql"], "graph": GRAPH, "timeout": PATIENCE}
    for key, value in values.items():
        subprocess.run(["gsettings", "--schemadir", str(BIN.parent / "share/glib-2.0/schemas"), "set", "com.harrow.kestrel.server", key, str(value)],
                       check=True)
    (config / "kestrel").mkdir(exist_ok=True)
    stored = config / "kestrel/credentials"
    stored.touch(mode=0o600)
    stored.write_text(f"[{facts['sql']}]\nuser = {facts['user']}\npassword = {facts['password']}\n")


def curl(facts, text):
    """Seconds for the whole result, and its bytes."""
    done = subprocess.run(["curl", "--silent", "--fail", "--max-time", str(PATIENCE), "--header", "Accept: application/sparql-results+json",
                           "--data-urlencode", "query@-", "--output", "/dev/null", "--write-out", "%{time_total} %{size_download}",
                           f"http://{facts['http']}/sparql"], input=text, capture_output=True, text=True, check=True)
    seconds, size = done.stdout.split()
    return float(seconds), int(size)


def step(name, driver, videos):
    """Seconds, and the peaks in MiB of the program and its helpers."""
    done = subprocess.run([BIN / "bench_serverload", name, driver], stdout=subprocess.PIPE, text=True, timeout=PATIENCE, check=True)
    rows, milliseconds, own, helpers = done.stdout.split()
    # The made-up cameras are none of this device: their videos are in the list.
    if int(rows) != videos:
        raise SystemExit(f"{driver}: {rows} rows instead of {videos}")
    return float(milliseconds) / 1000, int(own) / 1024, int(helpers) / 1024


def first_cells(driver):
    """Seconds from the start of the program to the painted list, and the peak in MiB of the program."""
    begin = time.monotonic()
    with subprocess.Popen([BIN / "kestrel", "-trackerconnectionmode", driver], stderr=subprocess.PIPE, text=True,
                          env=dict(os.environ, KESTREL_STARTUP_LOG="1")) as program:
        for line in program.stderr:
            if "first list painted" in line:
                elapsed = time.monotonic() - begin
                status = pathlib.Path(f"/proc/{program.pid}/status").read_text()
                program.kill()
                return elapsed, int(status.split("VmHWM:")[1].split()[0]) / 1024
    raise SystemExit(f"{driver}: no list was painted")


def say(line):
    print(line, flush=True)


def measure(name, driver, facts, videos, rounds):
    text = subprocess.run([BIN / "bench_serverload", "text"], stdout=subprocess.PIPE, text=True, check=True).stdout
    loads, bare = [], []
    for _ in range(rounds):
        bare.append(curl(facts, text)[0])
        loads.append(step("load", driver, videos))
    seconds, plain = statistics.median(load[0] for load in loads), statistics.median(bare)
    own, helpers = max(load[1] for load in loads), max(load[2] for load in loads)
    say(f"{name} load, {videos} videos {seconds:.1f} s | curl, the same as JSON {plain:.1f} s | ratio {seconds / plain:.2f}")
    say(f"{name} memory of loading, {videos} videos {own:.0f} MiB" + (f", of kestrel-odbc {helpers:.0f} MiB" if helpers else ""))
    longest = step("turn", driver, videos)[0]
    say(f"{name} longest turn, {videos} videos {longest * 1000:.1f} ms")
    title = step("title", driver, videos)[0]
    say(f"{name} title until it shows, {videos} videos {title * 1000:.0f} ms")
    cells = [first_cells(driver) for _ in range(rounds)]
    say(f"{name} first cells, {videos} videos {statistics.median(cell[0] for cell in cells):.1f} s")
    say(f"{name} memory of the program, {videos} videos {max(cell[1] for cell in cells):.0f} MiB")


def main(name, driver):
    sizes = {int(videos): 1 for videos in sys.argv[1:]} or SIZES
    server = Server()
    try:
        set_up(server.facts)
        filled = 0
        for videos, rounds in sizes.items():
            server.fill(videos, filled)
            filled = videos
            measure(name, driver, server.facts, videos, rounds)
    finally:
        server.stop()
