#!/usr/bin/python3
"""The computer stays awake while the program copies, and no longer; one test in a process:
sleepTests.py PROGRAM Sleep.TEST"""

import os
import signal
import sys
import time
from pathlib import Path

from bigClips import BigClips
from case import DesktopTest, main
from desktop import stop, until, wait_for
from hands import click, shows_window, strike, type_text
from window import ALL_SAVED, ANALYSE, CAMERA, COPY, DESTINATION, found, slow_disk


class Sleep(DesktopTest):
    screen = (1200, 2200)  # Large enough for the whole window.

    def setUp(self):
        super().setUp()
        self.clips = BigClips(self.desktop.folder / "media", 3, size=1000)
        self.log = self.desktop.folder / "sleep.log"
        self.hold = self.desktop.folder / "hold"

    def serve(self, *services, bus=None):
        """Starts services that prevent suspending; returns their process."""
        self.desktop.launch([sys.executable, "-B", str(Path(__file__).with_name("sleepServices.py")), "{fd}", str(self.log),
                             bus or self.desktop.own["DBUS_SESSION_BUS_ADDRESS"], *services], self.desktop.own)
        return self.desktop.processes[-1]

    def system_bus(self):
        return self.desktop.launch(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address={fd}",
                                    f"--address=unix:path={self.desktop.folder}/system-bus"], self.desktop.own)

    def session_bus(self):
        """The process of the session bus."""
        return next(process for process in self.desktop.processes if process.args[0] == "dbus-daemon")

    def events(self):
        return self.log.read_text(encoding="utf-8").splitlines() if self.log.exists() else []

    def copy_with_events(self, held, released):
        """Copies; the services report the events `held` during the copy, and `released` after it."""
        window = self.analysed()
        self.begin_copy(window)
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, released)

    def wait_for_events(self, *events):
        try:
            wait_for(lambda: len(self.events()) >= len(events), "the events")
        finally:
            self.assertEqual(self.events(), list(events))

    def analysed(self, **more):
        """A window that has found what is missing. The disk does not respond while `hold` exists."""
        window = self.start(**slow_disk(self.desktop.folder, 0), **more)
        window.choose(CAMERA, self.clips.card)
        window.choose(DESTINATION, self.clips.disk)
        window.analyse(found(len(self.clips.names)))
        return window

    def begin_copy(self, window):
        self.hold.write_text("held", encoding="ascii")
        window.button(COPY).press()
        wait_for(lambda: self.hold.read_bytes() == b"", "the copy to be running")

    def finish_copy(self, window):
        self.hold.unlink()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()

    def test_the_portal_grants_a_lock_while_a_copy_runs(self):
        self.serve("portal")
        window = self.analysed()
        self.assertEqual(self.events(), [])
        self.begin_copy(window)
        first = ["portal holds 1: 4 Copiando videos"]
        self.wait_for_events(*first)
        self.finish_copy(window)
        first.append("portal releases 1")
        self.wait_for_events(*first)

        place = self.clips.disk / self.clips.names[0]
        place.unlink()
        window.analyse(found(1))
        self.begin_copy(window)
        second = [*first, "portal holds 2: 4 Copiando videos"]
        self.wait_for_events(*second)
        place.touch()  # Another program takes the name in the meantime.
        self.hold.unlink()
        wait_for(lambda: window.status().startswith("No he podido copiar los videos: "), "the copy to fail")
        second.append("portal releases 2")
        self.wait_for_events(*second)

        window.wait_until_idle()
        place.unlink()
        self.begin_copy(window)
        third = [*second, "portal holds 3: 4 Copiando videos"]
        self.wait_for_events(*third)
        self.close()
        self.wait_for_events(*third, "portal releases 3", "holder left", "holder left", "holder left")

    def test_a_portal_that_answers_late_holds_nothing(self):
        self.serve("latePortal")
        window = self.analysed()
        for copies in (1, 2):
            window.button(COPY).press()
            window.wait_for_status(ALL_SAVED)
            window.wait_until_idle()
            if copies == 1:
                for clip in self.clips.copied():
                    (self.clips.disk / clip).unlink()
                window.analyse(found(len(self.clips.names)))
        self.assertEqual(self.events(), ["portal called"])  # once: its answer is still to come
        Path(f"{self.log}.answer").touch()
        self.wait_for_events("portal called", "portal holds 1: 4 Copiando videos", "portal releases 1")

    def test_the_screen_saver_is_queried_if_the_portal_refuses(self):
        self.serve("refusingPortal", "screenSaver")
        self.copy_with_events(["portal refuses", "screen saver holds 1: Reelkeep, Copiando videos"],
                              "screen saver releases 1")

    def test_the_screen_saver_is_queried_if_the_portal_refuses_by_signal(self):
        for portal, moment in {"portalRefusingAfterwards": "after", "portalRefusingBeforehand": "before"}.items():
            with self.subTest(f"{moment} its reply"):
                self.log.unlink(missing_ok=True)
                for clip in self.clips.copied():
                    (self.clips.disk / clip).unlink()
                services = self.serve(portal, "screenSaver")
                self.copy_with_events(["portal holds 1: 4 Copiando videos", "portal drops 1",
                                       "screen saver holds 2: Reelkeep, Copiando videos"], "screen saver releases 2")
                self.close()
                stop(services)

    def test_a_lock_that_the_portal_drops_is_requested_again(self):
        services = self.serve("portal", "screenSaver")
        window = self.analysed()
        self.begin_copy(window)
        held = ["portal holds 1: 4 Copiando videos"]
        self.wait_for_events(*held)
        services.send_signal(signal.SIGUSR1)
        held += ["portal drops 1", "portal holds 2: 4 Copiando videos"]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "portal releases 2")

    def test_a_lock_that_is_dropped_again_and_again_is_requested_less_and_less_often(self):
        self.serve("forgetfulPortal")
        window = self.analysed()
        self.begin_copy(window)
        moments = []
        for number in range(1, 4):
            wait_for(lambda: f"portal drops {number}" in self.events(), f"request {number}")
            moments.append(time.monotonic())
        self.assertGreater(moments[2] - moments[1], 1.5)
        self.finish_copy(window)

    def test_a_report_on_another_request_is_ignored(self):
        self.serve("confusedPortal")
        self.copy_with_events(["portal holds 1: 4 Copiando videos", "portal drops another"], "portal releases 1")

    def test_a_lock_is_requested_again_when_its_service_leaves_the_bus(self):
        for service, held in {"portal": "portal holds 1: 4 Copiando videos",
                              "screenSaver": "screen saver holds 1: Reelkeep, Copiando videos"}.items():
            with self.subTest(service):
                self.log.unlink(missing_ok=True)
                for clip in self.clips.copied():
                    (self.clips.disk / clip).unlink()
                services = self.serve(service)
                window = self.analysed()
                self.begin_copy(window)
                self.wait_for_events(held)
                stop(services)
                services = self.serve(service)
                self.wait_for_events(held, held)
                self.finish_copy(window)
                self.wait_for_events(held, held, held.split(" holds")[0] + " releases 1")
                self.close()
                stop(services)

    def test_a_service_without_the_lock_may_leave_the_bus(self):
        other = self.serve("screenSaver")
        self.serve("portal")
        window = self.analysed()
        self.begin_copy(window)
        held = "portal holds 1: 4 Copiando videos"
        self.wait_for_events(held)
        stop(other)
        self.serve("screenSaver")  # its arrival is reported after that departure
        self.finish_copy(window)
        self.wait_for_events(held, "portal releases 1")

    def test_a_lock_that_the_login_manager_drops_is_requested_again(self):
        bus = self.system_bus()
        services = self.serve("loginManager", bus=bus)
        window = self.analysed(DBUS_SYSTEM_BUS_ADDRESS=bus)
        self.begin_copy(window)
        held = ["login manager holds: sleep, Reelkeep, Copiando videos, block"]
        self.wait_for_events(*held)
        services.send_signal(signal.SIGUSR1)
        held += ["login manager drops", *held]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "login manager releases")

    def test_a_service_that_arrives_after_all_have_refused_is_queried(self):
        window = self.analysed()  # Without any service or system bus.
        self.begin_copy(window)
        self.serve("portal")
        held = ["portal holds 1: 4 Copiando videos"]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "portal releases 1")

    def test_a_service_that_arrives_while_others_are_queried_is_queried_too(self):
        bus = self.system_bus()
        self.serve("lateRefusingLoginManager", bus=bus)
        window = self.analysed(DBUS_SYSTEM_BUS_ADDRESS=bus)
        self.begin_copy(window)
        self.wait_for_events("login manager called")
        self.serve("screenSaver")
        Path(f"{self.log}.answer").touch()
        held = ["login manager called", "screen saver holds 1: Reelkeep, Copiando videos"]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "screen saver releases 1")

    def test_the_login_manager_is_queried_if_nothing_else_answers(self):
        bus = self.system_bus()
        self.serve("loginManager", bus=bus)
        window = self.analysed(DBUS_SYSTEM_BUS_ADDRESS=bus)
        self.begin_copy(window)
        held = ["login manager holds: sleep, Reelkeep, Copiando videos, block"]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "login manager releases")

    def test_copies_silently_if_no_service_answers(self):
        self.copy_watched()
        launcher = self.bus_launcher()
        nowhere = f"unix:path={self.desktop.folder}/nowhere"
        for name, bus in {"no bus": None, "dead bus": nowhere}.items():
            with self.subTest(name):
                for clip in self.clips.copied():
                    (self.clips.disk / clip).unlink()
                # A locale that is installed everywhere: newer toolkits print a warning if it is not.
                self.copy_blindly(DBUS_SESSION_BUS_ADDRESS=bus, DBUS_SYSTEM_BUS_ADDRESS=nowhere, LC_ALL="C.UTF-8",
                                  PATH=f"{launcher.parent}:{os.environ['PATH']}")
                self.assertEqual(self.desktop.said(), "")
        self.assertFalse(launcher.with_name("started").exists())
        self.assert_left_no_trace()

    def bus_launcher(self):
        """Replaces the program that the D-Bus library starts if there is no bus; creates the file "started" beside it."""
        launcher = self.desktop.folder / "bin" / "dbus-launch"
        launcher.parent.mkdir()
        launcher.write_text(f"#!/bin/sh\ntouch '{launcher.with_name('started')}'\nexit 1\n", encoding="ascii")
        launcher.chmod(0o755)
        return launcher

    def copy_watched(self):
        """Copies, and remembers the position and colour of each button when it is to be pressed."""
        window = self.start()
        self.spots = {}
        for question, folder in ((CAMERA, self.clips.card), (DESTINATION, self.clips.disk)):
            self.remember(window, question[0])
            window.choose(question, folder)
        self.remember(window, ANALYSE)
        window.analyse(found(len(self.clips.names)))
        self.remember(window, COPY)
        window.button(COPY).press()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.close()

    def remember(self, window, button):
        wait_for(lambda: window.button(button).enabled, f"{button!r} to be enabled")
        x, y, _, height = window.button(button).box()
        place = x + 6, y + height // 2
        wait_for(lambda: self.desktop.colour(*place)[0] != self.desktop.colour(*place)[1], f"{button!r} in colour")
        self.spots[button] = place, self.desktop.colour(*place)

    def copy_blindly(self, **more):
        """The same with mouse and keyboard alone: without a bus the window cannot be read."""
        self.desktop.run(self.program, **more)
        for (button, title), folder in ((CAMERA, self.clips.card), (DESTINATION, self.clips.disk)):
            self.click(button, lambda: shows_window(title))
            type_text(folder)
            until(lambda: shows_window("Reelkeep"), lambda: strike("Return"), "the dialog to close", patience=10)
        self.click(ANALYSE, lambda: self.ready(COPY))
        self.click(COPY, lambda: self.clips.copied() == self.clips.names)
        self.close()
        self.assertEqual(self.clips.flaws(), [])

    def ready(self, button):
        place, colour = self.spots[button]
        return shows_window("Reelkeep") and self.desktop.colour(*place) == colour

    def click(self, button, effect):
        wait_for(lambda: self.ready(button), f"{button!r} to be ready")
        until(effect, lambda: click(*self.spots[button][0]), f"an effect of {button!r}")

    def test_the_bus_in_the_runtime_folder_is_used_if_no_address_is_set(self):
        self.serve("portal")
        (self.desktop.runtime / "bus").hardlink_to(self.desktop.folder / "bus")
        window = self.analysed(DBUS_SESSION_BUS_ADDRESS=None)
        self.begin_copy(window)
        held = ["portal holds 1: 4 Copiando videos"]
        self.wait_for_events(*held)
        self.finish_copy(window)
        self.wait_for_events(*held, "portal releases 1")

    def test_a_copy_survives_the_end_of_the_bus(self):
        system_bus = self.system_bus()
        self.serve("portal")
        self.serve("loginManager", bus=system_bus)
        self.begin_copy(self.analysed(DBUS_SYSTEM_BUS_ADDRESS=system_bus))
        self.wait_for_events("portal holds 1: 4 Copiando videos")
        bus = self.session_bus()
        bus.kill()
        bus.wait()
        wait_for(lambda: "login manager holds: sleep, Reelkeep, Copiando videos, block" in self.events(), "another lock")
        self.hold.unlink()
        wait_for(lambda: self.clips.copied() == self.clips.names, "the copy to be complete")
        wait_for(lambda: "login manager releases" in self.events(), "the lock to be given back")
        self.desktop.program.send_signal(signal.SIGTERM)
        self.assertEqual(self.desktop.program.wait(20), 0, self.desktop.said())
        self.assertEqual(self.clips.flaws(), [])

    def test_a_bus_that_hangs_delays_nothing(self):
        self.serve("portal")
        window = self.analysed()
        bus = self.session_bus()
        bus.send_signal(signal.SIGSTOP)
        try:
            window.button(COPY).press()
            window.wait_for_status(ALL_SAVED)
            window.wait_until_idle()
            self.desktop.program.send_signal(signal.SIGTERM)
            self.assertEqual(self.desktop.program.wait(5), 0, self.desktop.said())
        finally:
            bus.send_signal(signal.SIGCONT)
        self.assertEqual(self.clips.flaws(), [])


if __name__ == "__main__":
    main(__doc__)
