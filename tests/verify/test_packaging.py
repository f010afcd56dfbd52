"""The wheel and the source archive: what is in them, that they are always the same, what they say
of themselves, and that the wheel works where it is installed."""

import os
import platform
import re
import shutil
import subprocess
import sys
import tarfile
import zipfile
from pathlib import Path

import pytest
from harness.places import BUILD, ROOT
from support.interpreters import nearly_equal, walk_through

MADE = ".git* build __pycache__ .*_cache .hypothesis *.egg-info *.pyc *.so *-INFO setup.cfg".split()
VERSION = re.search(r'^version = "(.*)"', (ROOT / "pyproject.toml").read_text(), re.M)[1]
OFFLINE = ("--no-build-isolation", "--no-deps", "--no-index", "--disable-pip-version-check")

pytestmark = pytest.mark.skipif(BUILD != ROOT / "build", reason="the wheel is made anew")


def ended(*command, folder=None, **variables):
    environment = {**os.environ, "PIP_ROOT_USER_ACTION": "ignore", **variables}
    environment.pop("PYTHONPATH", None)
    return subprocess.run(
        list(map(str, command)), cwd=folder, env=environment, capture_output=True, text=True
    )


def call(*command, folder=None):
    process = ended(*command, folder=folder)
    assert process.returncode == 0, process.stdout + process.stderr
    return process.stdout


def wheel_command(folder):
    return (
        sys.executable,
        "-m",
        "pip",
        "--quiet",
        "wheel",
        *OFFLINE,
        "--wheel-dir",
        folder / "made",
        ".",
    )


def make_wheel(folder):
    call(*wheel_command(folder), folder=folder)
    (wheel,) = (folder / "made").glob("*.whl")
    return wheel


@pytest.fixture(scope="module")
def sources(tmp_path_factory):
    """A copy of the tree, without what was made in it."""
    folder = tmp_path_factory.mktemp("of") / "sources"
    return shutil.copytree(ROOT, folder, ignore=shutil.ignore_patterns(*MADE))


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


def test_tag_is_true_of_the_module(wheel, tmp_path):
    with zipfile.ZipFile(wheel) as archive:
        module = archive.extract("tandrel/gui/sketcher.abi3.so", tmp_path)
    printed = call("readelf", "--version-info", "--wide", module)
    newest = {}
    for library, version in re.findall(r"Name: ([A-Z]+)_([\d.]+) ", printed):
        numbers = tuple(map(int, version.split(".")))
        newest[library] = max(newest.get(library, ()), numbers)
    there = {"GLIBC": (2, 28), "GLIBCXX": (3, 4, 25), "CXXABI": (1, 3, 11), "GCC": (8, 0)}
    tag = wheel.stem.split("-")[-1]
    newer_than_releases_are_made_on = platform.libc_ver() > ("glibc", "2.36")
    if newer_than_releases_are_made_on and tag == f"linux_{platform.machine()}":
        assert any(newest[library] > there[library] for library in newest)
    else:
        assert tag == f"manylinux_2_28_{platform.machine()}"
        assert all(newest[library] <= there[library] for library in newest), newest


@pytest.fixture(scope="module")
def unpacked(sdist, tmp_path_factory):
    """The folder that the source archive unpacks to."""
    folder = tmp_path_factory.mktemp("unpacked")
    with tarfile.open(sdist) as archive:
        archive.extractall(folder)
    return folder / sdist.name[: -len(".tar.gz")]


def test_source_archive_holds_all_sources(sources, sdist, unpacked):
    assert sdist.name == f"tandrel_sketcher-{VERSION}.tar.gz"
    names = [file.relative_to(ROOT) for file in files_below(ROOT)]
    assert len(names) > 200
    for name in names:
        assert (unpacked / name).read_bytes() == (ROOT / name).read_bytes()
        assert os.access(unpacked / name, os.X_OK) == os.access(ROOT / name, os.X_OK)


def files_below(folder):
    """What was not made in the folder."""
    for file in folder.iterdir():
        if any(file.match(pattern) for pattern in MADE):
            continue
        if file.is_dir():
            yield from files_below(file)
        else:
            yield file


def test_descriptions_are_sound(wheel, sdist):
    checked = call(sys.executable, "-m", "twine", "check", "--strict", wheel, sdist)
    assert checked.count("PASSED") == 2


def test_description_leads_nowhere_that_is_not_there(wheel):
    with zipfile.ZipFile(wheel) as archive:
        (name,) = [name for name in archive.namelist() if name.endswith("/METADATA")]
        description = archive.read(name).decode().partition("\n\n")[2]
    assert "manual for the application's\nprogrammer has the whole contract" in description
    assert re.findall(r"!\[.*|\]\((?!https?:).*", description) == []


def test_what_is_missing_is_said(sources, tmp_path):
    failed = ended(*wheel_command(tmp_path), folder=sources, PATH=str(tmp_path))
    assert failed.returncode == 1
    assert "CMake is missing: `pip install cmake`, or the package cmake." in failed.stderr


def test_source_archive_makes_the_same_wheel_in_another_folder(wheel, unpacked):
    folder = unpacked
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
