# SPDX-License-Identifier: GPL-3.0-or-later
"""What the end-to-end tests share: a home with a few clips, the program as a person meets it."""
import contextlib
import ctypes
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

SOURCE = pathlib.Path(os.environ["KESTREL_SOURCE_DIR"])
BIN = pathlib.Path(os.environ["KESTREL_BIN_DIR"])
sys.path.insert(0, str(SOURCE / "scripts"))
import tour as touring  # noqa: E402


def clip(path, seconds=4, size="640x360", color="steelblue", extra=()):
    """A quick clip with a bright sun on a coloured sky; its colours tell it from a placeholder."""
    path.parent.mkdir(parents=True, exist_ok=True)
    part = path.with_name("." + path.name)
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "lavfi", "-i", f"testsrc2=size={size}:rate=24:duration={seconds}",
                    "-f", "lavfi", "-i", f"sine=frequency=330:duration={seconds}", "-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p",
                    "-c:a", "aac", *extra, str(part)], check=True)
    os.replace(part, path)
    return path


def end_service(name, signal="TERM"):
    """Ends a service of this session's bus and waits until it is gone, so that it cannot touch the next test's files."""
    pattern = f"^{BIN / name}"
    mine = [pid for pid in subprocess.run(["pgrep", "-f", pattern], capture_output=True, text=True).stdout.split()
            if os.environ["HOME"].encode() in environment(pid)]
    for pid in mine:
        subprocess.run(["kill", f"-{signal}", pid], check=False)
    end = time.monotonic() + 10
    while any(alive(pid) for pid in mine):
        if time.monotonic() > end:
            raise AssertionError(f"{name} does not end")
        time.sleep(0.05)


def environment(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/environ").read_bytes()
    except OSError:  # it has ended meanwhile
        return b""


def alive(pid):
    try:
        return ") Z" not in pathlib.Path(f"/proc/{pid}/stat").read_text()
    except OSError:
        return False


TRACE_SEIZE, TRACE_INTERRUPT, TRACE_SYSCALL, TRACE_DETACH = 0x4206, 0x4207, 24, 17
ANY_CHILD = 0x40000000  # __WALL: also threads
libc = ctypes.CDLL(None, use_errno=True)


def trace(request, thread):
    if libc.ptrace(request, thread, None, None) != 0:
        error = ctypes.get_errno()
        raise OSError(error, f"thread {thread}: {os.strerror(error)}")


def thread_named(process, name):
    for comm in pathlib.Path(f"/proc/{process}/task").glob("*/comm"):
        try:
            if comm.read_text() == name + "\n":
                return int(comm.parent.name)
        except OSError:  # it has ended meanwhile
            pass
    return None


def descriptors_beyond(process, path, place):
    """Those by which the program has read more than so many bytes of a file."""
    for link in pathlib.Path(f"/proc/{process}/fd").iterdir():
        try:
            if os.readlink(link) == str(path):
                told = pathlib.Path(f"/proc/{process}/fdinfo/{link.name}").read_text()
                if int(told.split("pos:")[1].split()[0]) > place:
                    yield int(link.name)
        except OSError:  # closed meanwhile
            pass


def is_reading(process, thread, descriptors):
    """At the edge of a system call that reads: elsewhere a thread may hold what the others wait for."""
    told = pathlib.Path(f"/proc/{process}/task/{thread}/syscall").read_text().split()
    return any(int(argument, 16) in descriptors for argument in told[1:3])


@contextlib.contextmanager
def reading_held(process, name, path, beyond=0):
    """Stops the thread of a program that this process started while it reads a file, after so many bytes of it, and lets it
    go on at the end; all other threads go on. What takes a second on one machine and a minute on another is then seen on both.
    Whoever kills the program meanwhile waits for its end after this."""
    end = time.monotonic() + 30
    while (thread := thread_named(process, name)) is None or not (descriptors := set(descriptors_beyond(process, path, beyond))):
        if time.monotonic() > end:
            raise AssertionError(f"no thread {name} reads {path}")
        time.sleep(0.001)
    try:
        trace(TRACE_SEIZE, thread)
    except PermissionError as error:
        print(f"{name} is not held: {error}", file=sys.stderr)  # then it takes as long as the file is large
        yield
        return
    trace(TRACE_INTERRUPT, thread)
    os.waitpid(thread, ANY_CHILD)
    while not is_reading(process, thread, descriptors):
        trace(TRACE_SYSCALL, thread)
        os.waitpid(thread, ANY_CHILD)
    try:
        yield
    finally:
        try:
            trace(TRACE_DETACH, thread)
        except ProcessLookupError:  # the program was killed, and waits for this
            os.waitpid(thread, ANY_CHILD)


class Bus:
    """A message bus of the test's own, told to the programs by an environment variable: the system bus, for one."""

    def __init__(self, variable):
        self.variable = variable
        self.daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE, text=True)
        self.address = self.daemon.stdout.readline().strip()
        if not self.address:
            raise AssertionError("the message bus does not start")
        os.environ[variable] = self.address

    def stop(self):
        os.environ.pop(self.variable, None)
        self.daemon.terminate()
        self.daemon.wait(10)
        self.daemon.stdout.close()


