"""What a person does, and what happens to disks and services meanwhile, at random. Each deed is done to the program and
to the model; it returns what was done, or None if it was not possible."""

import contextlib
import os
import signal
import sys
from pathlib import Path

from desktop import stop, until, wait_for
from hands import shows_window, strike, xdotool
from janitor import processes_of
from screen import BUTTON, LIST, Ear
from soakModel import ONLY_DESTINATION, REMOVE, name
from theme import DARK, LIGHT, USUAL_FONT, Theme
from window import ANALYSE, CAMERA, COPY, DESTINATION, REVIEW

WIDTHS = (480, 700, 760, 1000, 1148, 1300, 1600)
HEIGHTS = (480, 700, 1000)
FONTS = (USUAL_FONT, 13)


class Deeds:
    def __init__(self, desktop, places, session, dice):
        self.desktop, self.places, self.session, self.dice = desktop, places, session, dice
        self.hold = desktop.folder / "hold"
        self.theme = Theme(desktop)
        self.log = desktop.folder / "sleep.log"
        self.shows = Ear("object:state-changed:showing")
        self.services = None
        self.has_bus = True

    def attach(self, window, check, note):
        """`check` compares everything that is shown with the model; `note` logs a deed within a deed."""
        self.window, self.check, self.note = window, check, note
        self.identifier = xdotool("search", "--all", "--onlyvisible", "--pid", self.desktop.program.pid, "--name",
                                  "^Reelkeep$").split()[0]

    # Choices

    def choose(self, question, folder):
        dialog = self.window.ask(question)
        dialog.type(folder)
        dialog.accept()

    def choose_camera(self):
        folder = self.dice.choice(self.places.alive(self.places.cameras))
        self.choose(CAMERA, folder)
        self.session.camera = folder
        return f"choose the camera {folder}"

    def choose_destination(self):
        folder = self.dice.choice(self.places.alive(self.places.stores))
        self.choose(DESTINATION, folder)
        self.session.choose_destination(folder)
        return f"choose the destination {folder}"

    def add_place(self):
        folder = self.dice.choice(self.places.alive(self.places.stores + self.places.cameras[:1]))
        self.choose(REVIEW, folder)
        self.session.add([folder])
        return f"review {folder}"

    def add_two_places(self):
        folders = [str(self.places.projects / folder) for folder in self.places.pair]
        if self.places.alive(folders) != folders:
            return None
        dialog = self.window.ask(REVIEW)
        dialog.select(self.places.projects, self.places.pair)
        dialog.accept()
        self.session.add(folders)
        return f"review {folders}"

    def cancel_a_dialog(self):
        question = self.dice.choice((CAMERA, DESTINATION, REVIEW))
        way = self.dice.choice(("button", "Escape", "alt+F4"))
        dialog = self.window.ask(question)
        dialog.type(self.dice.choice((self.places.folder, "/no/existe", "")))
        if way == "button":
            dialog.cancel()
        else:
            until(lambda: not dialog.open(), lambda: shows_window(dialog.title) and strike(way), "the dialog to close",
                  patience=10)
        return f"cancel {question[1]!r} by {way}"

    def remove_place(self):
        removable = [folder for folder in self.session.effective() if folder != self.session.destination]
        if not removable:
            return None
        folder = self.dice.choice(removable)
        number = self.session.effective().index(folder)
        self.window.element.all(BUTTON, REMOVE)[number].press()
        self.session.remove(folder)
        return f"remove the place {folder}"

    def review_only_the_destination(self):
        if not self.session.destination:
            return None
        self.window.button(ONLY_DESTINATION).press()
        self.session.reviewed = [self.session.destination]
        return "review only the destination"

    def switch(self):
        switch = self.window.switch()
        if self.dice.random() < 0.5:
            switch.press()
        else:
            self.give_focus(switch)
            strike("space")
        self.session.preserve = not self.session.preserve
        return f"switch to {self.session.preserve}"

    def give_focus(self, element):
        until(lambda: element.has("focused") and shows_window("Reelkeep"), element.take_focus, "the focus")

    def pick_destination(self):
        if len(self.session.effective()) < 2:
            return None
        folder = self.dice.choice(self.session.effective())
        self.window.chooser().choose(name(folder))
        self.session.destination = folder
        return f"pick {folder}"

    # Work

    def analyse(self):
        if not self.session.can_scan():
            return None
        with self.work():
            self.window.button(ANALYSE).press()
        self.session.analyse(self.places.world)
        return "analyse"

    @contextlib.contextmanager
    def work(self):
        """Waits for the end of the work that the block starts or lets go on, when the progress bar disappears. What the
        window shows may be the same before and after."""
        self.shows.events().clear()
        yield
        wait_for(lambda: any(not shown and element.exists and element.role == "progress bar"
                             for element, shown in self.shows.events()), "the work to end", timeout=120)

    def analyse_a_hanging_disk(self):
        alive = [disk for disk in self.places.pullable if str(disk.place) not in self.places.world.dead]
        if not alive or not self.session.can_scan():
            return None
        disk = self.dice.choice(alive)
        roots = [self.session.camera, *self.session.effective()]
        if not any(self.places.disk_of(root) is disk for root in roots) or \
                any(self.places.world.is_dead(root) for root in roots):
            return None
        disk.hang()
        with self.work():
            try:
                self.window.button(ANALYSE).press()
                self.session.scanning = True
                self.check()
                self.note(f"analyse while {disk.place} hangs")
                self.some_of((self.switch, self.resize, self.scroll, self.change_theme))
            finally:
                disk.resume()
        self.session.scanning = False
        self.session.analyse(self.places.world)
        return "end of the analysis"

    def copy(self):
        if not self.session.can_copy():
            return None
        with self.work():
            self.window.button(COPY).press()
        count = self.session.copy(self.places.world, self.session.plan())
        return f"copy: {count} new"

    def copy_slowly(self):
        """A copy in the middle of which other things happen."""
        plan = self.session.plan()
        if not self.session.can_copy() or not self.places.would_copy(plan):
            return None
        self.hold.write_text("held", encoding="ascii")
        self.window.button(COPY).press()
        wait_for(lambda: self.hold.read_bytes() == b"", "the copy to be running")
        self.session.copying = plan
        self.note(f"copy slowly: {len(plan.videos)} videos to {plan.destination}")
        self.check()
        self.some_of(self.meanwhile())
        pulled = self.dice.random() < 0.3 and self.pull()
        with self.work():
            self.note(f"release the disk, {pulled}")
            self.hold.unlink()
        self.session.copying = None
        if pulled and (self.places.world.is_dead(plan.destination) or self.places.world.is_dead(plan.camera)):
            return self.session.end_of_pulled_copy(self.places, plan, self.window.status())
        count = self.session.copy(self.places.world, plan)
        return f"end of the slow copy: {count} new"

    def some_of(self, deeds):
        for _ in range(self.dice.randrange(5)):
            self.note(f"  {self.dice.choice(deeds)()}")
            self.check()

    def meanwhile(self):
        return (self.choose_camera, self.choose_destination, self.add_place, self.cancel_a_dialog, self.remove_place,
                self.review_only_the_destination, self.switch, self.pick_destination, self.resize, self.change_theme,
                self.scroll, self.press_keys, self.start_or_kill_services, lambda: self.places.add_video(fresh=True))

    # Disks

    def pull(self):
        disk = self.dice.choice(self.places.pullable)
        if str(disk.place) in self.places.world.dead:
            return None
        self.places.pull(disk)
        return f"pull {disk.place}"

    def insert(self):
        dead = [disk for disk in self.places.pullable if str(disk.place) in self.places.world.dead]
        for disk in dead:
            self.places.insert(disk)
        return f"insert {[str(disk.place) for disk in dead]}" if dead else None

    def change_files(self):
        places = self.places
        changes = [self.dice.choice((places.add_video, places.add_video, places.add_junk, places.add_extra,
                                     places.remove_video, places.change_copy, places.remove_folder))()
                   for _ in range(self.dice.randrange(1, 5))]
        return ", ".join(filter(None, [*changes, places.thin_out()]))

    # Window

    def resize(self):
        width, height = self.dice.choice(WIDTHS), self.dice.choice(HEIGHTS)
        xdotool("windowsize", self.identifier, width, height)
        wait_for(lambda: abs(self.window.element.box()[2] - width) <= 2, f"the width {width}")
        return f"resize to {width} x {height}"

    def scroll(self):
        """Wheel events anywhere in the window; they must change no choice."""
        x, y, width, height = self.window.element.box()
        for _ in range(self.dice.randrange(1, 5)):
            xdotool("mousemove", x + self.dice.randrange(5, width - 5), y + self.dice.randrange(5, height - 5),
                    "click", "--repeat", self.dice.randrange(1, 12), "--delay", 5, self.dice.choice((4, 5)))
        return "scroll"

    def press_keys(self):
        """Keys that move the focus or scroll; they must change no choice."""
        start = self.window.element.maybe(LIST, "Videos pendientes")
        start = start if start and start.showing else self.window.switch()
        self.give_focus(start)
        keys = self.dice.choices(("Next", "Prior", "Home", "End", "Escape", "ctrl+End", "ctrl+Home"), k=4) + \
            self.dice.choices(("Tab", "shift+Tab", "Escape"), k=self.dice.randrange(8))
        strike(*keys)
        return f"press {' '.join(keys)}"

    def change_theme(self):
        colours, font = self.dice.choice((DARK, LIGHT)), self.dice.choice(FONTS)
        if not self.has_bus:
            return None
        self.theme.change(colours, font)
        expected = colours.pixel()
        x, y, _, _ = self.window.element.box()
        wait_for(lambda: self.desktop.colour(x + 3, y + 3) == expected, "the colours of the theme")
        return f"{'dark' if colours is DARK else 'light'} theme, {font} points"

    # Session bus

    def start_or_kill_services(self):
        if not self.has_bus:
            return None
        if self.services:
            stop(self.services)
            self.desktop.processes.remove(self.services)
            self.services = None
            return "kill the suspend services"
        services = self.dice.choice((["portal"], ["screenSaver"], ["refusingPortal", "screenSaver"]))
        program, bus = Path(__file__).with_name("sleepServices.py"), self.desktop.own["DBUS_SESSION_BUS_ADDRESS"]
        self.desktop.launch([sys.executable, "-B", str(program), "{fd}", str(self.log), bus, *services],
                            self.desktop.own)
        self.services = self.desktop.processes[-1]
        return f"start the suspend services {services}"

    def kill_bus(self):
        """Its end would also end the accessibility bus, so the process that started that must not notice."""
        for process in processes_of(self.desktop.folder):
            if b"at-spi-bus-launcher" in Path(f"/proc/{process}/cmdline").read_bytes():
                os.kill(process, signal.SIGSTOP)
        bus = next(process for process in self.desktop.processes if process.args[0] == "dbus-daemon")
        bus.kill()
        bus.wait()
        self.desktop.processes.remove(bus)
        self.has_bus = False
        return "kill the session bus"
