"""Reads and operates a program's window as a screen reader does: by roles and names, never by its inner structure."""

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from desktop import TIMEOUT, until, wait_for  # noqa: E402
from hands import click, strike  # noqa: E402

BUTTON = ("push button", "button")  # The name depends on the version of the accessibility bus.
SWITCH = ("check box", "toggle button")
CHOOSER = ("combo box",)
COLUMN = "table column header"
DIALOG = ("dialog", "file chooser")
FIELD = ("text", "entry")
LABEL = ("label", "static", "text", "heading")
LIST = ("list", "tree", "tree table", "table")
ROW = ("list item", "table cell", "tree item")

# On a busy machine the program answers late, which is not a failure.
Atspi.set_timeout(TIMEOUT * 1000, TIMEOUT * 1000)


class Element:
    """One element of the window; every query reads its current state."""

    def __init__(self, accessible):
        self.accessible = accessible

    name = property(lambda self: self.accessible.get_name())
    role = property(lambda self: self.accessible.get_role_name())

    def has(self, state):
        return self.accessible.get_state_set().contains(getattr(Atspi.StateType, state.upper()))

    @property
    def exists(self):
        try:
            return bool(self.role)
        except GLib.Error:
            return False

    enabled = property(lambda self: self.has("enabled"))
    showing = property(lambda self: self.has("showing"))
    checked = property(lambda self: self.has("checked"))

    def children(self):
        found = (self.accessible.get_child_at_index(i) for i in range(self.accessible.get_child_count()))
        return [Element(child) for child in found if child is not None]

    def siblings(self):
        return Element(self.accessible.get_parent()).children()

    def descendants(self):
        """All elements inside, in reading order."""
        for child in self.children():
            yield child
            try:
                yield from child.descendants()
            except GLib.Error:
                continue  # Gone while we were reading.

    def search(self, roles, name=None):
        """The elements inside with one of these roles, and with this name or one that the function accepts."""
        accepts = name if callable(name) else lambda text: name is None or text == name
        for child in self.children():
            try:
                role = child.role
                if role in roles and accepts(child.name):
                    yield child
                if role not in LIST or roles == ROW:  # A list holds only rows, and there can be many.
                    yield from child.search(roles, accepts)
            except GLib.Error:
                continue  # Gone while we were reading.

    def all(self, roles, name=None):
        return list(self.search(roles, name))

    def maybe(self, roles, name=None):
        return next(self.search(roles, name), None)

    def find(self, roles, name=None):
        """Waits for such an element; returns the first."""
        return wait_for(lambda: self.maybe(roles, name), f"{roles[0]} {name!r} in {self.name!r}")

    def press(self):
        wait_for(lambda: self.enabled, f"{self.name!r} to be enabled")
        Atspi.Action.do_action(self.accessible, 0)

    def take_focus(self):
        wait_for(lambda: Atspi.Component.grab_focus(self.accessible) and self.has("focused"), f"{self.name!r} to have the focus")

    def type(self, text):
        Atspi.EditableText.set_text_contents(self.accessible, text)

    def value(self):
        return Atspi.Value.get_current_value(self.accessible)

    def text(self):
        return Atspi.Text.get_text(self.accessible, 0, -1)

    def choose(self, name):
        """Opens the chooser and clicks an entry."""

        def pick():
            if not self.has("expanded"):
                self.press()
            wait_for(lambda: next((row for row in self.all(ROW, name) if row.showing), None), f"the entry {name!r}").click()

        until(lambda: self.text() == name and not self.has("expanded"), pick, f"{name!r} to be chosen")

    def box(self):
        """Its rectangle on the display: left, top, width, height."""
        box = Atspi.Component.get_extents(self.accessible, Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def middle(self):
        x, y, width, height = self.box()
        return x + width // 2, y + height // 2

    def click(self, times=1, holding=None):
        """Clicks or double-clicks its centre."""
        click(*self.middle(), times, holding)


class Ear:
    """Events that programs send to screen readers. To be opened before the program starts, which looks for listeners
    only then and at long intervals."""

    def __init__(self, kind):
        self.heard = []
        self.listener = Atspi.EventListener.new(lambda event, *_: self.heard.append((Element(event.source), event.detail1)))
        self.listener.register(kind)

    def events(self):
        """All events so far: the element, and the number in the event."""
        while GLib.MainContext.default().iteration(False):
            pass
        return self.heard


class Focus:
    """Follows the keyboard focus."""

    def __init__(self):
        self.ear = Ear("object:state-changed:focused")

    def stops(self):
        """All elements that have had the focus so far, in order."""
        return [element for element, gained in self.ear.events() if gained]

    def here(self):
        return self.stops()[-1]

    def step(self, key):
        """Presses a key that moves the focus."""
        before = len(self.stops())
        until(lambda: len(self.stops()) > before, lambda: strike(key), f"{key} to move the focus")


def program(process):
    """The element of the running program; its windows and dialogs are its children."""
    root = Atspi.get_desktop(0)
    root.set_cache_mask(Atspi.Cache.NONE)

    def look():
        if process.poll() is not None:
            raise RuntimeError(f"The program ended with status {process.returncode}.")
        for child in Element(root).children():
            if child.accessible.get_process_id() == process.pid:
                child.accessible.set_cache_mask(Atspi.Cache.NONE)
                return child
        return None

    return wait_for(look, "the program to appear on the accessibility bus")
