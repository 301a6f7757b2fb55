"""Reelkeep's window: what it shows, and what a person does in it."""

import re
import subprocess
from pathlib import Path

from desktop import until, wait_for
from dialogs import FolderDialog
from hands import click
from screen import BUTTON, CHOOSER, LABEL, LIST, ROW, SWITCH, program

CAMERA = ("Elegir camara", "Selecciona la carpeta de origen")
DESTINATION = ("Elegir HD de copia", "Selecciona la carpeta de destino")
REVIEW = ("Anadir ubicaciones", "Selecciona uno o varios HDs o carpetas a revisar")
ANALYSE = "Analizar ubicaciones"
COPY = "Copiar faltantes al HD seleccionado"
NOTHING_TO_COPY = "No hay nada pendiente"
CHOOSE_FIRST = "Selecciona la carpeta de la camara, el destino de copia y los HDs o carpetas a revisar."
ALL_SAVED = "Todo lo de la camara ya esta guardado en las ubicaciones revisadas. Los videos extra se ignoran."
NOTE = "La comprobacion es solo de camara hacia los destinos revisados."


def found(count):
    return f"He encontrado {count} videos de la camara que aun no estan en ninguna de las ubicaciones revisadas."


class Window:
    """The running program's one window."""

    def __init__(self, process):
        self.application = program(process)
        self.element = wait_for(self.look, "the window")
        self.status_line = self.bar = None
        wait_for(lambda: NOTE in self.texts(), "the whole window")

    def look(self):
        return next((child for child in self.application.children() if child.name == "Reelkeep"), None)

    def button(self, name):
        return self.element.find(BUTTON, name)

    def has_button(self, name):
        return self.element.maybe(BUTTON, name) is not None

    def texts(self):
        return [label.name for label in self.element.all(LABEL) if label.showing]

    def status(self):
        """The text of the footer. Its element is searched only once, as reading the whole window takes longer than some
        texts are shown."""
        if self.status_line is None:
            self.status_line = self.element.find(("status bar",))
        return self.status_line.name

    def wait_for_status(self, text):
        try:
            wait_for(lambda: self.status() == text, f"the status {text!r}")
        except AssertionError as error:
            raise AssertionError(f"{error}. It is {self.status()!r}") from None

    def cards(self):
        """The three counters, by title."""
        cards = {}
        for element in self.element.descendants():
            match = re.fullmatch(r"(En camara|Ya en destinos|Pendientes): (\d+), (.+)", element.name)
            if match and element.role in ("panel", "grouping", "filler"):
                cards[match[1]] = int(match[2])
        return cards

    def pending(self):
        """The names of the list's rows in order, also of those out of view; empty if there is no list."""
        view = self.element.maybe(LIST, "Videos pendientes")
        return [row.name for row in view.children() if row.role in ROW] if view and view.showing else []

    def progress(self):
        """The value of the progress bar; None if there is none. Its element is searched only once, beside the status."""
        if self.bar is None:
            self.status()
            self.bar = next((part for part in self.status_line.siblings() if part.role == "progress bar"), None)
        if self.bar is None:
            return None
        value = self.bar.value()
        # The bar starts again at 0 when it is hidden, which can happen between the two requests.
        return value if self.bar.showing else None

    def maximize(self):
        """Double-clicks the title bar, which is above the rectangle that the accessibility bus reports."""
        x, y, width, height = self.element.box()
        until(lambda: self.element.box()[3] > height, lambda: click(x + width // 2, y - 8, times=2),
              "the window to fill the display", patience=10)

    def ask(self, question):
        """Presses a button that opens a folder dialog; returns the dialog."""
        button, title = question
        self.button(button).press()
        return FolderDialog(self.application, title)

    def choose(self, question, folder):
        """Chooses a folder in such a dialog by typing its path."""
        dialog = self.ask(question)
        dialog.type(folder)
        dialog.accept()
        wait_for(lambda: str(folder) in self.texts(), f"the path {folder}")

    def switch(self):
        return self.element.find(SWITCH, "Mantener estructura de carpetas")

    def chooser(self):
        return self.element.find(CHOOSER)

    def analyse(self, verdict):
        self.button(ANALYSE).press()
        self.wait_for_status(verdict)
        self.wait_until_idle()

    def wait_until_idle(self):
        wait_for(lambda: self.progress() is None and self.button(ANALYSE).enabled, "the work to end")


def slow_disk(folder, milliseconds, look=0):
    """The environment that makes a program's disks slow. Each write-out takes this long and waits while the file `hold`
    exists in the folder, which is emptied once one waits. Reading an entry's attributes takes `look` milliseconds."""
    library = Path(folder) / "slowDisk.so"
    if not library.exists():
        subprocess.run(["c++", "-shared", "-fPIC", "-O1", "-o", str(library), str(Path(__file__).with_name("slowDisk.cpp"))],
                       check=True, stdin=subprocess.DEVNULL)
    return {"LD_PRELOAD": str(library), "SLOW_DISK_MS": str(milliseconds), "SLOW_DISK_LOOK_MS": str(look),
            "SLOW_DISK_HOLD": str(Path(folder) / "hold")}
