"""Exports from the application's window: what is written, and what the user is told."""

import ezdxf
import pytest
from support.application import choose, state
from support.neighbours import circle
from tandrel import exchange


def test_a_profile_is_exported_in_the_units_of_the_moment(start, part, tmp_path, picks):
    app = start(part)
    choose(app.menus["units"], "Inches (in)")
    target = tmp_path / "out.dxf"
    asked = picks(target)
    app.perform("export")
    assert asked[0]["initialfile"] == "flange"
    assert len(asked[0]["filetypes"]) == len(exchange.SUFFIXES)
    assert ezdxf.readfile(target).header["$INSUNITS"] == 1
    assert app.message.cget("text") == f"Exported: {target}"
    assert not app.session.dirty


def test_an_export_that_fails_says_why(start, part, tmp_path, picks):
    app = start(part)
    for target, why in (
        (tmp_path / "no" / "out.dxf", "No such file or directory"),
        (tmp_path / "out.step", ".step is no kind of file"),
    ):
        picks(target)
        app.perform("export")
        told, advice = app.message.cget("text").splitlines()
        assert told.startswith(f"{target.name} isn't exported: {why}")
        assert advice == "Choose another name or place."
        assert not target.exists()


@pytest.mark.parametrize("operation, contours", [("export", 1), ("export_contours", 2)])
def test_a_drawing_holds_the_profile_or_the_contours_as_they_are(
    start, part_of, tmp_path, picks, operation, contours
):
    app = start(part_of(circle(r=0.01), circle(xc=0.01, r=0.01)))
    target = tmp_path / "out.dxf"
    asked = picks(target)
    app.perform(operation)
    assert len(exchange.import_(target).document.sketch["entities"]) == contours
    assert len(asked[0]["filetypes"]) == (1 if contours == 2 else len(exchange.SUFFIXES))
    notes = app.message.cget("text").splitlines()[1:]
    assert [note[:2] for note in notes] == ["• "] * (contours - 1)


def test_all_that_must_be_put_right_is_listed(start, part_of, tmp_path, picks):
    path = part_of(circle(r=0.01), circle(r=-1.0), circle(r=-2.0))
    app = start(path)
    for heading in (str(path), "out.dxf isn't exported:"):
        told = app.message.cget("text").splitlines()
        assert told[0] == heading
        assert [line[:9] for line in told[1:3]] == ["• Shape 2", "• Shape 3"]
        assert told[3] == "“Edit sketch…” lets you mend that."
        picks(tmp_path / "out.dxf")
        app.perform("export")


def test_an_empty_sketch_has_nothing_to_export(start, picks):
    app = start()
    asked = picks("")
    app.perform("export")
    assert asked == []
    assert state(app.menus["file"], "Export…") == "disabled"
