"""The folder dialogs, worked as a person works them."""

import os
from pathlib import Path

from desktop import wait_for
from screen import BUTTON, CHOOSER, CONTROL, DIALOG, DOWN, FIELD, LIST, ROW, SHIFT, strike


class FolderDialog:
    """The open folder dialog of the given title; closed by choose, chooseTyped or cancel."""

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
        files = next(view for view in self.window.all(LIST, "Archivos") if view.showing)
        return {row.name: row for row in files.children() if row.role in ROW}

    def row(self, name):
        return wait_for(lambda: self.rows().get(name), f"{name!r} in {self.folder()}")

    def go(self, folder):
        """Walks to a folder: up with the button, down with double clicks."""
        while not folder.is_relative_to(here := self.folder()):
            self.window.find(BUTTON, "Directorio superior").press()
            wait_for(lambda: self.folder() != here, f"the folder above {here}")
        for part in folder.relative_to(self.folder()).parts:
            inside = self.folder() / part
            self.row(part).click("b1d")
            wait_for(lambda: self.folder() == inside, f"the folder {inside}")

    def select(self, folder, names, by_keyboard=False):
        """Marks several folders of one folder, with the mouse or, where they stand one below the other, by keys."""
        self.go(folder)
        self.row(names[0]).click()
        wait_for(lambda: names[0] in self.typed(), f"{names[0]!r} to be selected")
        for name in names[1:]:
            if by_keyboard:
                strike(DOWN, holding=SHIFT)
            else:
                self.row(name).click(holding=CONTROL)
        marked = {f'"{name}"' for name in names} if len(names) > 1 else set(names)
        wait_for(lambda: all(name in self.typed() for name in marked), f"{names} to be selected")

    def typed(self):
        return self.window.find(FIELD, "Directorio:").text()

    def type(self, folder):
        self.window.find(FIELD, "Directorio:").type(os.fspath(folder))

    def accept(self):
        self.window.find(BUTTON, "Seleccionar").press()
        wait_for(lambda: not self.open(), f"the dialog {self.title!r} to close")

    def cancel(self):
        self.window.find(BUTTON, "Cancelar").press()
        wait_for(lambda: not self.open(), f"the dialog {self.title!r} to close")
