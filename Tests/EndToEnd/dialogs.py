"""The folder dialogs, used as a person uses them."""

import os
from pathlib import Path

from desktop import until, wait_for
from hands import strike
from screen import BUTTON, CHOOSER, COLUMN, DIALOG, FIELD, LIST, ROW


class FolderDialog:
    """The open folder dialog with this title; accept or cancel closes it."""

    def __init__(self, application, title):
        self.application = application
        self.title = title
        self.window = wait_for(self.open, f"the dialog {title!r}")
        wait_for(lambda: self.window.has("active"), f"the dialog {title!r} to be in front")

    def open(self):
        return next((child for child in self.application.children()
                     if child.role in DIALOG and child.name == self.title), None)

    def folder(self):
        """The folder whose content is shown."""
        return Path(self.window.find(CHOOSER, lambda name: name.startswith("/")).name)

    def rows(self):
        """The folders shown, by name."""
        files = next(view for view in self.window.all(LIST, "Carpetas") if view.showing)
        parts = files.children()
        columns = sum(part.role == COLUMN for part in parts) or 1
        return {row.name: row for row in [part for part in parts if part.role in ROW][::columns]}

    def row(self, name):
        return wait_for(lambda: self.rows().get(name), f"{name!r} in {self.folder()}")

    def go(self, folder):
        """Goes to a folder: up with the button, down with double clicks."""

        def step():
            here = self.folder()
            if not folder.is_relative_to(here):
                self.window.find(BUTTON, "Carpeta superior").press()
            elif here != folder:
                self.row(folder.relative_to(here).parts[0]).click(times=2)

        while (here := self.folder()) != folder:
            until(lambda: self.folder() != here, step, f"to get from {here} to {folder}")

    def select(self, folder, names, by_keyboard=False):
        """Selects several folders in a folder, with the mouse or, if they are adjacent, with the keyboard."""
        self.go(folder)

        def mark():
            # Also clears the selection, so that everything can be repeated.
            until(lambda: self.marked() == {names[0]}, self.row(names[0]).click, f"{names[0]!r} to be selected")
            for name in names[1:]:
                if by_keyboard:
                    strike("shift+Down")
                else:
                    self.row(name).click(holding="ctrl")

        until(lambda: self.marked() == set(names), mark, f"{names} to be selected")

    def typed(self):
        return self.window.find(FIELD, "Carpeta:").text()

    def marked(self):
        return {name for name, row in self.rows().items() if row.has("selected")}

    def type(self, folder):
        self.window.find(FIELD, "Carpeta:").type(os.fspath(folder))

    def accept(self):
        self.leave("Seleccionar")

    def cancel(self):
        self.leave("Cancelar")

    def leave(self, button):
        self.window.find(BUTTON, button).press()
        wait_for(lambda: not self.open(), f"the dialog {self.title!r} to close")
