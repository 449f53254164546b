#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""performance_table.py PAGE LINES: puts benchmark lines into the table between the two marks of a page.

A line `NAME value unit | PEER value unit | ratio R` (the last two parts may be missing) replaces the rows of its NAME.
"""
import pathlib
import sys

BEGIN, END = "<!-- figures -->", "<!-- end of figures -->"
HEAD = ["| figure | Kestrel | baseline or peer | ratio |", "|---|---|---|---|"]


def row(line):
    parts = [part.strip() for part in line.split("|")]
    name, _, value = parts[0].partition(" ")
    peer = parts[1] if len(parts) > 1 else "-"
    ratio = parts[2].removeprefix("ratio").strip() if len(parts) > 2 else "-"
    return name, f"| {name} | {value.strip()} | {peer} | {ratio} |"


def main():
    page, lines = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]).read_text().splitlines()
    fresh = {}
    for line in lines:
        if line.strip() and not line.startswith(("#", " ")):
            name, text = row(line)
            fresh.setdefault(name, []).append(text)
    before, rest = page.read_text().split(BEGIN, 1)
    table, after = rest.split(END, 1)
    rows = {}
    for text in table.strip().splitlines()[2:]:
        rows.setdefault(text.split("|")[1].strip(), []).append(text)
    rows.update(fresh)
    body = [text for name in rows for text in rows[name]]
    page.write_text(before + BEGIN + "\n" + "\n".join([*HEAD, *body]) + "\n" + END + after)


if __name__ == "__main__":
    main()
