"""Files read in one go, whatever they turn out to be, and replaced in one step."""

from __future__ import annotations

import errno
import os
import shutil
import stat
import tempfile
from contextlib import suppress
from typing import Optional, Tuple

from tandrel.gui.i18n import N_, tr

# Far beyond any drawing or setting; a larger file is something else.
LARGEST = 50_000_000

# What the system says most often, in the language of the application instead of its own.
_SYSTEM = (
    N_("No such file or directory"),
    N_("Permission denied"),
    N_("Is a directory"),
    N_("Not a directory"),
    N_("No space left on device"),
    N_("Read-only file system"),
    N_("File name too long"),
    N_("Input/output error"),
)


def contents(path: str | os.PathLike[str]) -> bytes:
    """The bytes of a file; OSError, and never a wait, where that isn't an ordinary file."""
    with open(path, "rb", opener=_open_at_once) as file:
        if not stat.S_ISREG(os.fstat(file.fileno()).st_mode):
            raise _refusal(errno.EINVAL, N_("this is not a file"))
        data = file.read(LARGEST + 1)
    if len(data) > LARGEST:
        raise _refusal(errno.EFBIG, N_("the file is too large"))
    return data


def stamp(path: str | os.PathLike[str]) -> Optional[Tuple[int, int, int]]:
    """What changes with each writing of a file; None where there is nothing."""
    try:
        found = os.stat(path)
    except (OSError, ValueError):
        return None
    return found.st_mtime_ns, found.st_size, found.st_ino


def replace(path: str | os.PathLike[str], data: bytes, keep_previous: bool = False) -> None:
    """Put new content in a file's place in one step that outlasts a power failure.

    At any moment there is the old file or the new one; OSError leaves the old one. A link stays a
    link. With ``keep_previous`` the old content gets the name ``NAME~`` first.
    """
    path = os.path.realpath(path)
    old = _present(path)
    handle, fresh = tempfile.mkstemp(prefix=".", suffix=".tmp", dir=os.path.dirname(path))
    try:
        with open(handle, "wb") as file:
            # File systems without permissions refuse this, and need none.
            with suppress(PermissionError):
                os.fchmod(file.fileno(), _usual_mode() if old is None else old.st_mode & 0o777)
            file.write(data)
            file.flush()
            os.fsync(file.fileno())
        if keep_previous and old is not None:
            _keep(path, fresh + "~")
        os.replace(fresh, path)
    except BaseException:
        with suppress(OSError):
            os.unlink(fresh)
        raise
    _sync_folder(path)


def reason(error: OSError | ValueError) -> str:
    """What the system says of a path or a file that it can't work with."""
    text = isinstance(error, OSError) and error.strerror or str(error)
    return tr(text) if text in _SYSTEM else text


def _keep(path: str, temporary: str) -> None:
    """Give a file's content the name ``NAME~`` as well."""
    try:
        try:
            os.link(path, temporary)
        except OSError:  # such as a file system without hard links
            shutil.copy2(path, temporary)
            with open(temporary, "rb") as copy:
                os.fsync(copy.fileno())
        os.replace(temporary, path + "~")
    finally:
        # Between two names of one content, replacing does nothing.
        with suppress(OSError):
            os.unlink(temporary)
    # Else a power failure could leave the new file with the version before last beside it.
    _sync_folder(path)


def _sync_folder(path: str) -> None:
    """Let a change of names outlast a power failure, where the file system can."""
    with suppress(OSError):
        handle = os.open(os.path.dirname(path), os.O_RDONLY)
        try:
            os.fsync(handle)
        finally:
            os.close(handle)


def _present(path: str) -> Optional[os.stat_result]:
    """What stands in a file's place, if anything does; OSError where nothing may be written."""
    try:
        found = os.stat(path)
    except FileNotFoundError:
        return None
    if not stat.S_ISREG(found.st_mode):
        raise _refusal(errno.EINVAL, N_("this is not a file"))
    # Replacing asks for the folder's permission only.
    if not os.access(path, os.W_OK):
        raise _refusal(errno.EACCES, os.strerror(errno.EACCES))
    return found


def _usual_mode() -> int:
    """The permissions that a new file gets."""
    mask = os.umask(0)
    os.umask(mask)
    return 0o666 & ~mask


def _open_at_once(path: str, flags: int) -> int:
    """Open without waiting, as a named pipe would for its other end."""
    return os.open(path, flags | os.O_NONBLOCK)


def _refusal(number: int, text: str) -> OSError:
    return OSError(number, tr(text))
