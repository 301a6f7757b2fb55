#!/usr/bin/python3
"""The program without a mouse, one test in a process: keyboardTests.py PROGRAM CLASS.TEST"""

from bigClips import BigClips
from case import DesktopTest, main
from desktop import until, wait_for
from dialogs import FolderDialog
from hands import shows_window, strike, type_text
from screen import Focus
from window import ALL_SAVED, ANALYSE, CAMERA, COPY, DESTINATION, REVIEW, found


def is_inside(inner, outer):
    x, y, width, height = inner
    left, top, room, depth = outer
    return left <= x and top <= y and x + width <= left + room and y + height <= top + depth


class Keyboard(DesktopTest):
    def setUp(self):
        super().setUp()
        self.clips = BigClips(self.desktop.folder / "media", 30, size=1000)
        self.archive = self.desktop.folder / "media" / "archive"
        self.archive.mkdir()
        self.focus = Focus()

    def tab_to(self, name):
        """Presses Tab until this has the focus. Every element that gets it on the way must be in view."""
        passed = []
        while name not in passed:
            self.assertLess(len(passed), 50, f"{name!r} is not among {passed}")
            self.focus.step("Tab")
            here = self.focus.here()
            if here.name:  # At first the content as a whole has the focus, and that event may come late.
                wait_for(lambda: is_inside(here.box(), self.window.element.box()), f"{here.name!r} to be in view")
            passed.append(here.name)

    def ask(self, question, key):
        button, title = question
        self.tab_to(button)
        until(lambda: shows_window(title), lambda: strike(key), f"the dialog {title!r}")
        return FolderDialog(self.window.application, title)

    def close_dialog(self, dialog, key):
        until(lambda: not dialog.open(), lambda: strike(key), f"the dialog {dialog.title!r} to close")
        wait_for(lambda: shows_window("Reelkeep"), "the window to be in front again")

    def choose(self, question, key, folder):
        self.close_dialog(self.ask(question, key), "Escape")
        self.assertNotIn(str(folder), self.window.texts())
        dialog = self.ask(question, key)

        def type_anew():
            strike("ctrl+a")
            type_text(folder)

        until(lambda: dialog.typed() == str(folder), type_anew, f"{folder} to be typed")
        self.close_dialog(dialog, "Return")
        wait_for(lambda: str(folder) in self.window.texts(), f"the path {folder}")

    def press(self, button, key, effect):
        self.tab_to(button)
        until(effect, lambda: strike(key), f"an effect of {button!r}")
        self.window.wait_until_idle()

    def test_does_a_whole_run(self):
        window = self.window = self.start()
        self.assertTrue(is_inside(window.element.box(), (0, 0, *self.screen)), "the window is larger than the screen")
        self.choose(CAMERA, "Return", self.clips.card)
        self.choose(DESTINATION, "space", self.clips.disk)
        self.choose(REVIEW, "Return", self.archive)

        self.press(ANALYSE, "space", lambda: window.status() == found(len(self.clips.names)))
        self.tab_to("Videos pendientes")
        self.focus.step("Down")
        self.assertEqual(self.focus.here().name, window.pending()[1])
        self.focus.step("End")
        self.assertEqual(self.focus.here().name, window.pending()[-1])
        self.assertTrue(is_inside(self.focus.here().box(), window.element.box()))

        self.press(COPY, "Return", lambda: window.status() == ALL_SAVED)
        self.assertEqual(window.pending(), [])
        self.assertEqual(self.clips.copied(), self.clips.names)
        self.close()
        self.assert_left_no_trace()


class KeyboardOnASmallScreen(Keyboard):
    screen = (800, 600)


if __name__ == "__main__":
    main(__doc__)
