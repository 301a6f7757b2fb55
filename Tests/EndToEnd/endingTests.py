#!/usr/bin/python3
"""The end of the program in the middle of its work, one test in a process: endingTests.py PROGRAM Endings.TEST"""

import os
import random
import resource
import shutil
import signal
import time

from bigClips import MEBIBYTE, BigClips
from case import DesktopTest, main
from desktop import until, wait_for
from hands import close_window
from mountedDisk import take_private_view
from sessionManager import SessionManager
from slowStick import SlowStick
from window import ALL_SAVED, ANALYSE, CAMERA, COPY, DESTINATION, found, slow_disk

SOON = 1.0  # seconds


def by(blow):
    """Makes an ending of something that reliably reaches the program; it returns how long the program took."""

    def end(program):
        began = time.monotonic()
        blow(program)
        program.wait(20)
        return time.monotonic() - began

    return end


def send(number):
    return by(lambda program: program.send_signal(number))


@by
def send_all_repeatedly(program):
    """As service managers and closing terminals do."""
    while program.poll() is None:
        for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGCONT, signal.SIGINT):
            program.send_signal(number)
        time.sleep(0.002)


ENDINGS = {"closing": close_window, "SIGTERM": send(signal.SIGTERM), "SIGINT": send(signal.SIGINT),
           "SIGHUP": send(signal.SIGHUP), "many signals": send_all_repeatedly}


