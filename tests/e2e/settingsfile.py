# SPDX-License-Identifier: GPL-3.0-or-later
"""The program's settings in a file of the test's home."""
import contextlib
import os
import pathlib


@contextlib.contextmanager
def settings(group, **keys):
    """Texts and numbers of a group, "/" between its names and "_" for "-" in its keys; gone afterwards."""
    file = pathlib.Path(os.environ["HOME"]) / ".config/glib-2.0/settings/keyfile"
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(f"[{group}]\n" + "".join(f"{key.replace('_', '-')}={value!r}\n" for key, value in keys.items()))
    before = os.environ["GSETTINGS_BACKEND"]
    os.environ["GSETTINGS_BACKEND"] = "keyfile"
    try:
        yield
    finally:
        os.environ["GSETTINGS_BACKEND"] = before
        file.unlink()
