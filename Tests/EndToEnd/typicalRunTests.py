#!/usr/bin/python3
"""The real program, driven through its window and dialogs on a sample card and disks, one test in a process:
typicalRunTests.py PROGRAM TypicalRun.TEST"""

import json
import subprocess
from pathlib import Path

from case import DesktopTest, main, snapshot
from desktop import wait_for
from window import (ALL_SAVED, ANALYSE, CAMERA, CHOOSE_FIRST, COPY, DESTINATION, NOTHING_TO_COPY, REVIEW, found, slow_disk)

MAKE_SAMPLE = Path(__file__).resolve().parents[2] / "scripts" / "make-sample"


class TypicalRun(DesktopTest):
    def setUp(self):
        super().setUp()
        self.media = self.desktop.folder / "media"
        subprocess.run([str(MAKE_SAMPLE), str(self.media)], check=True)
        self.sample = json.loads((self.media / "manifest.json").read_text(encoding="utf-8"))
        self.card = self.media / self.sample["card"]
        self.destination = self.media / self.sample["copyDestination"]
        self.reviewed = [self.media / name for name in self.sample["reviewLocations"]]
        self.missing = self.sample["missing"]
        self.before = snapshot(self.media)

    def choose_all(self, window):
        window.choose(CAMERA, self.card)
        window.choose(DESTINATION, self.destination)
        dialog = window.ask(REVIEW)
        dialog.select(self.media, [folder.name for folder in self.reviewed])
        dialog.accept()
        wait_for(lambda: "3 ubicaciones seleccionadas" in window.texts(), "three review locations")

    def assert_counts(self, window, on_card, saved, pending):
        self.assertEqual(window.cards(), {"En camara": on_card, "Ya en destinos": saved, "Pendientes": pending})

    def assert_only_copied(self, root, targets):
        """Nothing was written except the missing videos, at `targets` in `root`, and their folders."""
        expected = dict(self.before)
        for video, target in zip(self.missing, targets):
            source = self.card / video["path"]
            place = (root / target).relative_to(self.media)
            expected[str(place)] = (source.stat().st_mtime_ns, source.read_bytes())
            for folder in list(place.parents)[:-1]:
                expected[str(folder)] = "folder"
        after = snapshot(self.media)
        self.assertEqual(sorted(after), sorted(expected))
        self.assertEqual([path for path in after if after[path] != expected[path]], [])

    def test_copies_exactly_what_is_missing(self):
        window = self.start(**slow_disk(self.desktop.folder, 150))
        self.assertEqual(window.status(), CHOOSE_FIRST)
        self.assert_counts(window, 0, 0, 0)
        self.assertFalse(window.button(ANALYSE).enabled)
        self.assertFalse(window.button(NOTHING_TO_COPY).enabled)

        self.choose_all(window)
        self.assertTrue(window.button(ANALYSE).enabled)

        count, on_card = len(self.missing), self.sample["onCard"]
        window.analyse(found(count))
        self.assert_counts(window, on_card, on_card - count, count)
        rows = window.pending()
        self.assertEqual([row.split(", ")[:2] for row in rows], [[video["name"], video["path"]] for video in self.missing])
        self.assertEqual(snapshot(self.media), self.before)

        seen, bars = self.watch_copy(window)
        names = [video["name"] for video in self.missing]
        reports = [f"Copiando {i}/{count}: {name}" for i, name in enumerate(names)]
        self.assertEqual([text for text in seen if text in reports], reports)
        self.assertEqual(bars, sorted(bars))
        self.assertEqual(seen[-1], ALL_SAVED)
        self.assert_counts(window, on_card, on_card, 0)
        self.assertEqual(window.pending(), [])
        self.assertFalse(window.button(NOTHING_TO_COPY).enabled)

        self.close()
        self.assert_only_copied(self.destination, [video["path"] for video in self.missing])
        self.assert_left_no_trace()

    def watch_copy(self, window):
        """Copies; returns the different status texts in the order in which they appeared, and the values of the bar."""
        analyse, copy = window.button(ANALYSE), window.button(COPY)
        seen, bars = [], []
        window.progress()
        copy.press()

        def look():
            text, bar = window.status(), window.progress()
            if not seen or seen[-1] != text:
                seen.append(text)
            if bar is not None and text.startswith("Copiando "):
                bars.append(bar)
            if text.startswith("Copiando 1/"):
                self.assertFalse(analyse.enabled or copy.enabled)
            return text == ALL_SAVED

        wait_for(look, "the copy to end", timeout=60)
        window.wait_until_idle()
        return seen, bars

    def test_copies_flat_to_the_disk_picked_in_the_chooser(self):
        window = self.start()
        self.choose_all(window)
        window.switch().press()
        wait_for(lambda: not window.switch().checked, "the switch to be off")
        disk = self.reviewed[0]
        window.chooser().choose(disk.name)
        window.analyse(found(len(self.missing)))

        # Two of the missing clips have the same name, so in a flat copy the second finds its name taken.
        window.button(COPY).press()
        window.wait_for_status(found(1))
        window.wait_until_idle()
        self.assertEqual([row.split(", ")[1] for row in window.pending()], ["DCIM/101CANON/MVI_0001.MOV"])

        self.close()
        self.missing = [video for video in self.missing if video["path"] != "DCIM/101CANON/MVI_0001.MOV"]
        self.assert_only_copied(disk, [video["name"] for video in self.missing])
        self.assert_left_no_trace()

    def test_dialogs_choose_several_folders_by_keyboard_and_none_when_cancelled(self):
        window = self.start()
        for question in (CAMERA, DESTINATION, REVIEW):
            dialog = window.ask(question)
            dialog.type(self.card)
            dialog.cancel()
        self.assertNotIn(str(self.card), window.texts())
        self.assertEqual(window.texts().count("Pendiente"), 3)

        # Sorted by name the two are adjacent, so the keyboard can select both.
        dialog = window.ask(REVIEW)
        dialog.select(self.media, ["Archivo 2026", "Boda Marta"], by_keyboard=True)
        dialog.accept()
        wait_for(lambda: "2 ubicaciones seleccionadas" in window.texts(), "two review locations")
        self.assertFalse(window.button(ANALYSE).enabled)

        self.close()
        self.assertEqual(snapshot(self.media), self.before)
        self.assert_left_no_trace()


if __name__ == "__main__":
    main(__doc__)
