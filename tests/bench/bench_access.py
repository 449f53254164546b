#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""What assistive technology costs: processor time of the program while 10,000 rows load and while the list scrolls, without it,
with it and nobody listening, and with a listener of everything; and how many events that one hears.

    KESTREL_BIN_DIR=build/bench/bin tests/support/with-session tests/bench/bench_access.py [rows]
"""
import collections
import os
import pathlib
import re
import signal
import statistics
import subprocess
import sys
import tempfile
import time

BIN = pathlib.Path(os.environ["KESTREL_BIN_DIR"])
STORE, STORE_PATH = "com.harrow.Kestrel.Store", "/com/harrow/Kestrel/Store"
STEPS = 300  # of the wheel
PAGES = 40
ROUNDS = 3
LETTERS = "123"


def listen():
    """Hears every event of the bus, and says how many of which kind when it is told to end."""
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
    heard = collections.Counter()
    Atspi.init()
    listener = Atspi.EventListener.new(lambda event: heard.update([event.type]))
    for kind in ("object:", "window:", "focus:"):
        listener.register(kind)
    loop = GLib.MainLoop()
    GLib.unix_signal_add(GLib.PRIORITY_LOW, signal.SIGTERM, loop.quit)

    def tell():
        print(sum(heard.values()), " ".join(f"{kind}={count}" for kind, count in heard.most_common()), flush=True)
        heard.clear()
        return True
    GLib.unix_signal_add(GLib.PRIORITY_LOW, signal.SIGUSR1, tell)
    print("ready", flush=True)
    loop.run()


class Listener:
    def __enter__(self):
        self.process = subprocess.Popen([sys.executable, __file__, "--listen"], stdout=subprocess.PIPE, text=True, env=active())
        if self.process.stdout.readline() != "ready\n":
            raise SystemExit("the listener does not start")
        return self

    def events(self):
        self.process.send_signal(signal.SIGUSR1)
        count, _, kinds = self.process.stdout.readline().strip().partition(" ")
        return int(count), kinds

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(10)
        self.process.stdout.close()


def active():
    environment = {name: value for name, value in os.environ.items() if name not in ("QT_ACCESSIBILITY", "NO_AT_BRIDGE")}
    return environment | {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}


class Program:
    """The program over a filled store, until its list stands and nothing is done any more."""

    def __init__(self, environment):
        self.log = tempfile.NamedTemporaryFile(prefix="bench-access-")
        self.process = subprocess.Popen([BIN / "kestrel"], env=environment | {"KESTREL_STARTUP_LOG": "1"}, stderr=self.log)
        self.wait("a painted list", lambda: "first list painted" in pathlib.Path(self.log.name).read_text())
        self.window = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(self.process.pid)], capture_output=True, text=True,
                                     check=True).stdout.split()[-1]
        self.rest()

    def processor(self):
        """Milliseconds that all its threads have used."""
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rpartition(") ")[2].split()
        return (int(fields[11]) + int(fields[12])) * 1000 / os.sysconf("SC_CLK_TCK")

    def wait(self, what, condition):
        end = time.monotonic() + 120
        while not condition():
            if time.monotonic() > end or self.process.poll() is not None:
                raise SystemExit(f"{what}: not reached\n" + pathlib.Path(self.log.name).read_text())
            time.sleep(0.05)

    def rest(self):
        """Waits until it uses next to no time of the processor for half a second."""
        def rests():
            before = self.processor()
            time.sleep(0.5)
            return self.processor() - before <= 10
        self.wait("rest", rests)

    def spent(self, work):
        before = self.processor()
        work()
        self.rest()
        return self.processor() - before

    def wheel(self):
        subprocess.run(["xdotool", "mousemove", "--window", self.window, "240", "500"], check=True)
        subprocess.run(["xdotool", "click", "--repeat", str(STEPS), "--delay", "10", "5"], check=True)

    def pages(self):
        subprocess.run(["xdotool", "key", "--clearmodifiers", "--repeat", str(PAGES), "--delay", "30", "Next"], check=True)

    def filter(self):
        subprocess.run(["xdotool", "type", "--delay", "300", LETTERS], check=True)
        subprocess.run(["xdotool", "key", "--clearmodifiers", "Escape"], check=True)

    def stop(self):
        self.process.kill()
        self.process.wait()
        self.log.close()


def measure(environment, listener=None):
    program = Program(environment)
    figures = {"load": (program.processor(), listener.events() if listener else None)}
    for name in ("wheel", "pages", "filter"):
        spent = program.spent(getattr(program, name))
        figures[name] = (spent, listener.events() if listener else None)
    program.stop()
    return figures


def fill(rows):
    import dbus
    peer = subprocess.Popen([BIN.parent / "tests/kestrel-store-peer"])
    bus = dbus.SessionBus()
    while not bus.name_has_owner(STORE):
        time.sleep(0.05)
    bus.get_object(STORE, STORE_PATH).Fill(dbus.UInt32(rows), dbus_interface="com.harrow.Kestrel.StorePeer", timeout=120)
    return peer


def frames(environment):
    """The 99th percentile of the frames of the scrolling list alone, in milliseconds of the processor, by kind of scrolling."""
    lines = subprocess.run([BIN / "bench_scroll"], env=environment, check=True, capture_output=True, text=True).stdout
    return {name: float(value) for name, value in re.findall(r"^(\S+)-processor p99 (\S+) ms$", lines, re.MULTILINE)}


def main():
    rows = int(sys.argv[1]) if len(sys.argv) > 1 else 10000
    peer = fill(rows)
    try:
        without = measure(dict(os.environ))
        alone = measure(active())
        with Listener() as listener:
            heard = measure(active(), listener)
    finally:
        peer.kill()
        peer.wait()
    what = {"load": f"start with {rows} rows", "wheel": f"{STEPS} steps of the wheel", "pages": f"{PAGES} pages by key",
            "filter": f"{len(LETTERS)} letters in the filter"}
    for name, text in what.items():
        base = max(1, without[name][0])
        for state, figures in (("nobody listens", alone), ("a listener", heard)):
            print(f"access {text}, {state} {figures[name][0]:.0f} ms | without {base:.0f} ms | ratio {figures[name][0] / base:.2f}")
    for name, text in what.items():
        count, kinds = heard[name][1]
        print(f"access-events {text} {count}")
        print(f"# {kinds or 'silence'}")
    # In turn, so that what else the machine does falls on both.
    rounds = [(frames(dict(os.environ)), frames(active())) for _ in range(ROUNDS)]
    for name in rounds[0][0]:
        without, told = (statistics.median(one[name] for one in side) for side in zip(*rounds))
        print(f"access-frames {name} p99 {told:.2f} ms | without {without:.2f} ms | ratio {told / without:.2f}")


if __name__ == "__main__":
    listen() if "--listen" in sys.argv else main()