class Endings(DesktopTest):
    def begin(self, **more):
        """A window with the card and the disk chosen."""
        window = self.start(**more)
        window.choose(CAMERA, self.clips.card)
        window.choose(DESTINATION, self.clips.disk)
        return window

    def begin_scan(self, **more):
        """A window that reads a slow card."""
        window = self.begin(**slow_disk(self.desktop.folder, 0, look=20), **more)
        window.button(ANALYSE).press()
        window.wait_for_status("Escaneando videos...")
        return window

    def begin_copy(self, **more):
        """A window that copies to a slow disk, when one more clip is complete and the next one is growing."""
        window = self.begin(**slow_disk(self.desktop.folder, 30), **more)
        before = self.clips.copied()
        window.analyse(found(len(self.clips.names) - len(before)))
        window.button(COPY).press()
        wait_for(lambda: len(self.clips.copied()) > len(before) and self.clips.growing() > 8 * MEBIBYTE,
                 "one clip to be copied and the next to be growing")
        return window

    def begin_held_copy(self, **more):
        """A window that copies to a disk that has stopped responding in the middle of a clip."""
        window = self.begin_copy(**more)

        def hold():
            self.hold.unlink(missing_ok=True)
            wait_for(self.clips.growing, "a clip to be growing")
            self.hold.write_text("held", encoding="ascii")
            wait_for(lambda: self.hold.read_bytes() == b"", "the disk to hold")

        until(self.clips.growing, hold, "the disk to hold in the middle of a clip", patience=0)
        return window

    def end(self, name, ending, status=0, held=False):
        """Ends the program: it must end soon, without a crash, and leave only complete clips. Only a held disk keeps what
        was under way, in hiding."""
        took = ending(self.desktop.program)
        print(f"\n{name}: {took * 1000:.0f} ms", flush=True)
        self.assertEqual(self.desktop.program.returncode, status, self.desktop.said())
        self.assertLess(took, SOON)
        flaws = self.clips.flaws()
        self.assertEqual(bool(flaws), held, flaws)
        self.assertTrue(all(flaw.endswith(".reelkeep-copia") for flaw in flaws), flaws)

    def complete(self):
        """The next run completes the copy."""
        window = self.begin()
        left = len(self.clips.names) - len(self.clips.copied())
        window.analyse(found(left))
        window.button(COPY).press()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.close()
        self.assertEqual(self.clips.copied(), self.clips.names)
        self.assertEqual(self.clips.flaws(), [])
        self.assert_left_no_trace()

    def test_a_copy_can_end_in_every_way_and_the_next_run_completes_it(self):
        self.clips = BigClips(self.desktop.folder / "media", 12)
        for name, ending in ENDINGS.items():
            with self.subTest(name):
                shutil.rmtree(self.clips.disk / "DCIM", ignore_errors=True)
                self.begin_copy()
                self.end(name, ending)
                self.assertLess(len(self.clips.copied()), len(self.clips.names))
        self.complete()

    def test_a_scan_ends_with_the_window_and_at_a_signal(self):
        self.clips = BigClips(self.desktop.folder / "media", 500, MEBIBYTE)
        for name in ("closing", "SIGHUP"):
            with self.subTest(name):
                self.begin_scan()
                self.end(name, ENDINGS[name])
                self.assertEqual(os.listdir(self.clips.disk), [])
        self.assert_left_no_trace()

    def test_work_ends_with_the_display(self):
        self.clips = BigClips(self.desktop.folder / "media", 300, 16 * MEBIBYTE)
        for begin in (self.begin_scan, self.begin_copy):
            with self.subTest(begin.__name__):
                self.end_with_display(begin)
                self.assertIn("Did the X11 server die?", self.desktop.said())
        self.assertLess(len(self.clips.copied()), len(self.clips.names))
        self.assert_left_no_trace()

    def end_with_display(self, begin, held=False):
        begin(DISPLAY=self.desktop.launch_display())
        display = self.desktop.processes[-2]
        self.end(f"display, {begin.__name__}", by(lambda _: display.kill()), status=1, held=held)

    def test_a_copy_ends_with_the_session(self):
        self.clips = BigClips(self.desktop.folder / "media", 12)
        session = self.enterContext(SessionManager(self.desktop))
        self.hold = self.desktop.folder / "hold"
        window = self.begin_held_copy(SESSION_MANAGER=session.address)
        session.wait_for_event("joined")
        session.send_all("save")
        session.wait_for_event("saved")
        self.assertTrue(window.status().startswith("Copiando "), "a request to save must not end the program")
        self.hold.unlink()
        self.end("logout", by(lambda _: session.send_all("die")))
        self.assertLess(len(self.clips.copied()), len(self.clips.names))
        self.complete()

    def test_work_ends_while_a_dialog_is_open(self):
        self.clips = BigClips(self.desktop.folder / "media", 300, 16 * MEBIBYTE)
        for begin in (self.begin_scan, self.begin_copy):
            with self.subTest(begin.__name__):
                begin().ask(CAMERA)
                self.end(f"SIGTERM at a dialog, {begin.__name__}", send(signal.SIGTERM))
        self.assert_left_no_trace()

    def test_a_disk_that_does_not_respond_does_not_delay_the_end(self):
        """The only case in which clips that were under way are left, under hidden names of the program."""
        self.clips = BigClips(self.desktop.folder / "media", 16)
        self.hold = self.desktop.folder / "hold"
        self.begin_held_copy()
        self.end("closing, held", close_window, held=True)
        self.hold.unlink()
        self.end_with_display(self.begin_held_copy, held=True)
        self.hold.unlink()
        self.complete()

    def test_a_broken_pipe_ends_nothing(self):
        """As when the program was started from a terminal that closes, with its output piped to another program."""
        self.clips = BigClips(self.desktop.folder / "media", 8)
        reading, writing = os.pipe()
        os.close(reading)
        self.begin_copy(output=writing, QT_LOGGING_RULES="qt.*=true")
        os.close(writing)
        self.desktop.program.send_signal(signal.SIGPIPE)
        wait_for(lambda: self.clips.copied() == self.clips.names or self.desktop.program.poll() is not None,
                 "the copy to be complete")
        self.assertIsNone(self.desktop.program.poll())
        self.end("closing after a broken pipe", close_window)
        self.assertEqual(self.clips.copied(), self.clips.names)

    def test_a_signal_that_its_starter_ignores_ends_nothing(self):
        """As under nohup, when the terminal closes."""
        self.clips = BigClips(self.desktop.folder / "media", 8)
        start = self.desktop.folder / "start"
        start.write_text(f"#!/bin/sh\ntrap '' HUP\nexec '{self.program}'\n", encoding="utf-8")
        start.chmod(0o755)
        self.program = start
        window = self.begin_copy()
        self.desktop.program.send_signal(signal.SIGHUP)
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.end("SIGTERM", ENDINGS["SIGTERM"])
        self.assertEqual(self.clips.copied(), self.clips.names)

    def test_a_limit_on_the_size_of_files_ends_nothing(self):
        """A clip that is still growing exceeds it, which is found only in the middle of its copy."""
        self.clips = BigClips(self.desktop.folder / "media", 16)
        self.hold = self.desktop.folder / "hold"
        window = self.begin_held_copy()
        resource.prlimit(self.desktop.program.pid, resource.RLIMIT_FSIZE, (self.clips.size, self.clips.size))
        for name in self.clips.names:
            with open(self.clips.card / name, "ab") as clip:
                clip.truncate(2 * self.clips.size)
        self.hold.unlink()
        wait_for(lambda: window.status().startswith("No he podido copiar los videos: "), "the failure")
        self.assertIn("el archivo es demasiado grande para este disco", window.status())
        self.close()

    def test_a_window_closes_at_any_moment_of_a_copy(self):
        rounds = 50 if "REELKEEP_LONG" in os.environ else 1
        seed = random.randrange(1 << 32)
        print(f"\nseed {seed}", flush=True)
        moments = random.Random(seed)
        self.clips = BigClips(self.desktop.folder / "media", 12)
        for number in range(rounds):
            with self.subTest(number):
                window = self.begin(**slow_disk(self.desktop.folder, 20))
                window.analyse(found(len(self.clips.names)))
                window.button(COPY).press()
                time.sleep(moments.uniform(0, 2))
                self.end(f"closing, {len(self.clips.copied())} copied", close_window)
                if (self.clips.disk / "DCIM").exists():  # otherwise it was closed before it made the first folder
                    shutil.rmtree(self.clips.disk / "DCIM")
        self.assert_left_no_trace()


