#!/usr/bin/python3
"""Events that the program sends to a screen reader, one test in a process:
screenReaderTests.py PROGRAM ScreenReader.TEST"""

from bigClips import BigClips
from case import DesktopTest, main
from desktop import wait_for
from screen import LIST, ROW, Ear, Focus
from window import CAMERA, DESTINATION, found

STATUS = "status bar"


class ScreenReader(DesktopTest):
    def setUp(self):
        super().setUp()
        self.clips = BigClips(self.desktop.folder / "media", 3, size=1000)
        self.renamed = Ear("object:property-change:accessible-name")
        self.focus = Focus()

    def changes_of_status(self):
        return [element for element, _ in self.renamed.events() if element.exists and element.role == STATUS]

    def test_hears_a_new_status_and_which_row_becomes_current(self):
        window = self.start()
        window.choose(CAMERA, self.clips.card)
        window.choose(DESTINATION, self.clips.disk)
        before = len(self.changes_of_status())
        window.analyse(found(3))
        wait_for(lambda: len(self.changes_of_status()) > before, "an event for the new status")

        window.element.find(LIST, "Videos pendientes").take_focus()
        self.focus.step("Down")
        self.assertIn(self.focus.here().role, ROW)
        self.assertEqual(self.focus.here().name, window.pending()[1])
        self.focus.step("Up")
        self.assertEqual(self.focus.here().name, window.pending()[0])


if __name__ == "__main__":
    main(__doc__)
