#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""virtuoso [VIDEOS ...]: a library of 100,000 and of 1,000,000 videos on a server through the driver QVIRTUOSO. serverfigures.py says how."""
import serverfigures

if __name__ == "__main__":
    serverfigures.main("virtuoso", "QVIRTUOSO")
