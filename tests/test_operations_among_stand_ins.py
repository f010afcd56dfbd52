"""Each operation of an editor made of stand-ins, call by call."""


import numpy as np
import pytest
from support.neighbours import circle, polygon, rectangle, regular, slot
from support.plain import Event, Var
from support.stand_ins import Child, Stage, call, line, lines

AXIS_1, AXIS_2, ORANGE = "#D2504B", "#3E9B5B", "#E8833A"


@pytest.fixture
def stage(monkeypatch, sketcher):
    stage = Stage()
    stage.replace(monkeypatch, sketcher)
    return stage


def grid_line(*ends):
    return call("canvas.create_line", *ends, fill="the bg")


# 40 x 30 pixels, 10 pixels to the unit, a grid of a unit, the origin in the middle.
BACKGROUND = [
    call("canvas.delete", "all"),
    *(grid_line(x, 0, x, 30) for x in (0.0, 10.0, 20.0, 30.0, 40.0)),
    *(grid_line(0, y, 40, y) for y in (35.0, 25.0, 15.0, 5.0)),
    call("canvas.create_line", 0, 15.0, 40, 15.0, fill=AXIS_1, dash=(4, 3)),
    call("canvas.create_line", 20.0, 0, 20.0, 30, fill=AXIS_2, dash=(4, 3)),
    call("canvas.create_text", 34, 11.0, text="x", anchor="se", fill=AXIS_1),
    call("canvas.create_text", 24.0, 6, text="y", anchor="nw", fill=AXIS_2),
]


def repainting(stage, *entities, **attributes):
    return stage.editor(entities, scale=10.0, grid=Var("1000"), **attributes)


# --- the picture


def test_repaint_of_shapes_references_and_what_is_being_drawn(stage):
    hole = rectangle(-0.5, -0.5, 1.0, 1.0)
    editor = repainting(stage, hole, rectangle(-1.0, -1.0, 2.0, 2.0), sel=1, dim=2)
    editor.refs = [("edge", np.array([[0.0, 0.0], [1.0, 0.5]])), ("point", np.zeros((1, 2)))]
    editor.tool.set("line")
    editor.clicks = [np.array([1.0, 1.0])]
    editor.cursor = np.array([2.0, 0.0])
    editor.redraw()
    shapes = lines(
        f"""
canvas.create_line(20.0, 15.0, 30.0, 10.0, 20.0, 15.0, fill='the muted', dash=(2, 3))
canvas.create_polygon(10.0, 25.0, 30.0, 25.0, 30.0, 5.0, 10.0, 5.0,
    fill='the accent_soft', outline='{ORANGE}', width=3)
canvas.create_text(20.0, 37.0, text='2000 mm', fill='{ORANGE}')
canvas.create_text(36.0, 15.0, text='2000 mm', fill='{ORANGE}', anchor='w')
canvas.create_polygon(15.0, 20.0, 25.0, 20.0, 25.0, 10.0, 15.0, 10.0,
    fill='the panel', outline='the accent', width=2)
canvas.create_line(30.0, 5.0, 40.0, 15.0, fill='{ORANGE}', width=2)
canvas.create_oval(27.0, 2.0, 33.0, 8.0, outline='{ORANGE}')
canvas.create_oval(38.0, 13.0, 42.0, 17.0, fill='{ORANGE}', outline='')
"""
    )
    assert [line(entry) for entry in stage.recorded()] == [*map(line, BACKGROUND), *shapes]


@pytest.mark.parametrize("count", [5_000, 50_000])
def test_as_many_grid_lines_as_the_visible_box_holds(stage, count):
    editor = repainting(stage)
    editor.to_world = lambda x, y: np.array([x / 40 * (count - 0.5), 0.5 - y / 300])
    editor.redraw()
    drawn = [entry for entry in stage.recorded() if entry[2] == {"fill": "the bg"}]
    assert len(drawn) == count + 1


# --- the list and the form


