#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""From the call to the exact frame painted, a paused 1080p file with a key frame every two seconds: ours beside mpv with
--hr-seek, the same places in the same run."""
import os
import statistics
import sys
import tempfile

from videoplaces import CODECS, make_clip, mpv, ours, percentile, random_places

COUNT = int(os.environ.get("KESTREL_BENCH_COUNT", "60"))


def main():
    ahead = True
    with tempfile.TemporaryDirectory() as folder:
        for name in CODECS:
            clip = make_clip(folder, name)
            places = random_places(COUNT)
            mine = ours("seek", clip, places)
            peer = mpv("absolute+exact", clip, places, folder)
            for figure, pick in (("median", statistics.median), ("p95", lambda times: percentile(times, 0.95))):
                print(f"seek {name} {figure} {pick(mine):.0f} ms | mpv {pick(peer):.0f} ms | ratio {pick(mine) / pick(peer):.2f}",
                      flush=True)
            ahead = ahead and statistics.median(mine) <= statistics.median(peer)
    return 0 if ahead else 1


if __name__ == "__main__":
    sys.exit(main())
