# SPDX-License-Identifier: GPL-3.0-or-later
"""The walk of docs/large-libraries.md, as it is printed, with fewer videos: a server, its videos and users, the settings, the password in
the keyring and in a file, and the program in both modes."""
import os
import pathlib
import re
import shutil
import signal
import socket
import subprocess
import unittest

import e2e

DOCUMENT = e2e.SOURCE / "docs/large-libraries.md"
VIDEOS = 2000
SECONDS = 120  # the longest that a step may take


def free_port():
    with socket.socket() as tried:
        tried.bind(("127.0.0.1", 0))
        return tried.getsockname()[1]


def section(title):
    """The blocks of commands below a heading, up to the next one of its kind."""
    text = re.search(rf"^## {title}\n(.*?)^## ", DOCUMENT.read_text(encoding="utf-8"), re.S | re.M).group(1)
    return re.findall(r"^```sh\n(.*?)^```", text, re.S | re.M)


class LargeLibraries(unittest.TestCase):
    def setUp(self):
        self.home = pathlib.Path(os.environ["HOME"])
        (self.home / ".config/glib-2.0/settings").mkdir(parents=True, exist_ok=True)
        self.environment = dict(os.environ, GSETTINGS_BACKEND="keyfile", GSETTINGS_SCHEMA_DIR=str(e2e.BIN.parent / "share/glib-2.0/schemas"),
                                PATH=f"{e2e.BIN}:{os.environ['PATH']}", KESTREL_STARTUP_LOG="1")
        self.choose_ports()
        self.keyring = None
        self.addCleanup(self.end_server)
        self.addCleanup(self.end_keyring)
        self.addCleanup(e2e.end_service, "kestrel-store")

    def choose_ports(self):
        self.ports = {"1111": str(free_port()), "8890": str(free_port())}

    def here(self, block):
        """What is printed, on ports that are free here and with a library that is made in a moment."""
        block = re.sub(r"\b(1111|8890)\b", lambda port: self.ports[port.group()], block)
        return block.replace("library-triples 1000000", f"library-triples {VIDEOS}").replace("NumberOfBuffers = 85000", "NumberOfBuffers = 10000") \
            .replace("MaxDirtyBuffers = 65000", "MaxDirtyBuffers = 7500")

    def run_block(self, block, typed=""):
        done = subprocess.run(["bash", "-e", "-o", "pipefail", "-c", self.here(block)], input=typed, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, cwd=e2e.SOURCE, env=self.environment, timeout=SECONDS, check=False)
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertNotIn("*** Error", done.stdout)
        return done.stdout

    def start_server(self, block):
        """Another program may take a port that was free just now."""
        for attempt in range(5):
            try:
                return self.run_block(block)
            except AssertionError:
                if attempt == 4:
                    raise
                self.end_server()
                shutil.rmtree(self.home / "library")
                self.choose_ports()

    def end_server(self):
        lock = self.home / "library/data/virtuoso.lck"
        number = re.search(r"VIRT_PID=(\d+)", lock.read_text()) if lock.exists() else None
        if number and e2e.alive(number.group(1)):
            os.kill(int(number.group(1)), signal.SIGKILL)
            e2e.wait_until("the end of the server", lambda: not e2e.alive(number.group(1)))

    def start_keyring(self):
        self.keyring = subprocess.Popen(["gnome-keyring-daemon", "--foreground", "--components=secrets", "--unlock"], stdin=subprocess.PIPE,
                                        env=self.environment)
        self.keyring.stdin.write(b"the master's own")
        self.keyring.stdin.close()
        # A question before it is there would make the bus start another one.
        subprocess.run(["gdbus", "wait", "--session", "--timeout", "60", "org.freedesktop.secrets"], check=True)
        e2e.wait_until("the keyring", lambda: "collection/login" in subprocess.run(
            ["gdbus", "call", "--session", "--dest", "org.freedesktop.secrets", "--object-path", "/org/freedesktop/secrets", "--method",
             "org.freedesktop.Secret.Service.ReadAlias", "default"], capture_output=True, text=True, check=False).stdout)

    def end_keyring(self):
        if self.keyring:
            self.keyring.terminate()
            self.keyring.wait(10)
            self.keyring = None
            shutil.rmtree(self.home / ".local/share/keyrings", ignore_errors=True)

    def shows_the_list(self, command, login):
        log = self.home / "kestrel.log"
        with log.open("w", encoding="utf-8") as out:
            program = subprocess.Popen(command.split(), stderr=out, env=self.environment)
        try:
            e2e.wait_until("the list", lambda: "first list painted" in log.read_text(encoding="utf-8") or program.poll() is not None, SECONDS)
        finally:
            program.terminate()
            program.wait(20)
        lines = log.read_text(encoding="utf-8")
        self.assertIn("first list painted", lines)
        self.assertIn(login, lines)
        self.assertNotIn("correct horse", lines)

    def test_the_walk(self):
        install, server, videos, users, look, settings, *passwords, endpoint, virtuoso = section("From nothing to a million videos")
        self.assertIn("apt-get install", install)
        self.start_server(server)
        self.assertRegex(self.run_block(videos), r"videos\.ttl +2 +NULL")
        self.run_block(users)
        self.assertRegex(self.run_block(look), rf"\b{VIDEOS}\b")
        self.run_block(settings)

        self.start_keyring()
        first, second, file = passwords
        self.run_block(first, "correct horse")
        self.run_block(second, "correct horse")
        self.shows_the_list(self.here(endpoint), f"127.0.0.1:{self.ports['8890']}: logging on as kestrel, who comes from the secret service")

        # Without a keyring.
        self.end_keyring()
        self.run_block(file)
        self.shows_the_list(self.here(virtuoso), f"127.0.0.1:{self.ports['1111']}: logging on as kestrel, who comes from the file")


if __name__ == "__main__":
    unittest.main()
