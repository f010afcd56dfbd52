"""Run the application on a real part; where there is no display, replay a user drawing one.

Results lie in build/run/ or the given folder. The parts that come with the application are never
changed: it works on copies.
"""

from __future__ import annotations

import argparse
import os
import shutil
import sys
import tkinter as tk
from pathlib import Path
from tempfile import TemporaryDirectory
from typing import TYPE_CHECKING

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from harness.places import SEARCH_PATH  # noqa: E402

sys.path[:0] = SEARCH_PATH

if TYPE_CHECKING:
    from tandrel.application.window import App

PART = ROOT / "host" / "parts" / "flange.json"


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument(
        "--replay", action="store_true", help="replay the session, even where there is a display"
    )
    parser.add_argument("--folder", type=Path, default=ROOT / "build" / "run", help="for results")
    options = parser.parse_args()
    folder = options.folder.resolve()
    folder.mkdir(parents=True, exist_ok=True)
    if options.replay or not display_usable():
        return replay_session(folder)
    return run_application(folder)


def display_usable() -> bool:
    try:
        tk.Tk().destroy()
    except tk.TclError:
        return False
    return True


def run_application(folder: Path) -> int:
    from tandrel.application import commands

    copy = folder / PART.name
    if copy.exists():
        print(f"Opening {copy}, your copy of {PART.name} from last time.")
    else:
        shutil.copyfile(PART, copy)
        print(f"Opening {copy}, a copy of {PART}. What you save goes there.")
    return commands.main([str(copy)])


def replay_session(folder: Path) -> int:
    from harness.display import x_server

    print("Replaying a drawing session on an X server of its own.")
    with TemporaryDirectory() as home, x_server(1600, 1200, window_manager=True) as display_name:
        # Programs started here, and Tk, look for their display in the environment.
        os.environ["DISPLAY"] = display_name
        return draw(display_name, folder, Path(home))


def draw(display_name: str, folder: Path, home: Path) -> int:
    """Draw parts as a user would; 0 if the saved files hold exactly what comes with these names."""
    from demo.draughtsman import Draughtsman
    from demo.drawing import PARTS, draw_and_save, look_around
    from harness.user import Script, User, play

    drawn = {name: folder / f"drawn-{name}.json" for name in PARTS}
    flange = folder / "replayed-flange.json"
    for old in (*drawn.values(), flange, *folder.glob("*.png")):
        old.unlink(missing_ok=True)
    shutil.copyfile(PART, flange)
    app = new_application(home)
    hands = Draughtsman(app, User(app.root, display_name), folder)
    saved: list[bytes] = []

    def contents() -> list[bytes]:
        return [path.read_bytes() for path in drawn.values()]

    def script() -> Script:
        yield from draw_and_save(hands, drawn)
        saved.extend(contents())
        yield from look_around(hands, flange)

    play(app.root, script(), folder / "failure.png")
    faults = [fault_in(path, PART.with_stem(name)) for name, path in drawn.items()]
    if [*contents(), flange.read_bytes()] != [*saved, PART.read_bytes()]:
        faults.append("Cancel changed a file.")
    if any(faults):
        print("FAILED:", *filter(None, faults))
        return 1
    for name, path in drawn.items():
        print(f"{path} holds the {name} as it is on the drawing, number by number.")
    print("Pictures of the session:")
    for picture in sorted(folder.glob("*.png"), key=os.path.getmtime):
        print(f"  {picture}")
    return 0


def new_application(home: Path) -> App:
    """The application as it starts the first time, with a home of its own for what it keeps."""
    for variable, name in (("XDG_CONFIG_HOME", "config"), ("XDG_STATE_HOME", "state")):
        os.environ[variable] = str(home / name)
    from tandrel.application.recovery import Recovery
    from tandrel.application.session import Session
    from tandrel.application.settings import Settings
    from tandrel.application.window import App
    from tandrel.gui.theme import main_window

    return App(main_window("Tandrel"), Session(Recovery()), Settings.load())


def fault_in(drawn: Path, part: Path) -> str:
    """How a saved sketch differs from that of a part, if it does."""
    from tandrel import storage

    found, expected = storage.read(drawn).sketch, storage.read(part).sketch
    if found == expected:
        return ""
    return f"{drawn} holds\n  {found}\ninstead of\n  {expected}"


if __name__ == "__main__":
    sys.exit(main())
