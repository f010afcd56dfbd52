"""The packages that the application is built on, and how to get one that is missing."""

from __future__ import annotations

from typing import Optional

from tandrel.gui.i18n import tr

_MODULE = "tandrel.gui.sketcher"
_PIP = "python3 -m pip install"
# By the name that is imported: Debian's package, and the one of Python's own index if there is any.
_PACKAGES = {
    "numpy": ("python3-numpy", "numpy"),
    "shapely": ("python3-shapely", "shapely"),
    "ezdxf": ("python3-ezdxf", "ezdxf"),
    "svgelements": ("python3-svgelements", "svgelements"),
    "PIL": ("python3-pil", "Pillow"),
    "tkinter": ("python3-tk", ""),
    "_tkinter": ("python3-tk", ""),
}


def how_to_get(error: ModuleNotFoundError) -> Optional[str]:
    """What to tell the user where an import failed; None where it isn't one of the packages."""
    if error.name == _MODULE:
        text = tr("the sketch editor {module} isn't built: run “make build” first")
        return text.format(module=_MODULE)
    name = (error.name or "").split(".")[0]
    if name not in _PACKAGES:
        return None
    package, project = _PACKAGES[name]
    commands = [f"sudo apt install {package}"]
    if project:
        commands.append(f"{_PIP} {project}")
    text = tr("{name} is missing, get it by: {commands}")
    return text.format(name=name.lstrip("_"), commands=tr(" or ").join(commands))
