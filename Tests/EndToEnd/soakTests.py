#!/usr/bin/python3
"""Random deeds beside a model of what the window shows and the disks hold: soakTests.py PROGRAM Soak.TEST

REELKEEP_SOAK_SECONDS says how long, an hour if it is not set; REELKEEP_SOAK_SEED repeats the deeds of a run."""

import difflib
import os
import random
import re
import statistics
import time
from pathlib import Path

from case import DesktopTest, main
from desktop import wait_for
from mountedDisk import take_private_view
from screen import BUTTON, CHOOSER, LABEL, LIST, ROW, SWITCH
from soakDeeds import Deeds
from soakModel import BAR, DATE, Session, button
from soakPlaces import Places
from window import slow_disk

WARM_UP = 0.2  # of the time
SAMPLES = 100  # fewer say nothing about growth
GROWTH = {"Rss": 8 << 10, "Anonymous": 8 << 10, "threads": 1, "descriptors": 1}  # at most; memory in KiB


def seen(element):
    """Everything that the window shows, in reading order, as the model lists it."""
    for child in element.children():
        if not child.showing:
            continue
        role = child.role
        if role in CHOOSER:
            yield f"<{child.text()}>"
        elif role in LIST:
            yield from (f"- {row.name}" for row in child.children() if row.role in ROW)
        elif role in BUTTON:
            yield button(child.name, child.enabled)
        elif role in SWITCH:
            yield f"[{'x' if child.checked else ' '}] {child.name}"
        elif role == "progress bar":
            yield BAR
        elif role in (*LABEL, "status bar"):
            yield DATE if re.fullmatch(r"\d+/\d+/\d{4}, \d+:\d\d", child.name) else child.name
        else:
            yield from seen(child)


def is_same(expected, text):
    return text == expected if isinstance(expected, str) else bool(expected.fullmatch(text))


class Soak(DesktopTest):
    screen = (1700, 1100)

    def setUp(self):
        take_private_view()
        super().setUp()
        self.seed = int(os.environ.get("REELKEEP_SOAK_SEED", random.randrange(1 << 32)))
        self.seconds = float(os.environ.get("REELKEEP_SOAK_SECONDS", 3600))
        print(f"\nseed {self.seed}, {self.seconds:.0f} s", flush=True)
        self.dice = random.Random(self.seed)
        self.places = Places(self.desktop.folder / "media", self.dice, self.enterContext)
        self.session = Session()
        self.deeds = Deeds(self.desktop, self.places, self.session, self.dice)
        self.notes, self.samples = [], []

    def test_the_window_and_the_disks_agree_with_a_model(self):
        self.window = self.start(**slow_disk(self.desktop.folder, 0), **self.deeds.theme.environment())
        self.deeds.attach(self.window, self.check, self.note)
        began = time.monotonic()
        bus_ends = began + self.seconds * self.dice.uniform(0.7, 0.95)
        choices, weights = zip(*self.choices())
        try:
            self.check()
            while time.monotonic() - began < self.seconds:
                deed = self.dice.choices(choices, weights)[0]
                if self.deeds.has_bus and time.monotonic() > bus_ends:
                    deed = self.deeds.kill_bus
                self.do(deed)
        except BaseException:
            print(f"\nseed {self.seed}, after {len(self.notes)} deeds:", *self.notes[-30:], sep="\n", flush=True)
            raise
        print(f"{len(self.notes)} deeds", flush=True)
        self.assert_does_not_grow()
        self.close()
        self.assertEqual(self.places.look(), self.places.expected())
        self.assert_left_no_trace()

    def choices(self):
        deeds = self.deeds
        return ((deeds.choose_camera, 3), (deeds.choose_destination, 3), (deeds.add_place, 3),
                (deeds.add_two_places, 1), (deeds.cancel_a_dialog, 2), (deeds.remove_place, 3),
                (deeds.review_only_the_destination, 1), (deeds.switch, 2), (deeds.pick_destination, 3),
                (deeds.analyse, 10), (deeds.analyse_a_hanging_disk, 2), (deeds.copy, 5), (deeds.copy_slowly, 5),
                (deeds.pull, 1), (deeds.insert, 3), (deeds.change_files, 8), (deeds.resize, 2), (deeds.scroll, 2),
                (deeds.press_keys, 2), (deeds.change_theme, 1), (deeds.start_or_kill_services, 2))

    def do(self, deed):
        note = deed()
        if note is None:
            return
        self.note(note)
        self.check()
        real, expected = self.places.look(), self.places.expected()
        if real != expected:
            differing = sorted(path for path in real.keys() | expected.keys() if real.get(path) != expected.get(path))
            self.fail(f"Not as they must be: {differing}")
        self.samples.append(self.sample())

    def note(self, note):
        self.notes.append(note)

    def check(self):
        """Waits until the window shows what it must."""
        expected = list(self.session.shown())
        shown = []

        def look():
            shown[:] = seen(self.window.element)
            return len(shown) == len(expected) and all(map(is_same, expected, shown))

        try:
            wait_for(look, "the window to show what it must")
        except AssertionError as error:
            expected = [line if isinstance(line, str) else line.pattern for line in expected]
            difference = difflib.unified_diff(expected, shown, "model", "window", n=1, lineterm="")
            raise AssertionError("\n".join((f"{error}:", *difference))) from None
        self.assertIsNone(self.desktop.program.poll(), self.desktop.said())

    def sample(self):
        process = Path("/proc") / str(self.desktop.program.pid)
        lines = (process / "smaps_rollup").read_text(encoding="ascii").splitlines()[1:]
        memory = {line.split()[0]: int(line.split()[1]) for line in lines}
        return {"Rss": memory["Rss:"], "Anonymous": memory["Anonymous:"],
                "threads": len(os.listdir(process / "task")), "descriptors": len(os.listdir(process / "fd"))}

    def assert_does_not_grow(self):
        """From the first quarter after a warm-up to the last."""
        samples = self.samples[int(len(self.samples) * WARM_UP):]
        quarter = len(samples) // 4
        for kind, allowed in GROWTH.items():
            first, last = (statistics.median(sample[kind] for sample in part) if part else 0
                           for part in (samples[:quarter], samples[-quarter:]))
            print(f"{kind}: {first:.0f}, at the end {last:.0f}", flush=True)
            if len(samples) >= SAMPLES:
                self.assertLessEqual(last, first + allowed, kind)


if __name__ == "__main__":
    main(__doc__)
