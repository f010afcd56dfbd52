"""What a real Tk canvas shows, read back item by item."""

from typing import NamedTuple


class Item(NamedTuple):
    """One canvas item: its kind, its coordinates and all its options, the unset ones too."""

    kind: str
    coords: tuple
    options: dict

    def has(self, **options):
        """Whether these options have these values, as Tk writes them."""
        return all(self.options[name] == str(value) for name, value in options.items())


def items(canvas):
    """All items of the canvas, the lowest first."""
    return [read_item(canvas, number) for number in canvas.find_all()]


def read_item(canvas, number):
    options = {name: str(spec[-1]) for name, spec in canvas.itemconfigure(number).items()}
    return Item(canvas.type(number), tuple(canvas.coords(number)), options)


def of_kind(canvas, kind, **options):
    """The items of one kind that have these option values, the lowest first."""
    return [item for item in items(canvas) if item.kind == kind and item.has(**options)]


def shapes(canvas):
    """The filled polygons: the shapes of the sketch, in painting order."""
    return [item for item in of_kind(canvas, "polygon") if item.options["fill"]]