def test_form_of_an_outline_call_by_call(stage):
    editor = stage.editor([polygon((0.0, 0.0), (3.0, 0.0), (0.0, 2.5), radius=0.5)], sel=0)
    editor.props.answers["winfo_children"] = [Child(stage, "old1"), Child(stage, "old2")]
    editor.show_props()
    commands, handlers = stage.commands(), stage.handlers()
    assert commands["<Apply>"] == editor.apply_props
    assert [line(entry) for entry in stage.recorded()] == lines(
        r"""
old1.destroy()
old2.destroy()
Form('props', label_width=14)
Form1.pack()
StringVar(value='number 500')
Form1.entry('<Corner radius (0 = sharp)>', 'StringVar1', 'mm', width=10)
Entry1.bind('<Return>', 'handler')
Form1.note('<Corners (u v, one pair per line):>')
Text('props', height=6, width=28)
Text1.insert('1.0', 'number 0 number 0\nnumber 3000 number 0\nnumber 0 number 2500')
Text1.pack(fill='x')
ttk.Button('props', text='<Apply>', command='editor.apply_props')
Button1.pack(anchor='e', pady=(6, 0))
"""
    )
    calls = editor.watch("apply_props")
    handlers["Entry1", "<Return>"](None)
    assert calls == [("apply_props", (), {})]
    with pytest.raises(TypeError):
        handlers["Entry1", "<Return>"]()


@pytest.mark.parametrize("sel", [None, 1, 5])
def test_form_of_nothing(stage, sel):
    editor = stage.editor([circle()], sel=sel)
    editor.show_props()
    assert not {"vars", "points_text"} & set(vars(editor))
    hint = "<Select a shape to type its exact size.>"
    assert stage.recorded() == [
        call("ttk.Label", "props", text=hint, style="Muted.TLabel", wraplength=("px", 260)),
        call("Label1.pack", anchor="w"),
    ]


# --- the pointer


@pytest.mark.parametrize("made", [None, {"type": "circle"}])
def test_release_of_a_drag_that_gave_no_shape(stage, made):
    editor = stage.editor(drag={"kind": "new", "start": np.zeros(2)})
    editor._from_drag = lambda a, b: made
    tested = []
    editor._ok = lambda e: tested.append(e) or e is None
    calls = editor.watch("add", "redraw")
    editor._release(Event(5, 5))
    assert tested == ([] if made is None else [made])
    assert calls == [("redraw", (), {})]
    assert editor.drag is None


# --- the interpreter's own arithmetic and texts


class Piece:
    """Shows itself in a text in its own way, and in no other."""

    def __init__(self, text):
        self.text = text

    def __format__(self, how):
        assert how == ""
        return self.text

    __str__ = None


PIECES = [(5, "5"), (2.5, "2.5"), (None, "None"), (Piece("a piece"), "a piece")]


@pytest.mark.parametrize("piece, text", PIECES)
def test_texts_from_pieces_of_any_type(stage, monkeypatch, sketcher, piece, text):
    stage.units.answers["fmt"] = lambda value, quantity: piece
    assert sketcher.describe(rectangle()) == f"{text} x {text}"
    assert sketcher.describe(slot()) == f"{text} x {text}"
    assert sketcher.describe(circle()) == f"<diameter {text}>"
    assert sketcher.describe(regular()) == f"<6 sides, {text} across corners>"
    monkeypatch.setattr(stage.S, "AXES", {"XY": (piece, piece)})
    editor = stage.editor([rectangle()], sel=0)
    editor.watch("redraw")
    monkeypatch.setattr(sketcher, "tr", lambda source: piece)
    editor._motion(Event(20, 15))
    editor.refresh_list(keep=True)
    editor._dimensions(circle())
    editor.sk["entities"] = [polygon()]
    monkeypatch.setattr(sketcher, "tr", stage.tr)
    monkeypatch.setattr(sketcher, "num_text", lambda value: piece)
    editor.show_props()
    record = stage.recorded()
    assert call("status.configure", text=f"{text} = {text}   {text} = {text}     {text}") in record
    (row,) = [entry for entry in record if entry[0] == "list.insert"]
    assert row[2]["text"] == f"1. {text}"
    assert call("canvas.create_text", 20.0, 15.0, text=f"Ø {text}", fill=ORANGE) in record
    assert call("Text1.insert", "1.0", "\n".join([f"{text} {text}"] * 3)) in record


def test_a_text_is_asked_for_before_the_lengths_in_it(stage, monkeypatch, sketcher):
    asked = []
    monkeypatch.setattr(sketcher, "tr", lambda text: asked.append(text) or text)
    stage.units.answers["fmt"] = lambda value, quantity: asked.append(value) or "5"
    sketcher.describe(circle(r=2.0))
    sketcher.describe(regular(r=3.0))
    assert asked == ["diameter {d}", 4.0, "{n} sides, {d} across corners", 6.0]
