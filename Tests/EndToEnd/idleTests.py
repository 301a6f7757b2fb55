#!/usr/bin/python3
"""What the program does while it is idle, one test in a process: idleTests.py PROGRAM Idle.TEST"""

import os
import time
from pathlib import Path

from bigClips import BigClips
from case import DesktopTest, main
from desktop import wait_for
from mountedDisk import MountedDisk, take_private_view
from window import ALL_SAVED, CAMERA, COPY, DESTINATION, REVIEW, found, slow_disk

WATCHED = 5  # seconds
WAKE_UPS = 5  # per second, at most


class Idle(DesktopTest):
    def setUp(self):
        take_private_view()
        super().setUp()
        self.drive = self.enterContext(MountedDisk(self.desktop.folder, "ext4"))
        self.clips = BigClips(self.drive.place, 3, size=1000)

    def process(self):
        return Path("/proc") / str(self.desktop.program.pid)

    def held(self):
        """What the program has open on the disk, its working folder included."""
        places = [self.process() / "cwd", self.process() / "root", *(self.process() / "fd").iterdir()]
        opened = [os.readlink(place) for place in places if place.is_symlink()]
        mapped = (self.process() / "maps").read_text(encoding="utf-8").splitlines()
        return [place for place in opened + mapped if str(self.drive.place) in place]

    def wake_ups(self):
        """How often its threads have been scheduled so far."""
        return sum(int(line.split()[1]) for task in (self.process() / "task").iterdir()
                   for line in (task / "status").read_text(encoding="ascii").splitlines()
                   if line.startswith(("voluntary_ctxt", "nonvoluntary_ctxt")))

    def assert_sleeps(self, when):
        before = self.wake_ups()
        time.sleep(WATCHED)
        count = self.wake_ups() - before
        print(f"\n{when}: {count / WATCHED} wake-ups a second", flush=True)
        self.assertLess(count, WAKE_UPS * WATCHED)

    def test_disks_can_be_ejected_and_the_processor_rests(self):
        window = self.start(**slow_disk(self.desktop.folder, 0))
        window.choose(CAMERA, self.clips.card)
        window.choose(DESTINATION, self.clips.disk)
        dialog = window.ask(REVIEW)
        dialog.type(self.drive.place)
        dialog.cancel()
        self.assertEqual(self.held(), [])

        window.analyse(found(len(self.clips.names)))
        self.assertEqual(self.held(), [])

        hold = self.desktop.folder / "hold"
        hold.write_text("held", encoding="ascii")
        window.button(COPY).press()
        wait_for(lambda: hold.read_bytes() == b"", "the copy to be running")
        self.assertNotEqual(self.held(), [])
        hold.unlink()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.assertEqual(self.held(), [])
        self.assert_sleeps("after a copy")
        self.assertEqual(self.drive.unmount(), "")
        self.close()
        self.assert_left_no_trace()


if __name__ == "__main__":
    main(__doc__)
