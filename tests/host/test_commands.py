"""The command line: the window on a file, and exports that need neither a display nor Tk."""

import os
import re
import shlex
import signal
import subprocess
import sys
import tkinter as tk

import ezdxf
import pytest
from harness import patience
from harness.patience import wait_for
from harness.places import HOST, SEARCH_PATH
from support.neighbours import circle
from support.shapes import document
from support.widgets import walk
from tandrel import exchange, storage
from tandrel._packages import how_to_get
from tandrel.application import commands
from tandrel.application.recovery import Recovery
from tandrel.application.settings import Settings
from tandrel.gui import i18n, theme, widgets

PARTS = HOST / "parts"


def environment(display_name=None):
    found = {**os.environ, "PYTHONPATH": os.pathsep.join(SEARCH_PATH), "LANGUAGE": "en"}
    found.pop("DISPLAY", None)
    if display_name is not None:
        found["DISPLAY"] = display_name
    return found


def run(*arguments, display_name=None, program=("-m", "tandrel")):
    return subprocess.run(
        [sys.executable, *program, *map(str, arguments)],
        env=environment(display_name),
        capture_output=True,
        text=True,
        timeout=60,
    )


def test_exporting_needs_no_tk(part, tmp_path):
    target = tmp_path / "flange.dxf"
    code = WITHOUT.format(names=["tkinter", "_tkinter"])
    ended = run("export", part, target, program=("-c", code))
    assert (ended.returncode, ended.stderr, ended.stdout) == (0, "", "")
    assert target.stat().st_size > 100


@pytest.mark.parametrize(
    "told, code", [("--unit=cm", 5), ("--unit=m", 6), ("--unit=in", 1), (None, 4)]
)
def test_the_export_has_the_unit_asked_for_or_millimetres(part, tmp_path, told, code):
    target = tmp_path / "flange.dxf"
    assert commands.main(["export", str(part), str(target), *filter(None, [told])]) == 0
    assert ezdxf.readfile(target).header["$INSUNITS"] == code


@pytest.mark.parametrize("options, parts, said", [([], 3, 0), (["--contours"], 4, 1)])
def test_overlapping_shapes_are_joined_unless_their_contours_are_asked_for(
    tmp_path, capsys, options, parts, said
):
    target = tmp_path / "spanner.dxf"
    assert commands.main(["export", str(PARTS / "spanner.json"), str(target), *options]) == 0
    assert len(ezdxf.readfile(target).modelspace()) == parts
    told = capsys.readouterr()
    assert (told.out, len(told.err.splitlines())) == ("", said)
    assert told.err.startswith("tandrel: Shapes that overlap" if said else "")


def test_a_drawing_is_exported_like_a_sketch(part, tmp_path, capsys):
    drawing, picture = tmp_path / "flange.DXF", tmp_path / "flange.svg"
    assert commands.main(["export", str(part), str(drawing), "--unit", "in"]) == 0
    content = ezdxf.readfile(drawing)
    content.modelspace().add_text("a note")
    content.saveas(drawing)
    assert commands.main(["export", str(drawing), str(picture)]) == 0
    assert capsys.readouterr().err == "tandrel: Left out (1): texts, near u = 0 mm, v = 0 mm\n"
    assert 'width="140mm"' in picture.read_text()


def test_a_drawing_is_not_exported_onto_itself(part, tmp_path, capsys):
    drawing, link = tmp_path / "flange.dxf", tmp_path / "link.dxf"
    assert commands.main(["export", str(part), str(drawing)]) == 0
    link.symlink_to(drawing)
    before = drawing.read_bytes()
    assert commands.main(["export", str(drawing), str(link), "--unit", "in"]) == 1
    assert capsys.readouterr().err.endswith("can't be written: this is the drawing that was read\n")
    assert drawing.read_bytes() == before


