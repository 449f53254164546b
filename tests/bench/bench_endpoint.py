#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""endpoint [VIDEOS ...]: a library of 100,000 and of 1,000,000 videos on a server through the driver QSPARQL_ENDPOINT. serverfigures.py says how."""
import serverfigures

if __name__ == "__main__":
    serverfigures.main("endpoint", "QSPARQL_ENDPOINT")
