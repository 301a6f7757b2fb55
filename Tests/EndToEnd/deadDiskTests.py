#!/usr/bin/python3
"""Disks that are pulled out or stop responding in the middle of work, one test in a process:
deadDiskTests.py PROGRAM DeadDisk.TEST"""

import os
import subprocess
import time
from pathlib import Path

from bigClips import MEBIBYTE, BigClips
from case import DesktopTest, main
from desktop import wait_for
from mountedDisk import MountedDisk, take_private_view
from screen import LIST
from window import ALL_SAVED, ANALYSE, CAMERA, COPY, DESTINATION, found, slow_disk

PULLED = "el disco se ha desconectado."


class DeadDisk(DesktopTest):
    def setUp(self):
        take_private_view()
        super().setUp()
        self.drive = self.enterContext(MountedDisk(self.desktop.folder, "ntfs"))
        self.hold = self.desktop.folder / "hold"

    def analysed(self, clips, **slowness):
        """A window that has found that nothing is saved yet."""
        window = self.start(**slow_disk(self.desktop.folder, **slowness))
        window.choose(CAMERA, clips.card)
        window.choose(DESTINATION, clips.disk)
        window.analyse(found(len(clips.names)))
        return window

    def holds_open(self, folder):
        descriptors = Path(f"/proc/{self.desktop.program.pid}/fd")
        return any(os.path.realpath(descriptor) == str(folder) for descriptor in descriptors.iterdir())

    def wait_for_failure(self, window, beginning):
        wait_for(lambda: window.status().startswith(beginning) and window.status().endswith(PULLED),
                 f"{beginning!r} {PULLED!r}")
        window.wait_until_idle()

    def pull_in_mid_copy(self, clips):
        window = self.analysed(clips, milliseconds=30)
        pending = window.pending()
        window.button(COPY).press()
        wait_for(lambda: clips.copied() and clips.growing() > 4 * MEBIBYTE,
                 "one clip to be copied and the next to be growing")
        self.drive.pull()
        self.wait_for_failure(window, "No he podido copiar los videos: ")
        self.assertEqual(window.pending(), pending)
        return window

    def complete(self, window, clips):
        """Inserts the disk again and completes the copy."""
        self.drive.unmount("-l")
        self.drive.mount()
        left = len(clips.names) - len(clips.copied())
        window.analyse(found(left))
        window.button(COPY).press()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.assertEqual(clips.flaws(), [])
        self.close()
        self.assert_left_no_trace()

    def test_a_card_pulled_in_mid_scan_is_a_failure_and_earlier_results_stay(self):
        clips = BigClips(self.desktop.folder / "media", 60, size=1000, card=self.drive.place / "card")
        window = self.analysed(clips, milliseconds=0, look=20)
        pending, cards = window.pending(), window.cards()
        window.button(ANALYSE).press()
        # Before it is opened, a pulled card would be a missing folder, which is not a failure.
        wait_for(lambda: self.holds_open(clips.card), "the program to read the card")
        self.drive.pull()
        self.wait_for_failure(window, "No he podido escanear las carpetas: ")
        self.assertEqual(window.pending(), pending)
        self.assertEqual(window.cards(), cards)
        self.complete(window, clips)

    def test_a_card_pulled_in_mid_copy_is_a_failure_and_the_next_copy_completes_it(self):
        clips = BigClips(self.desktop.folder / "media", 11, size=16 * MEBIBYTE, card=self.drive.place / "card")
        window = self.pull_in_mid_copy(clips)
        self.assertEqual(clips.growing(), 0)
        self.complete(window, clips)

    def test_a_disk_pulled_in_mid_copy_is_a_failure_and_the_next_copy_completes_it(self):
        clips = BigClips(self.desktop.folder / "media", 11, size=16 * MEBIBYTE, disk=self.drive.place / "disk")
        self.complete(self.pull_in_mid_copy(clips), clips)

    def test_the_window_works_while_a_disk_does_not_respond(self):
        clips = BigClips(self.desktop.folder / "media", 3, size=1000)
        window = self.analysed(clips, milliseconds=0)
        self.hold.write_text("held", encoding="ascii")
        window.button(COPY).press()
        wait_for(lambda: self.hold.read_bytes() == b"", "the disk to hold")

        window.switch().press()
        wait_for(lambda: not window.switch().checked, "the switch to be off")
        window.maximize()
        window.choose(CAMERA, self.desktop.home)
        self.assertTrue(window.status().startswith("Copiando 0/3: "), window.status())
        self.assertFalse(window.button(ANALYSE).enabled)

        window.choose(CAMERA, clips.card)
        self.hold.unlink()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.assertEqual(clips.flaws(), [])

    def test_dialogs_open_while_a_disk_hangs(self):
        subprocess.run(["mount", "-t", "tmpfs", "tmpfs", "/media"], check=True)
        good = self.enterContext(MountedDisk(Path("/media"), "ext4"))
        hanging = self.enterContext(MountedDisk(Path("/media"), "ntfs"))
        window = self.start()
        self.assertEqual(self.offered(window) & {good.place.name, hanging.place.name},
                         {good.place.name, hanging.place.name})
        dialog = window.ask(CAMERA)
        dialog.go(hanging.place)
        dialog.accept()
        hanging.hang()
        began = time.monotonic()
        dialog = window.ask(DESTINATION)
        self.assertEqual(dialog.folder(), self.desktop.home)
        dialog.cancel()
        offered = self.offered(window)
        window.choose(DESTINATION, good.place)
        self.assertLess(time.monotonic() - began, 10)
        self.assertIn(good.place.name, offered)
        self.assertNotIn(hanging.place.name, offered)

    def offered(self, window):
        """The names in the sidebar of the folder dialog."""
        dialog = window.ask(DESTINATION)
        names = {row.name for row in dialog.window.find(LIST, "Lugares").children()}
        dialog.cancel()
        return names


if __name__ == "__main__":
    main(__doc__)