def test_a_drawing_without_units_is_exported_in_the_one_that_is_told(part, tmp_path, capsys):
    drawing, picture = tmp_path / "flange.dxf", tmp_path / "flange.svg"
    assert commands.main(["export", str(part), str(drawing)]) == 0
    content = ezdxf.readfile(drawing)
    content.header["$INSUNITS"] = 0
    content.saveas(drawing)
    assert commands.main(["export", str(drawing), str(picture)]) == 1
    told = capsys.readouterr().err
    assert told.count("\n") == 1 and told.endswith("; --drawing-unit answers that\n")
    assert commands.main(["export", str(drawing), str(picture), "--drawing-unit", "cm"]) == 0
    assert 'width="1400mm"' in picture.read_text()


@pytest.fixture
def framed(tmp_path):
    """A plate whose upper side is missing, a ring in it, and the frame of the sheet around them."""
    drawing = ezdxf.new("R2010", units=4)
    space = drawing.modelspace()
    frame = [(0, 0), (297, 0), (297, 210), (0, 210)]
    space.add_lwpolyline(frame, close=True, dxfattribs={"layer": "THE FRAME"})
    plate = [(50, 110), (50, 50), (150, 50), (150, 110)]
    space.add_lwpolyline(plate, dxfattribs={"layer": "PART"})
    for radius in (5, 2):
        space.add_circle((70, 70), radius, dxfattribs={"layer": "THE HOLES"})
    drawing.saveas(tmp_path / "framed.dxf")
    return tmp_path / "framed.dxf"


def test_what_a_drawing_leaves_open_is_answered_by_options(framed, tmp_path, capsys):
    target, options = tmp_path / "part.svg", []
    export = ["export", str(framed), str(target)]
    for asked, option in (
        ("a rectangle around everything else", ["--layer", "THE HOLES"]),
        ("the outline may be missing", ["--without-outline"]),
    ):
        assert commands.main([*export, *options]) == 1
        told = capsys.readouterr().err
        assert asked in told and told.count("\n") == 1
        assert told.endswith(f"; {shlex.join(option)} answers that\n")
        options += option
    assert commands.main([*export, *options]) == 0
    assert 'width="10mm"' in target.read_text()
    assert "Left out (1): contours on the layer THE FRAME" in capsys.readouterr().err
    assert commands.main([*export, *options, "--layer", "THE FRAME"]) == 0
    assert 'width="297mm"' in target.read_text()


def test_a_layer_that_is_not_in_the_drawing_is_named(framed, tmp_path, capsys):
    target = tmp_path / "part.svg"
    assert commands.main(["export", str(framed), str(target), "--layer", "HOLES"]) == 1
    told = capsys.readouterr().err
    assert "no contour lies on the layer HOLES; there are THE FRAME, THE HOLES\n" in told
    assert not target.exists()


def test_what_can_t_be_exported_is_said_on_one_line(part, tmp_path, capsys):
    damaged = tmp_path / "damaged.json"
    damaged.write_text('{\n"format": "other"}')
    empty = tmp_path / "empty.json"
    storage.write(empty, document(name=""))
    for source, name, at_fault in (
        (tmp_path / "missing.json", "a.dxf", "missing.json can't be opened"),
        (damaged, "a.dxf", "damaged.json can't be opened"),
        (empty, "a.dxf", "a.dxf can't be written"),
        (part, "a.step", "a.step can't be written"),
        (part, "no/folder/a.dxf", "no/folder/a.dxf can't be written"),
    ):
        target = tmp_path / name
        assert commands.main(["export", str(source), str(target)]) == 1
        said = capsys.readouterr()
        assert said.out == ""
        assert said.err.startswith(f"tandrel: {tmp_path / at_fault}: ")
        assert said.err.count("\n") == 1
        assert not target.exists()


@pytest.mark.parametrize(
    "arguments", [["a", "b"], ["export"], ["export", "a"], ["export", "a", "b", "--unit", "ell"]]
)
def test_a_wrong_command_line_is_answered_by_its_usage(arguments, capsys):
    with pytest.raises(SystemExit) as ended:
        commands.main(arguments)
    assert ended.value.code == 2
    assert capsys.readouterr().err.startswith("usage: tandrel")


