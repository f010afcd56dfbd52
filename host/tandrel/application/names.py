"""Names and places of files, no longer than a window has room for."""

from __future__ import annotations

import os


def short(text: str, most: int) -> str:
    """A text on one line, with its middle left out where it is long."""
    text = " ".join(text.split())
    return text if len(text) <= most else f"{text[: most // 2]}…{text[-most // 2 + 1 :]}"


def with_folder(path: str, most: int) -> str:
    """A file's name and where it lies, as people write it, in about `most` characters."""
    folder, name = os.path.split(path)
    home = os.path.expanduser("~")
    if folder == home or folder.startswith(home + os.sep):
        folder = "~" + folder[len(home) :]
    name = short(name, most // 2)
    return f"{name}  ({short(folder, most - len(name))})"
