"""The main window: one part's profile, and what can be done with it."""

from __future__ import annotations

import os
import re
import tkinter as tk
from collections.abc import Callable, Iterable
from tkinter import ttk
from typing import Any, Optional, cast

import numpy as np

from tandrel import exchange, files
from tandrel import sketch as S
from tandrel import storage
from tandrel.application import file_dialogs, importing, menus, progress, questions
from tandrel.application.editor import Editor
from tandrel.application.measuring import Measured, facts, measure
from tandrel.application.messages import MessageArea, unopened
from tandrel.application.names import short
from tandrel.application.recovery import Found
from tandrel.application.session import Session
from tandrel.application.settings import Settings
from tandrel.exchange import ExchangeError, NotReady, Question
from tandrel.gui import i18n, theme
from tandrel.gui.i18n import N_, tr
from tandrel.gui.profile_view import ProfileView
from tandrel.gui.widgets import SYSTEMS, px, room, set_units, units
from tandrel.progress import Stopped, Tick
from tandrel.storage import SketchFileError

_EMPTY = N_("Nothing is drawn yet. Press “Edit sketch…” to draw the part, or open a file (Ctrl+O).")
_STOPPED = N_("The profile isn't drawn: it was stopped.")
_UNFIT = N_("None of the shapes can be drawn.")
_MEND = N_("“Edit sketch…” lets you mend that.")
_LONGEST_NAME = 60
# In nominal pixels.
_SMALLEST = 560, 420
_USUAL = 760, 640


