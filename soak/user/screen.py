"""What a dialog shows, read in one call: canvas, list, form, status line and what is typed."""

from typing import Any, NamedTuple

# Everything goes back as text but coordinates, which Tcl hands over as the doubles they are.
SCRIPT = """
namespace eval soak {
    proc items {c} {
        set items {}
        foreach i [$c find all] {
            set item [list [$c type $i] [$c coords $i]]
            switch [lindex $item 0] {
                line { set options {-fill -width -dash} }
                polygon { set options {-fill -outline -width -dash} }
                text { set options {-text -fill -anchor} }
                default { set options {-fill -outline -width} }
            }
            foreach option $options { lappend item [$c itemcget $i $option] }
            lappend items $item
        }
        return $items
    }
    proc rows {list} {
        set rows {}
        foreach row [$list children {}] {
            set values [$list item $row -values]
            lappend rows [list $row [$list item $row -text] [lindex $values 0] [llength $values]]
        }
        return $rows
    }
    proc form {w} {
        set cells {}
        foreach child [winfo children $w] {
            set class [winfo class $child]
            switch $class {
                TFrame { lappend cells {*}[form $child] }
                TEntry { lappend cells [list $class [$child get]] }
                Text { lappend cells [list $class [$child get 1.0 end-1c]] }
                default { lappend cells [list $class [$child cget -text]] }
            }
        }
        return $cells
    }
    proc show {canvas list props status args} {
        set typed {}
        foreach name $args { lappend typed [set ::$name] }
        list [items $canvas] [rows $list] [$list selection] [form $props] $typed \\
            [$status cget -text]
    }
    # Options of items that differ from their defaults and that no item of the picture has.
    proc strays {c} {
        set strays {}
        foreach i [$c find all] {
            foreach option [$c itemconfigure $i] {
                lassign $option name - - default value
                if {$value != $default && $name ni {-fill -width -dash -outline -text -anchor}
                        && "$name $value" ne "-tags current"} { lappend strays "$name $value" }
            }
        }
        return $strays
    }
}
"""


# Its kind, its coordinates and those of its options that the editor sets, all as Tk reports them.
Item = tuple[Any, ...]
Dash = tuple[int, ...]


class Screen(NamedTuple):
    """Texts as they are shown; items of the canvas, the lowest first."""

    items: list[Item]
    rows: list[tuple[str, str, str]]
    selected_rows: list[str]
    form: list[list[str]]
    typed: list[str]
    status: str


class Paper:
    """What stands for a window's canvas: it keeps the items as they are read of a real one."""

    def __init__(self, window: Any) -> None:
        self.items: list[Item] = []
        self._window = window

    def winfo_width(self) -> int:
        return self._window.size()[0]

    def winfo_height(self) -> int:
        return self._window.size()[1]

    def delete(self, _all: str) -> None:
        self.items = []

    def create_line(self, *at: float, fill: str, width: int = 1, dash: Dash = ()) -> None:
        self.items.append(("line", at, fill, f"{width}.0", dashes(dash)))

    def create_polygon(
        self, *at: float, fill: str, outline: str, width: int, dash: Dash = ()
    ) -> None:
        self.items.append(("polygon", at, fill, outline, f"{width}.0", dashes(dash)))

    def create_text(self, *at: float, text: str, fill: str, anchor: str = "center") -> None:
        self.items.append(("text", at, text, fill, anchor))

    def create_oval(self, *at: float, fill: str, outline: str) -> None:
        self.items.append(("oval", at, fill, outline, "1.0"))


def dashes(dash: Dash) -> str:
    return " ".join(map(str, dash))


class Eye:
    """Reads an editor's window."""

    def __init__(self, editor: Any) -> None:
        self._tk = editor.tk
        self._tk.eval(SCRIPT)
        shown = [editor.canvas, editor.list, editor.props, editor.status]
        typed = [editor.tool, editor.snap, editor.grid, editor.sides, editor.plane, editor.offset]
        self._names = [str(named) for named in shown + typed]
        self._canvas = str(editor.canvas)

    def read(self) -> Screen:
        shown = self._tk.call("soak::show", *self._names)
        # An empty list may come as any empty object.
        items, rows, selection, form, typed = map(self._tk.splitlist, shown[:-1])
        return Screen(
            list(items),
            [(str(iid), str(text), str(size)) for iid, text, size, count in rows if count == 1],
            list(map(str, selection)),
            [[str(kind), str(text)] for kind, text in form],
            list(map(str, typed)),
            str(shown[-1]),
        )

    def strays(self) -> str:
        """Options that no item should have."""
        return str(self._tk.call("soak::strays", self._canvas))
