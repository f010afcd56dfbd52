"""The kinds of shapes: a module for each, which the rest of the application learns it from."""

import pkgutil
import subprocess
import sys
import textwrap

from tandrel import geometry


def run(code):
    """Run Python in a process of its own, which finds what this one does."""
    path = [folder for folder in sys.path if folder]
    code = f"import sys; sys.path[:] = {path!r}\n{textwrap.dedent(code)}"
    subprocess.run([sys.executable, "-W", "error", "-c", code], check=True)


def test_geometry_knows_no_gui():
    for module in pkgutil.iter_modules(geometry.__path__):
        run(f"sys.modules['tandrel.gui'] = None; import tandrel.geometry.{module.name}")


def test_a_kind_that_is_registered_is_known_everywhere():
    run(
        """
        import math
        from tandrel import kinds
        from tandrel.geometry.edges import arc
        from tandrel.kinds.fields import Number
        from tandrel.kinds.kind import Drawing, Guess, Kind

        def drawing(x, r):
            right, left = arc((x, 0.0), r, -90.0, 180.0), arc((x, 0.0), 2 * r, 90.0, 180.0)
            return Drawing([], [right, left])

        def guesses(contour, tolerance):
            if {round(abs(edge.bulge), 9) for edge in contour} == {0.0, 1.0}:
                middle, r = contour[0].beside(0.0), min(e.chord for e in contour if e.bulge) / 2
                yield Guess({"type": "egg", "x": sum(middle), "r": r}, None)

        fields = {"x": Number("Egg place"), "r": Number("Egg radius")}
        kinds.KINDS["egg"] = Kind("egg", "Egg", fields, drawing, guesses)

        from tandrel import exchange, profile, sketch, storage
        from tandrel.exchange import dxf, importing, png, svg
        from tandrel.progress import no_tick

        egg = {"type": "egg", "x": 1.0, "r": 0.5}
        hole = {"type": "circle", "xc": 1.0, "yc": 0.0, "r": 0.1}
        whole = {"plane": "XY", "offset": 0.0, "entities": [egg, hole]}
        assert math.isclose(sketch.area(egg), math.pi / 2 * (0.25 + 1.0))
        assert sketch.depths(whole) == [0, 1] and sketch.check(whole) == []
        assert sketch.check({"entities": [{**egg, "r": "?"}]}) == [
            "Shape 1 (Egg): Egg radius: not a number"
        ]
        document = storage.Document("egg", whole)
        assert storage.loads(storage.dumps(document)) == document
        assert [round(c, 9) for c in profile.box(whole)] == [0.0, -1.0, 1.5, 1.0]
        drawing = dxf.read(dxf.written(document, "mm", no_tick), no_tick)
        back, _ = importing.sketched(drawing, {}, no_tick)
        assert back["entities"][0]["type"] == "egg"
        assert svg.written(document, "mm", no_tick) and png.written(document, "mm", no_tick)
        """
    )
