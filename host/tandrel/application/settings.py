"""What the application remembers of its user from one start to the next."""

from __future__ import annotations

import json
import os
import re
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Callable, Dict, List

from tandrel import files
from tandrel.units import SYSTEMS

FILE = "settings.json"
MOST_RECENT = 8
PALETTES = ("light", "dark")


def xdg_folder(variable: str, usual: str) -> Path:
    """The application's folder of a kind: where the environment says, or the usual one at home."""
    named = os.environ.get(variable, "")
    # Relative ones are to be ignored: they would move with the working directory.
    base = Path(named) if os.path.isabs(named) else Path(os.path.expanduser("~"), usual)
    return base / "tandrel"


def config_folder() -> Path:
    return xdg_folder("XDG_CONFIG_HOME", ".config")


@dataclass
class Settings:
    """Each setting has a sound value at any time, whatever the file holds.

    ``recent`` has the files opened last, the newest first, whether they still exist or not.
    ``geometry`` is the main window's to Tk, ``editor_size`` that of the sketch editor without its
    place, ``language`` a language's code: empty until known.
    """

    folder: Path
    recent: List[str] = field(default_factory=list)
    geometry: str = ""
    editor_size: str = ""
    units: str = "mm"
    language: str = ""
    palette: str = PALETTES[0]

    @classmethod
    def load(cls, folder: Path | None = None) -> Settings:
        """The settings kept in a folder; defaults for all that is missing or damaged there."""
        settings = cls(config_folder() if folder is None else folder)
        try:
            content = json.loads(files.contents(settings.folder / FILE))
        except (OSError, ValueError, RecursionError):
            return settings
        if isinstance(content, dict):
            for name, is_sound in _SOUND.items():
                if is_sound(content.get(name)):
                    setattr(settings, name, content[name])
        return settings

    def save(self) -> None:
        """Keep the settings for the next start, where that is possible."""
        text = json.dumps({name: getattr(self, name) for name in _SOUND}, indent=2) + "\n"
        try:
            self.folder.mkdir(parents=True, exist_ok=True)
            files.replace(self.folder / FILE, text.encode())
        except (OSError, ValueError):
            pass

    def remember(self, path: str | os.PathLike[str]) -> None:
        """Put a file at the head of the recent ones."""
        newest = os.path.abspath(path)
        others = [path for path in self.recent if path != newest]
        self.recent = [newest, *others][:MOST_RECENT]


def _text(pattern: str) -> Callable[[Any], bool]:
    return lambda value: isinstance(value, str) and re.fullmatch(pattern, value) is not None


def _paths(value: Any) -> bool:
    """Paths as the system takes them, the few that are kept."""
    return (
        isinstance(value, list)
        and len(value) <= MOST_RECENT
        and all(isinstance(path, str) and path and "\0" not in path for path in value)
    )


_SIZE = "[1-9][0-9]{0,4}x[1-9][0-9]{0,4}"
_SOUND: Dict[str, Callable[[Any], bool]] = {
    "recent": _paths,
    "geometry": _text(rf"({_SIZE}(([+-]-?[0-9]{{1,5}}){{2}})?)?"),
    "editor_size": _text(f"({_SIZE})?"),
    "units": lambda value: isinstance(value, str) and value in SYSTEMS,
    "language": _text("[a-z]{0,3}"),
    "palette": lambda value: value in PALETTES,
}