@pytest.mark.parametrize("arguments, word", [(["--help"], "FILE"), (["export", "-h"], "TARGET")])
def test_the_command_line_explains_itself(arguments, word, capsys):
    with pytest.raises(SystemExit) as ended:
        commands.main(arguments)
    assert ended.value.code == 0
    assert word in capsys.readouterr().out


def test_it_tells_its_version(capsys):
    with pytest.raises(SystemExit) as ended:
        commands.main(["--version"])
    assert ended.value.code == 0
    project = (HOST.parent / "pyproject.toml").read_text()
    version = re.search(r'^version = "(.*)"', project, re.M)[1]
    assert capsys.readouterr().out == f"tandrel {version}\n"


@pytest.fixture
def in_pseudo(catalogues, monkeypatch):
    """The user has chosen the pseudo-language, whatever the environment says."""
    monkeypatch.setenv("TANDREL_PSEUDO", "1")
    monkeypatch.setenv("LANGUAGE", "de")
    Settings(Settings.load().folder, language="qps").save()


@pytest.mark.parametrize(
    "arguments",
    [
        ["--help"],
        ["export", "--help"],
        ["a", "b"],
        ["export"],
        ["export", "a"],
        ["export", "a", "b", "--unit", "ell"],
        ["export", "a", "b", "--unit"],
        ["export", "a", "b", "--contours=1"],
        ["export", "a.json", "b.dxf"],
    ],
)
def test_the_command_line_speaks_the_chosen_language(in_pseudo, arguments, capsys):
    try:
        commands.main(arguments)
    except SystemExit:
        pass
    said = "".join(capsys.readouterr())
    assert "[" in said
    names = (
        "tandrel|export|cm|mm|in|m|h|a|b|ell|unit|drawing-unit|layer|without|outline|contours|help"
        "|version|dxf|svg|png"
    )
    plain = re.findall(rf"(?<![\w~])(?!(?:{names})\b)[A-Za-z]+(?!\w)", said)
    assert [word for word in plain if word not in ("json",)] == []


WITHOUT = """
import sys
for name in {names!r}:
    sys.modules[name] = None
sys.argv = ["tandrel", *sys.argv[1:]]
from tandrel.application.commands import main
sys.exit(main())
"""


@pytest.mark.parametrize(
    "missing, arguments, told",
    [
        ("shapely", ["export", "a.json", "b.dxf"], "apt install python3-shapely or python3 -m pip"),
        ("ezdxf", ["export", "{part}", "{tmp}/b.dxf"], "apt install python3-ezdxf"),
        ("tkinter", ["{part}"], "apt install python3-tk"),
    ],
)
def test_a_package_that_is_missing_is_said_on_one_line(part, tmp_path, missing, arguments, told):
    arguments = [argument.format(part=part, tmp=tmp_path) for argument in arguments]
    ended = run(*arguments, program=("-c", WITHOUT.format(names=[missing])))
    assert (ended.returncode, ended.stdout) == (1, "")
    assert told in ended.stderr and ended.stderr.count("\n") == 1
    assert f"{missing} is missing" in ended.stderr


@pytest.mark.parametrize(
    "name, told",
    [
        ("numpy.linalg", "numpy is missing, get it by: sudo apt install python3-numpy or "),
        ("PIL", "PIL is missing, get it by: sudo apt install python3-pil or python3 -m pip "),
        ("svgelements", "svgelements is missing, get it by: sudo apt install python3-svgelements"),
        ("_tkinter", "tkinter is missing, get it by: sudo apt install python3-tk"),
        ("tandrel.gui.sketcher", "the sketch editor tandrel.gui.sketcher isn't built"),
        ("tandrel.gone", "None"),
        (None, "None"),
    ],
)
def test_what_is_missing_is_told_by_name(name, told):
    assert str(how_to_get(ModuleNotFoundError(name=name))).startswith(told)


def test_help_needs_no_package():
    code = WITHOUT.format(names=["numpy", "shapely", "ezdxf", "PIL", "tkinter"])
    assert run("--help", program=("-c", code)).returncode == 0


