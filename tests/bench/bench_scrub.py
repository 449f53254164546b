#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A finger on the time line of a 1080p file: from each place it asks for to the key frame painted, ours beside mpv's
key-frame seeks, the same places in the same run; and the same finger at 60 places a second, whatever is shown meanwhile."""
import os
import sys
import tempfile

from videoplaces import CODECS, finger_places, make_clip, mpv, ours, percentile

LIMIT = 80  # ms
COUNT = int(os.environ.get("KESTREL_BENCH_COUNT", "200"))


def main():
    within = True
    with tempfile.TemporaryDirectory() as folder:
        for name in CODECS:
            clip = make_clip(folder, name)
            places = finger_places(COUNT)
            mine = ours("scrub", clip, places)
            peer = mpv("absolute+keyframes", clip, places, folder)
            for share in (0.5, 0.95):
                own, other = percentile(mine, share), percentile(peer, share)
                print(f"scrub {name} p{share * 100:.0f} {own:.0f} ms | mpv {other:.0f} ms | ratio {own / other:.2f}", flush=True)
            dragged = ours("drag", clip, places)
            worst = percentile(dragged, 0.95)
            print(f"scrub-drag {name} p95 {worst:.0f} ms | limit {LIMIT} ms | ratio {worst / LIMIT:.2f}", flush=True)
            within = within and percentile(mine, 0.95) <= LIMIT
    return 0 if within else 1


if __name__ == "__main__":
    sys.exit(main())
