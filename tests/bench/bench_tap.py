#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""From play() to the first frame painted, a local 1080p file: the first of a program whose list has stood for a second, the
median of the ten after it, and the first of a program that plays at once (opened with an address). Each is told for the
median of three programs."""
import os
import statistics
import subprocess
import sys
import tempfile

LIMIT = 150  # ms
PROGRAMS = 3


def taps(clip, rounds, delay):
    command = [os.path.join(os.environ["KESTREL_BIN_DIR"], "bench_videowindow"), "tap", clip, "1920x1080", str(rounds), str(delay)]
    output = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return [float(line) for line in output.split()]


def main():
    with tempfile.TemporaryDirectory() as folder:
        clip = os.path.join(folder, "clip.mp4")
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=1920x1080:r=30:d=5", "-f", "lavfi", "-i",
                        "sine=d=5", "-c:v", "libx264", "-preset", "veryfast", "-b:v", "8M", "-pix_fmt", "yuv420p", clip],
                       check=True)
        warm = [taps(clip, 11, 1000) for _ in range(PROGRAMS)]
        cold = [taps(clip, 1, 0) for _ in range(PROGRAMS)]
    figures = {"tap": statistics.median(time for times in warm for time in times[1:]),
               "tap-first": statistics.median(times[0] for times in warm),
               "tap-cold": statistics.median(times[0] for times in cold)}
    for name, figure in figures.items():
        print(f"{name} {figure:.0f} ms | limit {LIMIT} ms | ratio {figure / LIMIT:.2f}")
    complete = all(len(times) == 11 for times in warm) and all(len(times) == 1 for times in cold)
    return 0 if complete and figures["tap"] <= LIMIT and figures["tap-first"] <= LIMIT else 1


if __name__ == "__main__":
    sys.exit(main())
