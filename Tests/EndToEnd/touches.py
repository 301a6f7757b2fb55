"""Pictures of the controls as pointer and keyboard find them."""

import subprocess

from desktop import until, wait_for
from hands import click, strike, xdotool
from screen import BUTTON, CHOOSER, LABEL, LIST, SWITCH
from window import ANALYSE, COPY

KINDS = [(LABEL, "/media/ana/EOS_DIGITAL"), (BUTTON, "Elegir camara"), (BUTTON, "Elegir HD de copia"),
         (BUTTON, "Usar solo HD de copia"), (BUTTON, "Anadir ubicaciones"), (LABEL, "/media/ana/Disco B"),
         (BUTTON, "Quitar"), (SWITCH, None), (BUTTON, ANALYSE), (CHOOSER, None), (BUTTON, COPY),
         (LIST, "Videos pendientes")]
MARGIN = 8
# Of wide controls only the leading part is shown.
ROOM = (330, 76)


class Touches:
    """One picture of all kinds of controls: a row for each, at rest, under the pointer, pressed, and reached by Tab."""

    def __init__(self, desktop, window):
        self.desktop, self.window = desktop, window

    def run(self, *words, given=b""):
        """What a program for pictures writes."""
        return subprocess.run(words, input=given, check=True, capture_output=True,
                              env={**self.desktop.environment, "HOME": str(self.desktop.folder)}).stdout

    def picture(self, box):
        """The place of a control once it no longer changes."""
        x, y, width, height = box
        size = f"{min(width, ROOM[0]) + 2 * MARGIN}x{min(height, ROOM[1]) + 2 * MARGIN}+{x - MARGIN}+{y - MARGIN}"
        taken = [b""]

        def stands_still():
            taken.append(self.run("import", "-window", "root", "-crop", size, "+repage", "miff:-"))
            return taken[-1] == taken[-2]

        wait_for(stands_still, "the control to be drawn")
        return taken[-1]

    def ground(self):
        x, y, _, _ = self.window.element.box()
        return x + 4, y + 4

    def leave(self):
        """Moves the pointer to the ground and lets its button go."""
        xdotool("mousemove", *self.ground(), "mouseup", 1)

    def row(self, control):
        x, y, width, height = box = control.box()
        inside = x + min(width // 2, 60), y + min(height // 2, 25)
        self.leave()
        pictures = [self.picture(box)]
        xdotool("mousemove", *inside)
        pictures.append(self.picture(box))
        xdotool("mousedown", 1)
        if control.role in LABEL:
            xdotool("mousemove", inside[0] + 40, inside[1])
        pictures.append(self.picture(box))
        if control.role in CHOOSER:
            strike("Escape")
        self.leave()
        # The press gave it the focus without a ring.
        for key, comes in (("Tab", False), ("shift+Tab", True)):
            until(lambda: control.has("focused") == comes, lambda: strike(key), f"{key} to move the focus")
        return [*pictures, self.picture(box)]

    def save(self, path):
        rows = []
        for roles, name in KINDS:
            control = next(control for control in self.window.element.all(roles, name) if control.enabled)
            cells = [self.run("convert", "-", "-background", "gray50", "-gravity", "west", "-extent",
                                          f"{ROOM[0] + 2 * MARGIN + 4}x", "miff:-", given=cell) for cell in self.row(control)]
            rows.append(self.run("convert", "-", "+append", "miff:-", given=b"".join(cells)))
        self.run("convert", "-", "-append", str(path), given=b"".join(rows))
        click(*self.ground())  # Takes the focus from the last one.