class App:
    """The main window on a session. Messages appear in the window, where they stop nobody.

    Operations are called by name through `perform`, one at a time: while one asks, works or has the
    editor open, keys and frame buttons that reach the window do nothing.
    """

    def __init__(
        self,
        root: tk.Tk,
        session: Session,
        settings: Settings,
        path: Optional[str] = None,
        found: Iterable[Found] = (),
        unit: Optional[str] = None,
    ) -> None:
        self.root = root
        self.session = session
        self.settings = settings
        self.measured = measure(session.document.sketch)
        self._busy = False
        self.unit_choice = tk.StringVar(root, units().name)
        self.language_choice = tk.StringVar(root, i18n.language())
        self.palette_choice = tk.StringVar(root, settings.palette)
        root.minsize(*map(px, _SMALLEST))
        self._restore_size()
        root.protocol("WM_DELETE_WINDOW", lambda: self.perform("quit"))
        menus.bind_keys(root, self.perform)
        self._hook_errors()
        self.build()
        if path is not None:
            self.open(path, unit)
        found = list(found)
        if found:
            # Not when idle: a window appears after what waits for that.
            root.after(1, self._one_at_a_time, lambda: self.offer(found))

    # How the window is made and what it shows.

    def build(self) -> None:
        """Make the window's content anew, in the language of the moment."""
        for child in self.root.winfo_children():
            child.destroy()
        file_dialogs.translate(self.root, i18n.language())
        self.menus = menus.Menus(self.root, self.perform)
        unit_labels = {name: tr(menus.UNITS[name]) for name in SYSTEMS}
        self.menus.offer("units", unit_labels, self.unit_choice, "change_units")
        self.menus.offer("language", i18n.languages(), self.language_choice, "change_language")
        palettes = {name: tr(label) for name, label in menus.PALETTES.items()}
        self.menus.offer("palette", palettes, self.palette_choice, "change_palette")
        outer = ttk.Frame(self.root, style="Panel.TFrame", padding=px(12))
        outer.pack(fill="both", expand=True)
        self.name = ttk.Label(outer, style="Title.TLabel")
        self.name.pack(anchor="w")
        row = ttk.Frame(outer, style="Panel.TFrame")
        row.pack(fill="x", pady=(px(2), px(10)))
        self.size, self.area, self.contours = (
            ttk.Label(row, style="Muted.TLabel") for _ in range(3)
        )
        for label in (self.size, self.area, self.contours):
            label.pack(side="left", padx=(0, px(20)))
        foot = ttk.Frame(outer, style="Panel.TFrame")
        foot.pack(side="bottom", fill="x", pady=(px(10), 0))
        self.edit_button = ttk.Button(
            foot,
            text=tr("Edit sketch…"),
            style="Primary.TButton",
            command=lambda: self.perform("edit"),
        )
        self.edit_button.pack(side="right", padx=(px(12), 0))
        fit = ttk.Button(foot, text=tr("Fit"), command=lambda: self.perform("fit"))
        fit.pack(side="right", padx=(px(12), 0))
        self.messages = MessageArea(foot)
        self.messages.pack(side="left", fill="x", expand=True)
        self.message = self.messages.label
        self.view = ProfileView(outer)
        self.view.pack(fill="both", expand=True)
        self.edit_button.focus_set()
        self.refresh()

    def refresh(self) -> None:
        """Show the document, in the units of the moment."""
        session, measured = self.session, self.measured
        is_empty = not session.document.sketch["entities"]
        instead = _EMPTY if is_empty else _STOPPED if measured.contours is None else _UNFIT
        self.view.show(measured.contours or [], measured.size, tr(instead))
        for label, text in zip((self.size, self.area, self.contours), facts(measured)):
            label.configure(text=text)
        name = self._title()
        self.name.configure(text=name)
        self.root.title(f"{'• ' if session.dirty else ''}{name} – tandrel")
        self.menus.enable("undo", session.can_undo)
        self.menus.enable("redo", session.can_redo)
        self.menus.enable("save", session.dirty or session.path is None)
        for operation in ("export", "export_contours"):
            self.menus.enable(operation, not is_empty)
        self.menus.list_recent(self.settings.recent, self._open_recent)

    def tell(
        self, text: str, notes: Iterable[str] = (), advice: str = "", warning: bool = False
    ) -> None:
        """Show a message until the next action, with a list of what there is to know of."""
        self.messages.show(text, list(notes), advice, warning)

    def _title(self) -> str:
        return short(self.session.document.name, _LONGEST_NAME) or tr("Untitled")

    def _restore_size(self) -> None:
        kept = re.match(r"(\d+)x(\d+)", self.settings.geometry)
        width, height = map(int, kept.groups()) if kept else map(px, _USUAL)
        most = room(self.root)
        self.root.geometry(f"{min(width, most[0])}x{min(height, most[1])}")

    # One thing at a time.

    def perform(self, operation: str) -> None:
        """Do what a menu, a key or a button asks for, unless something is being done."""
        self._act(getattr(self, operation))

    def _act(self, act: Callable[[], None]) -> None:
        if not self._busy:
            self.tell("")
        self._one_at_a_time(act)

    def _one_at_a_time(self, act: Callable[[], None]) -> None:
        if self._busy:
            self.root.bell()
            return
        self._busy = True
        try:
            act()
        except Stopped:
            self.tell(tr("Stopped. Everything is as it was."))
        finally:
            self._busy = False

    def _hook_errors(self) -> None:
        """Say in the window that something failed, besides what happens to such errors."""
        report = self.root.report_callback_exception

        def told(kind: Any, error: BaseException, trace: Any) -> None:
            text = tr("Something went wrong with {file}: {why}")
            text = text.format(file=self._title(), why=error or kind.__name__)
            advice = tr("Save your work under another name, then start the program again.")
            self.tell(text, advice=advice, warning=True)
            report(kind, error, trace)

        self.root.report_callback_exception = told

    def _run(self, text: str, task: Callable[[Tick], Any]) -> Any:
        return progress.run(self.root, text, task)

    # Files.

    def new(self) -> None:
        if self.may_leave():
            self.session.new()
            self._begin(measure(self.session.document.sketch))

    def choose_file(self) -> None:
        self._go_on_with(file_dialogs.sketch_or_drawing(self.root, self._folder()))

    def choose_drawing(self) -> None:
        self._go_on_with(file_dialogs.drawing(self.root, self._folder()))

    def _go_on_with(self, path: str) -> None:
        if path and self.may_leave():
            self.open(path)

    def _open_recent(self, path: str) -> None:
        self._act(lambda: self._go_on_with(path))

    def open(self, path: str, unit: Optional[str] = None) -> None:
        """Go on with the part in a file; where it can't be read, say so and keep what is shown.

        The unit is that of a drawing's numbers, whatever it says itself.
        """
        name, is_drawing = os.path.basename(path), exchange.is_drawing(path)
        try:
            notes = self._import(path, unit) if is_drawing else self._open_sketch(path)
        except (SketchFileError, ExchangeError) as error:
            self._tell_unopened(path, error)
            return
        except Stopped:
            self.tell(tr("Stopped. Everything is as it was."))
            return
        if notes is None:
            self.tell(tr("{file} isn't opened. Everything is as it was.").format(file=name))
            return
        self.settings.remember(path)
        self.settings.save()
        self.refresh()
        # What the editor would not let pass is left out of the profile, or cut twice.
        unfit = [] if is_drawing else notes
        self.tell(os.path.abspath(path), notes, tr(_MEND) if unfit else "", warning=bool(notes))

    def _tell_unopened(self, path: str, error: Exception) -> None:
        if not os.path.exists(path) and path in self.settings.recent:
            self.settings.recent.remove(path)
            self.settings.save()
        self.refresh()
        why, *notes = error.args
        text, advice = unopened(path, why)
        self.tell(text, notes, advice, warning=True)

    def _open_sketch(self, path: str) -> list[str]:
        def task(tick: Tick) -> tuple[storage.Document, Measured]:
            document = storage.read(path, progress.span(tick, 0, 0.5))
            return document, measure(document.sketch, progress.span(tick, 0.5, 1))

        text = tr("Opening {file}…").format(file=os.path.basename(path))
        stamp = files.stamp(path)
        document, measured = self._run(text, task)
        self.session.opened(document, path, stamp)
        self._begin(measured)
        return S.check(document.sketch) if document.sketch["entities"] else []

    def _import(self, path: str, unit: Optional[str] = None) -> Optional[list[str]]:
        """What the user should know of the drawing; None where they don't answer."""
        name = os.path.basename(path)
        answers: dict[str, Any] = {}

        def task(tick: Tick) -> tuple[exchange.Imported, Measured]:
            imported = exchange.import_(path, unit, progress.span(tick, 0, 0.5), answers)
            return imported, measure(imported.document.sketch, progress.span(tick, 0.5, 1))

        while True:
            try:
                imported, measured = self._run(tr("Importing {file}…").format(file=name), task)
                break
            except Question as question:
                answer = importing.answer(self.root, name, question)
                if answer is None:
                    return None
                answers[question.subject] = answer
        self.session.adopt(imported.document)
        self._begin(measured)
        if not imported.notes:
            return []
        importing.Report(self.root, name, imported.notes, self.view.mark)
        return [tr("Not all of it came in as it was drawn: the list tells what.")]

    def save(self) -> None:
        """Write the document to its file; a failure keeps it here, marked as unsaved."""
        path = self.session.path
        if path is None:
            self.save_as()
            return
        if self.session.changed_elsewhere:
            answer = questions.changed_elsewhere(self.root, os.path.basename(path))
            if answer == "other":
                self.save_as()
            if answer != "replace":
                return
        self._save(path)

    def save_as(self) -> None:
        name = os.path.basename(self.session.path or f"{self._title()}.json")
        path = file_dialogs.place_of_sketch(self.root, self._folder(), name)
        if not path:
            return
        if os.path.splitext(path)[1].lower() in exchange.SUFFIXES:
            text = tr("{file} isn't saved: “Export…” makes files of this kind.")
            self.tell(text.format(file=os.path.basename(path)), warning=True)
            return
        self._save(path)

    def _save(self, path: str) -> None:
        try:
            self.session.save_as(path)
        except SketchFileError as error:
            text = tr("{file} isn't saved: {why}").format(file=os.path.basename(path), why=error)
            advice = tr("Your work is still here: try again, or choose another place.")
            self.tell(text, advice=advice, warning=True)
            return
        self.settings.remember(path)
        self.settings.save()
        self.refresh()
        self.tell(tr("Saved: {file}").format(file=os.path.abspath(path)))

    def export(self) -> None:
        """Write the profile in another program's format, in the units of the moment."""
        self._export(exchange.SUFFIXES)

    def export_contours(self) -> None:
        """Write a drawing with the shapes' own contours, whatever they overlap."""
        self._export([exchange.DRAWING], own_contours=True)

    def _export(self, suffixes: Iterable[str], own_contours: bool = False) -> None:
        if not self.session.document.sketch["entities"]:
            return
        stem = os.path.splitext(os.path.basename(self.session.path or self._title()))[0]
        path = file_dialogs.place_of_export(self.root, self._folder(), stem, suffixes)
        if not path:
            return
        name = os.path.basename(path)
        document, unit = self.session.document, units().name

        def task(tick: Tick) -> list[str]:
            return exchange.export(document, path, unit, tick, own_contours)

        try:
            notes = self._run(tr("Exporting {file}…").format(file=name), task)
        except ExchangeError as error:
            advice = _MEND if isinstance(error, NotReady) else N_("Choose another name or place.")
            if len(error.args) > 1:
                text = tr("{file} isn't exported:").format(file=name)
                self.tell(text, error.args, tr(advice), warning=True)
            else:
                text = tr("{file} isn't exported: {why}").format(file=name, why=error)
                self.tell(text, advice=tr(advice), warning=True)
        else:
            done = tr("Exported: {file}").format(file=os.path.abspath(path))
            self.tell(done, notes, warning=bool(notes))

    def _folder(self) -> Optional[str]:
        """Where the user's files are: where the part lies, or the last one did."""
        latest = self.settings.recent[0] if self.settings.recent else ""
        folder = os.path.dirname(self.session.path or latest)
        return folder if os.path.isdir(folder) else None

    # Edits.

    def edit(self) -> None:
        """Let the user edit the sketch. What they accept is kept; it goes to the file on saving."""
        document = self.session.document
        title = tr("Sketch of {name}").format(name=self._title())
        references = [(r["name"], np.array(r["points"], float)) for r in document.references]
        # Files are read strictly: what they hold is what the editor's types ask for.
        sketch = cast(Any, document.sketch)
        size = self.settings.editor_size
        keep = self.session.keep_draft
        editor = Editor(self.root, sketch, size, keep=keep, title=title, references=references)
        edited = cast(Any, editor.run())
        self.settings.editor_size = editor.window_size
        self.settings.save()
        if edited is None or not self.session.accept(edited):
            self.session.forget_draft()
            return
        try:
            self._show()
        except Stopped:
            # Work is worth more than its picture.
            self._show(Measured())
        if self.session.autosave_failed:
            text = tr("{file} isn't kept for a crash: {why}")
            text = text.format(file=self._title(), why=self.session.autosave_failed)
            self.tell(text, advice=tr("Save it now."), warning=True)

    def undo(self) -> None:
        self._step(self.session.undo, self.session.redo)

    def redo(self) -> None:
        self._step(self.session.redo, self.session.undo)

    def _step(self, step: Callable[[], bool], back: Callable[[], bool]) -> None:
        if step():
            try:
                self._show()
            except Stopped:
                back()
                raise

    def _show(self, measured: Optional[Measured] = None) -> None:
        """Show the document as it is now; measure it, unless that is done."""
        if measured is None:
            sketch = self.session.document.sketch
            text = tr("Drawing the profile…")
            measured = self._run(text, lambda tick: measure(sketch, tick))
        self.measured = cast(Measured, measured)
        for report in self.root.winfo_children():
            if isinstance(report, importing.Report):
                report.close()
        self.refresh()

    def _begin(self, measured: Measured) -> None:
        """Show another document, all of it."""
        self._show(measured)
        self.view.fit()

    def fit(self) -> None:
        self.view.fit()

    # Leaving and coming back.

    def may_leave(self) -> bool:
        """Ask what becomes of unsaved work; False when the user wants to stay."""
        if not self.session.dirty:
            return True
        answer = questions.unsaved(self.root, self._title())
        if answer == "save":
            self.save()
            return not self.session.dirty
        return answer == "leave"

    def quit(self) -> None:
        if self.may_leave():
            self.session.close()
            self.settings.geometry = self.root.geometry()
            self.settings.save()
            self.root.destroy()

    def offer(self, found: Iterable[Found]) -> None:
        """Offer what a program that ended unexpectedly has left, until one is taken up."""
        for work in found:
            name = short(work.document.name, _LONGEST_NAME) or tr("Untitled")
            answer = questions.recovered(self.root, name, work)
            if answer == "take" and self.may_leave():
                self._recover(work)
                return
            if answer == "drop" and questions.discarded(self.root, name):
                work.discard()

    def _recover(self, work: Found) -> None:
        sketch = work.document.sketch
        measured = self._run(tr("Drawing the profile…"), lambda tick: measure(sketch, tick))
        self.session.adopt(work.document, work.path, work.saved_at)
        if not self.session.autosave_failed:
            work.discard()
        self._begin(measured)
        self.tell(tr("Recovered. Save it to keep it."))

    # What the user chooses once and finds again.

    def change_units(self) -> None:
        self.settings.units = self.unit_choice.get()
        self.settings.save()
        set_units(self.settings.units)
        self.refresh()

    def change_language(self) -> None:
        self.settings.language = self.language_choice.get()
        self.settings.save()
        i18n.set_language(self.settings.language)
        # The menu that called is among what is made anew.
        self.root.after_idle(self.build)

    def change_palette(self) -> None:
        self.settings.palette = self.palette_choice.get()
        self.settings.save()
        theme.use_palette(self.settings.palette)
        theme.install(self.root)
        self.tell("")
        self.refresh()
