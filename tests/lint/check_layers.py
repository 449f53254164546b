#!/usr/bin/env python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Includes go one way: platform <- data <- {library, player, details, fileops} <- app, and nothing above the platform
and the services includes a header of GStreamer, GLib, GIO or the store library."""
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.M)
FOREIGN = re.compile(r'^(gst/|pulse/|glib|gio/|gobject/|libtracker|tracker-)')
PLATFORM = {"toolkit", "sparql", "servers", "media", "thumbs", "system", "extensions", "remote", "share", "saveas"}
SIBLINGS = {"library", "player", "details", "fileops"}
ALLOWED_PLATFORM = {"media": {"toolkit", "system"}, "thumbs": {"system"}, "sparql": {"system"}, "servers": {"sparql", "system"}, "extensions": {"toolkit", "system"},
                    "share": {"toolkit", "system"}, "saveas": {"toolkit"}, "toolkit": set(), "system": set(), "remote": set()}
# The memory card monitor watches GIO's volume monitor.
FOREIGN_EXCEPTIONS = {"data/mmcmonitor.cpp", "data/mmcmonitor.h"}


def layer(parts):
    return "/".join(parts[:2]) if parts[0] == "platform" else parts[0]


def allowed(source, target):
    if source == target:
        return True
    if source == "app":
        return True
    if source in SIBLINGS:
        # A video is deleted, renamed and copied from the list and from the player.
        return target in {"data"} | ({"fileops"} if source in {"library", "player"} else set()) or target.startswith("platform/")
    if source == "data":
        return target.startswith("platform/")
    if source.startswith("platform/") and target.startswith("platform/"):
        return target.split("/")[1] in ALLOWED_PLATFORM[source.split("/")[1]]
    return False


def check(root):
    errors, files = [], 0
    src = root / "src"
    for path in sorted([*src.rglob("*.h"), *src.rglob("*.cpp")]):
        files += 1
        name = path.relative_to(src)
        source = layer(name.parts)
        for include in INCLUDE.findall(path.read_text(encoding="utf-8")):
            if FOREIGN.match(include) and not source.startswith("platform/") and str(name) not in FOREIGN_EXCEPTIONS:
                errors.append(f"src/{name}: includes {include}")
            if include.startswith(("store/", "thumbnailer/", "media-worker/", "common/")):
                errors.append(f"src/{name}: includes a service's header, {include}")
            parts = pathlib.PurePosixPath(include).parts
            known = parts and (parts[0] in SIBLINGS | {"app", "data"} or parts[0] == "platform" and len(parts) > 2)
            if known and (src / include).exists() and not allowed(source, layer(parts)):
                errors.append(f"src/{name}: {source} may not include {include}")
    return errors, files


def check_extensions(root):
    """An extension of ours is built as a stranger's is: the public headers, libraries, and files beside its own."""
    errors = []
    for path in sorted([*(root / "extensions").rglob("*.h"), *(root / "extensions").rglob("*.cpp")]):
        for quote, include in re.findall(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', path.read_text(encoding="utf-8"), re.M):
            is_beside = quote == '"' and ".." not in include and ((path.parent / include).exists() or include.endswith(".moc"))
            is_foreign = quote == "<" and not (root / "src" / include).exists() and not (root / "services" / include).exists()
            if not is_beside and not is_foreign:
                errors.append(f"{path.relative_to(root)}: includes {include}, which no extension has")
    return errors


def main():
    root = pathlib.Path(sys.argv[1])
    errors, files = check(root)
    errors += check_extensions(root)
    print("\n".join(errors))
    print(f"{files} files, {len(errors)} includes against the layering")
    return 1 if errors or not files else 0


if __name__ == "__main__":
    sys.exit(main())
