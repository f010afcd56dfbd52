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
from typing import Any

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT))

from demo.places import SEARCH_PATH  # noqa: E402

sys.path[:0] = SEARCH_PATH

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
    from tandrel import app

    copy = folder / PART.name
    if copy.exists():
        print(f"Opening {copy}, your copy of {PART.name} from last time.")
    else:
        shutil.copyfile(PART, copy)
        print(f"Opening {copy}, a copy of {PART}. What you save goes there.")
    return app.main([str(copy)])


def replay_session(folder: Path) -> int:
    from demo.display import x_server

    print("Replaying a drawing session on an X server of its own.")
    with x_server(1600, 1200, window_manager=True) as display_name:
        # Programs started here, and Tk, look for their display in the environment.
        os.environ["DISPLAY"] = display_name
        return draw(display_name, folder)


def draw(display_name: str, folder: Path) -> int:
    """Draw a part as a user would; 0 if the saved file holds exactly what was drawn."""
    from demo.draughtsman import Draughtsman
    from demo.drawing import draw_and_save, look_around, shapes_drawn
    from demo.user import Script, User, play
    from tandrel import sketch, storage
    from tandrel.app import App
    from tandrel.gui.widgets import main_window

    drawn, flange = folder / "drawn.json", folder / "replayed-flange.json"
    for old in (drawn, flange, *folder.glob("*.png")):
        old.unlink(missing_ok=True)
    storage.write(drawn, storage.Document("Drawn by hand", sketch.new()))
    shutil.copyfile(PART, flange)
    root = main_window("Tandrel")
    hands = Draughtsman(App(root, str(drawn)), User(root, display_name), folder)
    saved: list[bytes] = []

    def script() -> Script:
        yield from draw_and_save(hands)
        saved.append(drawn.read_bytes())
        yield from look_around(hands, flange)

    play(root, script(), folder / "failure.png")
    fault = fault_in(drawn, shapes_drawn())
    if [drawn.read_bytes(), flange.read_bytes()] != [*saved, PART.read_bytes()]:
        fault = "Cancel changed a file."
    if fault:
        print(f"FAILED: {fault}")
        return 1
    print(f"{drawn} holds every shape as it was drawn, number by number.")
    print("Pictures of the session:")
    for picture in sorted(folder.glob("*.png"), key=os.path.getmtime):
        print(f"  {picture}")
    return 0


def fault_in(drawn: Path, expected: list[dict[str, Any]]) -> str:
    """How the saved shapes differ from the expected ones, if they do."""
    from tandrel import storage

    found = storage.read(drawn).sketch["entities"]
    if found == expected:
        return ""
    return f"{drawn} holds\n  {found}\ninstead of\n  {expected}"


if __name__ == "__main__":
    sys.exit(main())