def test_without_a_display_it_says_so(part):
    ended = run(part, display_name="")
    assert ended.returncode == 1
    assert ended.stderr.startswith("tandrel: no window can be opened: ")
    assert ended.stderr.count("\n") == 1


@pytest.fixture
def opened(monkeypatch, display):
    """opened(arguments): the window that the program opens, which ends with the test."""
    windows = []
    monkeypatch.setattr(tk.Tk, "mainloop", lambda window: windows.append(window))
    monkeypatch.setenv("LANGUAGE", "en")

    def open_window(*arguments):
        assert commands.main(list(map(str, arguments))) == 0
        return windows[-1]

    yield open_window
    for window in windows:
        window.destroy()


def test_the_program_opens_the_file_it_is_given(opened, part):
    assert opened(part).title() == "Mounting flange – tandrel"


def test_a_drawing_has_the_unit_asked_for(opened, tmp_path):
    drawing = tmp_path / "part.dxf"
    exchange.export(document(circle(r=0.01)), drawing)
    window = opened("--unit", "in", drawing)
    labels = [widget for widget in walk(window) if widget.winfo_class() == "TLabel"]
    assert "508 mm × 508 mm" in [label.cget("text") for label in labels]


def test_without_a_file_it_begins_a_new_part(opened):
    assert opened().title() == "Untitled – tandrel"


def test_the_program_remembers_what_was_chosen(opened, catalogues):
    Settings(Settings.load().folder, units="in", language="de", palette="dark").save()
    window = opened()
    assert widgets.units().name == "in"
    assert i18n.language() == "de"
    assert theme.PAL == theme.PALETTES["dark"]
    assert window.cget("background") == theme.PAL["window"]


def test_a_language_that_has_gone_is_no_reason_to_stop(opened):
    Settings(Settings.load().folder, language="xx").save()
    assert opened().title() == "Untitled – tandrel"
    assert i18n.language() == "en"


def test_lost_work_is_offered_at_the_start(opened, part):
    recovery = Recovery()
    recovery.keep(storage.read(part), str(part))
    # The lock goes with its program; here the program goes on.
    os.close(recovery._claim._handle)
    window = opened()
    asked, above = [], []

    def look():
        asked.extend(w for w in window.winfo_children() if isinstance(w, tk.Toplevel))
        if asked:
            above.append(window.winfo_viewable())
        (asked[0] if asked else window).after(5, asked[0].close if asked else look)

    window.after(5, look)
    while not asked or asked[0].winfo_exists():
        window.update()
    assert above == [1], "the question stood alone on the screen"
    assert len(list(recovery.folder.glob("*.sketch"))) == 1


@pytest.fixture
def importing(display, part, tmp_path):
    """importing(before): the program with unsaved work, as an import is; before() at its start."""
    started = []
    target = tmp_path / "flange.dxf"
    assert commands.main(["export", str(part), str(target)]) == 0

    def start(before):
        program = subprocess.Popen(
            [sys.executable, "-m", "tandrel", target],
            env=environment(display),
            stderr=subprocess.PIPE,
            text=True,
            preexec_fn=before,
        )
        started.append(program)
        wait_for(
            lambda: list(Recovery().folder.glob("*.sketch")) or program.poll() is not None,
            "unsaved work, or an end",
        )
        assert program.poll() is None
        return program

    yield start
    for program in started:
        program.kill()
        program.wait()


def test_ctrl_c_in_the_terminal_ends_the_program_and_keeps_the_work(importing):
    program = importing(lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
    program.send_signal(signal.SIGINT)
    assert program.communicate(timeout=patience.SECONDS)[1] == ""
    assert program.returncode == -signal.SIGINT
    (lost,) = Recovery().found()
    assert lost.document.name == "flange"


def test_a_program_that_ignores_ctrl_c_goes_on(importing):
    program = importing(lambda: signal.signal(signal.SIGINT, signal.SIG_IGN))
    program.send_signal(signal.SIGINT)
    with pytest.raises(subprocess.TimeoutExpired):
        program.wait(1)
