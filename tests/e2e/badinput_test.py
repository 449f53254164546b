# SPDX-License-Identifier: GPL-3.0-or-later
"""Addresses that cannot be played: the program says so, goes on, and the library is intact."""
import time
import unittest

import e2e


class BadInput(e2e.Case):
    def addresses(self):
        empty = self.videos / "empty.mp4"
        empty.touch()
        text = self.videos / "text.mp4"
        text.write_text("This is no video.\n" * 200)
        whole = e2e.clip(self.home / "whole.mp4").read_bytes()
        cut = self.videos / "cut.mp4"
        cut.write_bytes(whole[: len(whole) // 3])
        return {
            "missing": "/nowhere/at all.mp4",
            "empty": str(empty),
            "text": str(text),
            "truncated": str(cut),
            "directory": str(self.videos),
            "control": "bad\x01\x1f\x7fname.mp4",
            "quotes": "a\"b'c<d>e%f#g.mp4",
            "long": "x" * 4096,
            "scheme": "gopher:nothing",
            "unreachable": "http://127.0.0.1:9/nothing.mp4",
            "rtsp": "rtsp://127.0.0.1:9/nothing",
            "urn": "urn:uuid:00000000-0000-0000-0000-000000000000",
        }

    def test_each_address_leads_back_to_an_intact_library(self):
        e2e.clip(self.videos / "Alpha.mp4")
        for name, address in self.addresses().items():
            with self.subTest(name):
                self.tour.start(address)
                # Either the program went back to the list by itself, or Back leads there.
                end = time.monotonic() + 12
                while time.monotonic() < end and self.tour.cells_with_pictures(self.tour.look()) != 1:
                    self.assertIsNone(self.tour.program.poll(), f"{name}: the program ended")
                    self.tour.screen.key("BackSpace")
                    time.sleep(0.5)
                self.wait_for_cells(1, 5)
                self.tour.keep(name)
                self.tour.program.terminate()
                self.tour.program.wait(10)


if __name__ == "__main__":
    unittest.main()
