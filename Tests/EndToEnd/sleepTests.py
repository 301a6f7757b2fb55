#!/usr/bin/python3
"""The computer stays awake while the program copies, and no longer; one test in a process:
sleepTests.py PROGRAM Sleep.TEST"""

import contextlib
import os
import signal
import sys
import time
from pathlib import Path

from bigClips import BigClips
from case import DesktopTest, main
from desktop import wait_for
from keyboard import shows_window, strike_keys, type_text
from screen import click
from window import ALL_SAVED, ANALYSE, CAMERA, COPY, DESTINATION, found, slow_disk


class Sleep(DesktopTest):
    screen = (1200, 2200)  # All of the window can be seen.

    def setUp(self):
        super().setUp()
        self.clips = BigClips(self.desktop.folder / "media", 3, size=1000)
        self.log = self.desktop.folder / "sleep.log"
        self.hold = self.desktop.folder / "hold"

    def serve(self, *services, bus=None):
        """Starts what the desktop offers against suspending."""
        self.desktop.launch([sys.executable, "-B", str(Path(__file__).with_name("sleepServices.py")), "{fd}", str(self.log),
                             bus or self.desktop.own["DBUS_SESSION_BUS_ADDRESS"], *services], self.desktop.own)

    def events(self):
        return self.log.read_text(encoding="utf-8").splitlines() if self.log.exists() else []

    def wait_for_events(self, *events):
        wait_for(lambda: len(self.events()) >= len(events), f"{events}, not only {self.events()}")
        self.assertEqual(self.events(), list(events))

    def analysed(self, **more):
        """A window that has found what is missing. The disk is one that does not answer until `hold` is gone."""
        window = self.start(**slow_disk(self.desktop.folder, 0), **more)
        window.choose(CAMERA, self.clips.card)
        window.choose(DESTINATION, self.clips.disk)
        window.analyse(found(len(self.clips.names)))
        return window

    def begin_copy(self, window):
        self.hold.write_text("held", encoding="ascii")
        window.button(COPY).press()
        wait_for(lambda: self.hold.read_bytes() == b"", "the copy to be under way")

    def finish_copy(self, window):
        self.hold.unlink()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()

    def test_the_portal_is_asked_while_a_copy_runs(self):
        self.serve("portal")
        window = self.analysed()
        self.assertEqual(self.events(), [])
        self.begin_copy(window)
        first = ["portal holds 1: 4 Copiando videos"]
        self.wait_for_events(*first)
        self.finish_copy(window)
        first.append("portal lets go 1")
        self.wait_for_events(*first)

        place = self.clips.disk / self.clips.names[0]
        place.unlink()
        window.analyse(found(1))
        self.begin_copy(window)
        second = [*first, "portal holds 2: 4 Copiando videos"]
        self.wait_for_events(*second)
        place.touch()  # Somebody else takes it in the meantime.
        self.hold.unlink()
        wait_for(lambda: window.status().startswith("No he podido copiar los videos: "), "the copy to fail")
        second.append("portal lets go 2")
        self.wait_for_events(*second)

        window.wait_until_idle()
        place.unlink()
        self.begin_copy(window)
        third = [*second, "portal holds 3: 4 Copiando videos"]
        self.wait_for_events(*third)
        self.close()
        self.wait_for_events(*third, "portal lets go 3", "holder left", "holder left", "holder left")

    def test_a_portal_that_answers_late_holds_nothing(self):
        self.serve("latePortal")
        window = self.analysed()
        window.button(COPY).press()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.assertEqual(self.events(), ["portal asked"])
        Path(f"{self.log}.answer").touch()
        self.wait_for_events("portal asked", "portal holds 1: 4 Copiando videos", "portal lets go 1")

    def test_the_screen_saver_is_asked_where_the_portal_refuses(self):
        self.serve("refusingPortal", "screenSaver")
        window = self.analysed()
        self.begin_copy(window)
        held = ["portal refuses", "screen saver holds 1: Reelkeep, Copiando videos"]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "screen saver lets go 1")

    def test_the_login_manager_is_asked_where_nobody_else_is(self):
        bus = self.desktop.launch(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address={fd}",
                                   f"--address=unix:path={self.desktop.folder}/system-bus"], self.desktop.own)
        self.serve("loginManager", bus=bus)
        window = self.analysed(DBUS_SYSTEM_BUS_ADDRESS=bus)
        self.begin_copy(window)
        held = ["login manager holds: sleep, Reelkeep, Copiando videos, block"]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "login manager lets go")

    def test_copies_in_silence_where_nobody_can_be_asked(self):
        spots = self.copy_watched()
        nowhere = f"unix:path={self.desktop.folder}/nowhere"
        for name, bus in {"no bus": None, "dead bus": nowhere}.items():
            with self.subTest(name):
                for clip in self.clips.copied():
                    (self.clips.disk / clip).unlink()
                self.copy_blindly(spots, DBUS_SESSION_BUS_ADDRESS=bus, DBUS_SYSTEM_BUS_ADDRESS=nowhere)
                self.assertEqual(self.desktop.said(), "")
        self.assert_left_no_trace()

    def copy_watched(self):
        """Copies; where each button stands when it is its turn."""
        window = self.start()
        spots = {}
        for question, folder in ((CAMERA, self.clips.card), (DESTINATION, self.clips.disk)):
            window.choose(question, folder)
            spots[question[0]] = window.button(question[0]).middle()
        spots[ANALYSE] = window.button(ANALYSE).middle()
        window.analyse(found(len(self.clips.names)))
        spots[COPY] = window.button(COPY).middle()
        window.button(COPY).press()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.close()
        return spots

    def copy_blindly(self, spots, **more):
        """The same with mouse and keyboard: without a bus the program cannot be asked what it shows."""
        self.desktop.run(self.program, **more)
        wait_for(lambda: shows_window("Reelkeep"), "the window")
        for (button, title), folder in ((CAMERA, self.clips.card), (DESTINATION, self.clips.disk)):
            self.click_until(lambda: shows_window(title), spots[button])
            type_text(folder)
            strike_keys("Return")
            wait_for(lambda: shows_window("Reelkeep"), "the dialog to close")
        self.click_until(lambda: self.clips.copied() == self.clips.names, spots[ANALYSE], spots[COPY])
        self.close()
        self.assertEqual(self.clips.flaws(), [])

    def click_until(self, condition, *spots):
        """A click may come before the window takes it."""
        end = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), end, f"clicked in vain at {spots}")
            for spot in spots:
                click(*spot)
            with contextlib.suppress(AssertionError):
                wait_for(condition, "an effect", timeout=0.5)

    def test_a_copy_survives_the_bus(self):
        self.serve("portal")
        self.begin_copy(self.analysed())
        self.wait_for_events("portal holds 1: 4 Copiando videos")
        bus = next(process for process in self.desktop.processes if process.args[0] == "dbus-daemon")
        bus.kill()
        bus.wait()
        self.hold.unlink()
        wait_for(lambda: self.clips.copied() == self.clips.names, "the copy to be complete")
        self.desktop.program.send_signal(signal.SIGTERM)
        self.assertEqual(self.desktop.program.wait(20), 0, self.desktop.said())
        self.assertEqual(self.clips.flaws(), [])


if __name__ == "__main__":
    main(__doc__)
