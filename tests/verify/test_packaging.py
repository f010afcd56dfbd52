"""The wheel: what is in it, that it is always the same, and that it works where it is installed."""

import os
import shutil
import subprocess
import sys
import tarfile
import zipfile
from pathlib import Path

import pytest
from harness.places import BUILD, ROOT
from support.interpreters import nearly_equal, walk_through

PACKAGED = "CMakeLists.txt CMakePresets.json MANIFEST.in README.md CHANGELOG.md pyproject.toml"
OFFLINE = ("--no-build-isolation", "--no-deps", "--no-index", "--disable-pip-version-check")

pytestmark = pytest.mark.skipif(BUILD != ROOT / "build", reason="the wheel is made anew")


def call(*command, folder=None):
    environment = {**os.environ, "PIP_ROOT_USER_ACTION": "ignore"}
    environment.pop("PYTHONPATH", None)
    ended = subprocess.run(
        list(map(str, command)), cwd=folder, env=environment, capture_output=True, text=True
    )
    assert ended.returncode == 0, ended.stdout + ended.stderr
    return ended.stdout


def make_wheel(folder):
    call(
        sys.executable,
        "-m",
        "pip",
        "--quiet",
        "wheel",
        *OFFLINE,
        "--wheel-dir",
        folder / "made",
        ".",
        folder=folder,
    )
    (wheel,) = (folder / "made").glob("*.whl")
    return wheel


@pytest.fixture(scope="module")
def sources(tmp_path_factory):
    """A copy of what the wheel is made from."""
    folder = tmp_path_factory.mktemp("sources")
    for name in [*PACKAGED.split(), "setup.py"]:
        shutil.copy(ROOT / name, folder)
    shutil.copytree(ROOT / "tandrel", folder / "tandrel", ignore=shutil.ignore_patterns("*.so"))
    return folder


@pytest.fixture(scope="module")
def wheel(sources):
    return make_wheel(sources)


@pytest.fixture(scope="module")
def sdist(sources):
    code = "import setuptools.build_meta as backend; backend.build_sdist('made')"
    call(sys.executable, "-W", "ignore", "-c", code, folder=sources)
    (archive,) = (sources / "made").glob("*.tar.gz")
    return archive


def test_wheel_holds_the_module_and_its_types_only(wheel):
    assert wheel.name.split("-")[2:4] == ["cp39", "abi3"]
    with zipfile.ZipFile(wheel) as archive:
        names = [name for name in archive.namelist() if ".dist-info/" not in name]
    assert sorted(names) == [
        "tandrel/gui/py.typed",
        "tandrel/gui/sketcher.abi3.so",
        "tandrel/gui/sketcher.pyi",
    ]


def test_source_archive_makes_the_same_wheel_in_another_folder(wheel, sdist, tmp_path):
    with tarfile.open(sdist) as archive:
        archive.extractall(tmp_path)
    (folder,) = tmp_path.iterdir()
    again = make_wheel(folder)
    assert again.name == wheel.name
    assert again.read_bytes() == wheel.read_bytes()


def environment(interpreter, folder, *options):
    """A fresh virtual environment's interpreter and the folder of its packages."""
    call(interpreter, "-m", "venv", *options, folder)
    (packages,) = folder.glob("lib/python*/site-packages")
    return folder / "bin" / "python", packages


@pytest.fixture
def developer(tmp_path):
    """A fresh environment that sees the system's build tools: its interpreter and its packages."""
    folder = tmp_path / "environment"
    return environment(sys.executable, folder, "--system-site-packages", "--without-pip")


def install(python, *what):
    call(python, "-m", "pip", "--quiet", "install", *OFFLINE, *what)


def test_wheel_works_in_every_interpreter(any_interpreter, wheel, display, tmp_path):
    python, _ = environment(any_interpreter, tmp_path)
    install(python, wheel)
    outcome = walk_through(python, path=[])
    reference = walk_through(sys.executable, path=[BUILD])
    assert nearly_equal(outcome, reference)


APPLICATION = {
    "pyproject.toml": """
        [build-system]
        requires = ["setuptools"]
        build-backend = "setuptools.build_meta"
        [project]
        name = "application"
        version = "1"
        [tool.setuptools]
        packages = ["tandrel", "tandrel.gui"]
        """,
    "tandrel/__init__.py": "",
    "tandrel/gui/__init__.py": "",
    "tandrel/sketch.py": "",
    "tandrel/gui/i18n.py": "N_ = tr = str\n",
    "tandrel/gui/widgets.py": "PAL = Form = Tooltip = num_text = px = units = None\n",
}


@pytest.fixture
def application(tmp_path):
    """The sources of an application with a package of its own."""
    folder = tmp_path / "application"
    for name, text in APPLICATION.items():
        file = folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text("\n".join(line.strip() for line in text.splitlines()))
    return folder


@pytest.mark.parametrize("order", ["application first", "module first"])
def test_it_joins_the_application_s_package(order, application, wheel, developer):
    python, packages = developer
    both = [application, wheel] if order == "application first" else [wheel, application]
    for what in both:
        install(python, what)
    code = "import tandrel.gui.sketcher as module; print(module.__file__)"
    assert Path(call(python, "-c", code).strip()).parent == packages / "tandrel" / "gui"
    call(python, "-m", "pip", "--quiet", "uninstall", "--yes", "tandrel-sketcher")
    assert call(python, "-c", "import tandrel.gui.widgets as w; print(w.PAL)") == "None\n"


def test_editable_installation_uses_the_sources(sources, wheel, developer):
    python, packages = developer
    install(python, "--editable", sources)
    outcome = walk_through(python, path=[])
    assert outcome["errors"] == []
    assert list((sources / "tandrel" / "gui").glob("*.so")) != []
    assert list(packages.glob("tandrel")) == []


def test_types_come_with_it(wheel, developer, tmp_path):
    python, _ = developer
    install(python, wheel)
    program = tmp_path / "program.py"
    program.write_text("from tandrel.gui import sketcher\nreveal_type(sketcher.SNAP_PX)\n")
    mypy = (sys.executable, "-m", "mypy", "--cache-dir", tmp_path / "cache")
    assert 'Revealed type is "builtins.int"' in call(
        *mypy, "--python-executable", python, program, folder=tmp_path
    )
