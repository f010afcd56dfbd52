"""Finding and reading the widgets of a window."""


def walk(widget):
    """The widget and everything in it, each before its children, children as they were made."""
    yield widget
    for child in widget.winfo_children():
        yield from walk(child)


def button(window, text):
    """The only widget in the window that can be invoked and shows this text."""
    (found,) = [
        widget
        for widget in walk(window)
        if hasattr(widget, "invoke") and "text" in widget.keys() and widget.cget("text") == text
    ]
    return found


def tcl_state(root):
    """What a dialog might leave behind: the commands and global variables of the interpreter."""
    return tuple(set(root.tk.eval(f"info {kind}").split()) for kind in ("commands", "globals"))