class Mock:
    """A service of python-dbusmock in a process of its own. With `template`, which are its parameters, `interface` is the
    file of a template."""

    def __init__(self, kind, name, path, interface, template=None):
        import dbus  # Debian's; only the tests that talk to a bus need it
        if template is None:
            command = [f"--{kind}", name, path, interface]
        else:
            command = [f"--{kind}", "--template", interface, "--parameters", json.dumps(template)]
        self.interface = interface
        self.path = path
        self.log = pathlib.Path(tempfile.mkstemp(prefix="mock-")[1])
        self.process = subprocess.Popen([sys.executable, "-m", "dbusmock", "--logfile", str(self.log), *command])
        self.bus = dbus.bus.BusConnection(os.environ["DBUS_SYSTEM_BUS_ADDRESS" if kind == "system" else "DBUS_SESSION_BUS_ADDRESS"])
        self.name = name
        wait_until(f"{name} on the bus", lambda: self.bus.name_has_owner(name))

    def control(self, path=None):
        import dbus
        return dbus.Interface(self.bus.get_object(self.name, path or self.path), "org.freedesktop.DBus.Mock")

    def method(self, name, arguments, result, code="", path=None, interface=None):
        self.control(path).AddMethod(interface or self.interface, name, arguments, result, code)

    def emit(self, name, signature, arguments, path=None, interface=None):
        self.control(path).EmitSignal(interface or self.interface, name, signature, arguments)

    def was_asked(self, what):
        """Whether a line of its log, a reading of a property for one, ends so; the answer is on its way by then."""
        return any(line.endswith(what) for line in self.log.read_text().splitlines()) and self.control().GetCalls() is not None

    def stop(self):
        self.process.terminate()
        self.process.wait(10)
        self.bus.close()
        self.log.unlink()


class Peer:
    """A small program of tests/support/peers: says "ready", takes commands by lines and answers each with "done"."""

    def __init__(self, script, *arguments):
        self.process = subprocess.Popen([sys.executable, str(SOURCE / "tests/support/peers" / script), *arguments],
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        try:
            self.expect("ready")
        except AssertionError:
            self.stop()
            raise

    def expect(self, word):
        line = self.process.stdout.readline().strip()
        if line != word:
            raise AssertionError(f"{self.process.args[1]} says {line!r} instead of {word!r}")

    def command(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        self.expect("done")

    def stop(self):
        self.process.kill()
        self.process.wait(10)
        self.process.stdin.close()
        self.process.stdout.close()


def wait_until(what, condition, seconds=30.0):
    end = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > end:
            raise AssertionError(f"{what}: not within {seconds:.0f} s")
        time.sleep(0.05)


class Arguments:
    def __init__(self, pictures, videos):
        self.program = str(BIN / "kestrel")
        self.pictures = str(pictures)
        self.videos = str(videos)
        self.address = []


class Case(unittest.TestCase):
    """One home, one bus, one display a test file; each test starts with an empty library."""

    def setUp(self):
        self.home = pathlib.Path(os.environ["HOME"])
        self.videos = self.home / "Videos"
        self.pictures = pathlib.Path.cwd() / "pictures" / os.environ["KESTREL_TEST_SCREEN"].removesuffix("x24") / self.id().split(".")[-1]
        shutil.rmtree(self.pictures, ignore_errors=True)
        self.pictures.mkdir(parents=True)
        self.videos.mkdir(exist_ok=True)
        (self.home / ".config").mkdir(exist_ok=True)
        (self.home / ".config/user-dirs.dirs").write_text('XDG_VIDEOS_DIR="$HOME/Videos"\n')
        self.tour = touring.Tour(Arguments(self.pictures, self.videos))

    def tearDown(self):
        program = self.tour.program
        if program and program.poll() is None:
            program.terminate()
            program.wait(10)
        for service in ("kestrel-store", "kestrel-thumbnailer"):
            end_service(service)
        shutil.rmtree(self.videos, ignore_errors=True)
        for folder in (".local", ".cache", ".thumbnails"):
            shutil.rmtree(self.home / folder, ignore_errors=True)

    def saved_place(self, path):
        """The place in a video, in seconds, that is safely on disk; None when there is none."""
        journal = self.home / ".local/share/kestrel/journal.jsonl"
        places = [None]
        if journal.exists():
            for line in journal.read_text().splitlines():
                entry = json.loads(line)
                if entry.get("url") == path.as_uri():
                    places.append(entry.get("position"))
        return places[-1]

    def wait_for_cells(self, count, seconds):
        return self.tour.wait(f"{count} cells with pictures", lambda image: self.tour.cells_with_pictures(image) == count, seconds)
