"""What the tests of the application share."""

import subprocess
from pathlib import Path

import pytest
import tandrel.gui
from hypothesis import HealthCheck, settings
from tandrel.gui import i18n, widgets

# What is true doesn't depend on how busy the machine is.
settings.register_profile("host", deadline=None, suppress_health_check=[HealthCheck.too_slow])
settings.load_profile("host")

LOCALE = Path(i18n.__file__).parent / "locale"


@pytest.fixture(scope="session")
def compiled(tmp_path_factory):
    """A folder with every catalogue, compiled."""
    folder = tmp_path_factory.mktemp("compiled")
    for source in LOCALE.glob("*.po"):
        target = folder / "locale" / source.stem / "LC_MESSAGES" / "tandrel.mo"
        target.parent.mkdir(parents=True)
        subprocess.run(["msgfmt", "--check-format", "-o", target, source], check=True)
    return folder


@pytest.fixture
def catalogues(compiled, monkeypatch):
    """The package finds the compiled catalogues, whatever the build has made."""
    monkeypatch.setattr(tandrel.gui, "__path__", [str(compiled)])


@pytest.fixture(autouse=True)
def as_at_start():
    """Millimetres and English, before and after each test."""
    widgets.set_units("mm")
    i18n.set_language("en")
    yield
    widgets.set_units("mm")
    i18n.set_language("en")