class EndingsOnASlowStick(Endings):
    def setUp(self):
        if not all(os.access(device, os.R_OK | os.W_OK) for device in ("/dev/fuse", "/dev/loop-control")):
            self.skipTest("SKIPPED: a slow stick needs root, FUSE and loop devices")
        take_private_view()
        super().setUp()

    def end_copies_at_any_moment(self, kind):
        stick = self.enterContext(SlowStick(os.environ["REELKEEP_FAULT_DISK"], kind, self.desktop.folder / "stick"))
        rounds = 20 if "REELKEEP_LONG" in os.environ else 1
        seed = random.randrange(1 << 32)
        print(f"\nseed {seed}", flush=True)
        moments = random.Random(seed)
        self.clips = BigClips(self.desktop.folder / "media", 12, disk=stick.place / "disk")
        for speed in (5, 20, 50):
            for number in range(rounds):
                with self.subTest(speed=speed, number=number):
                    window = self.begin()
                    window.analyse(found(len(self.clips.names)))
                    stick.limit(speed)
                    window.button(COPY).press()
                    time.sleep(moments.uniform(0.1, 2.5))
                    took = close_window(self.desktop.program)
                    print(f"{kind} at {speed} MB/s: {took * 1000:.0f} ms", flush=True)
                    stick.limit(0)
                    flaws = self.clips.flaws()
                    shutil.rmtree(self.clips.disk / "DCIM", ignore_errors=True)
                    self.assertEqual(self.desktop.program.returncode, 0, self.desktop.said())
                    self.assertLess(took, SOON)
                    self.assertEqual(flaws, [])

    def test_on_exfat_nothing_is_left(self):
        self.end_copies_at_any_moment("exfat")

    def test_on_ntfs_nothing_is_left(self):
        self.end_copies_at_any_moment("ntfs")


if __name__ == "__main__":
    main(__doc__)
