#!/usr/bin/python3
"""Tests of the real program leave nothing behind, even if they are killed: janitorTests.py PROGRAM Janitor.TEST"""

import contextlib
import os
import random
import signal
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from desktop import wait_for
from janitor import clean_up_after_this_process, end_with_the_runner, processes_of

TESTS = (("endingTests.py", "Endings.test_a_copy_ends_with_the_session"),
         ("endingTests.py", "EndingsOnASlowStick.test_on_ntfs_nothing_is_left"),
         ("deadDiskTests.py", "DeadDisk.test_dialogs_open_while_a_disk_hangs"))
ENDLESS = (("soakTests.py", "Soak.test_the_window_and_the_disks_agree_with_a_model"),)


def contents(files):
    """The texts of those that still exist: processes and devices may end at any moment."""
    texts = []
    for file in files:
        with contextlib.suppress(OSError):
            texts.append(file.read_text(errors="replace"))
    return texts


class Janitor(unittest.TestCase):
    runner = []

    def setUp(self):
        place = Path(self.enterContext(tempfile.TemporaryDirectory(prefix="reelkeep-janitor-")))
        clean_up_after_this_process(place)
        self.folder, self.pictures = place / "left", place / "pictures"  # which interrupted tests save
        for folder in (self.folder, self.pictures):
            folder.mkdir()

    def left(self):
        """What is left of an interrupted test."""
        processes = contents(Path(f"/proc/{process}/cmdline") for process in processes_of(self.folder))
        images = contents(Path("/sys/block").glob("loop*/loop/backing_file"))
        return [*processes, *(image for image in images if str(self.folder) in image), *os.listdir(self.folder)]

    def interrupt(self, blow, script, test, delay):
        command = [*self.runner, sys.executable, "-B", str(Path(__file__).with_name(script)), str(self.program), test]
        victim = subprocess.Popen(command, env={**os.environ, "TMPDIR": str(self.folder)}, cwd=self.pictures,
                                  start_new_session=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        try:
            victim.wait(delay)
        except subprocess.TimeoutExpired:
            blow(victim.pid)
        victim.wait()
        try:
            wait_for(lambda: not self.left(), "everything to be gone")
        except AssertionError as error:
            raise AssertionError(f"{error}: {self.left()}") from None

    def interrupt_at_any_moment(self, blow, tests=TESTS):
        rounds = 4 if "REELKEEP_LONG" in os.environ else 1
        seed = random.randrange(1 << 32)
        print(f"\nseed {seed}", flush=True)
        moments = random.Random(seed)
        for script, test in rounds * tests:
            delay = moments.uniform(0.2, 6)
            with self.subTest(test=test, delay=delay):
                self.interrupt(blow, script, test, delay)

    def test_a_killed_test_leaves_nothing_behind(self):
        self.interrupt_at_any_moment(lambda test: os.kill(test, signal.SIGKILL))

    def test_a_test_whose_runner_is_killed_leaves_nothing_behind(self):
        """The runner is a shell here."""
        self.runner = ["sh", "-c", '"$@"; true', "sh"]
        self.interrupt_at_any_moment(lambda runner: os.kill(runner, signal.SIGKILL), ENDLESS)

    def test_an_interrupted_test_leaves_nothing_behind(self):
        self.interrupt_at_any_moment(lambda test: os.killpg(test, signal.SIGINT))  # as Ctrl-C does


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    end_with_the_runner()
    Janitor.program = Path(sys.argv.pop(1)).absolute()
    unittest.main(verbosity=2)
