#!/usr/bin/python3
"""The look of the desktop changes while the program runs, one test in a process:
themeTests.py PROGRAM ThemeChanges.TEST"""

from case import DesktopTest, main
from desktop import wait_for
from screen import LABEL
from theme import DARK, LIGHT, USUAL_FONT, Theme
from window import CAMERA


class ThemeChanges(DesktopTest):
    screen = (1200, 2200)  # Large enough for the whole window.

    def change(self, colours, font):
        self.theme.change(colours, font)
        x, y, _, _ = self.window.element.box()
        wait_for(lambda: self.desktop.colour(x + 3, y + 3) == colours.pixel(), "the new colours")

    def test_texts_and_buttons_follow_colours_and_font(self):
        self.theme = Theme(self.desktop)
        self.window = self.start(**self.theme.environment())
        parts = [self.window.element.find(LABEL, "Camara o tarjeta"), self.window.button(CAMERA[0])]
        usual = [part.box()[2:] for part in parts]

        self.change(DARK, 2 * USUAL_FONT)
        for part, (width, height) in zip(parts, usual):
            wait_for(lambda: part.box()[2] > 1.5 * width and part.box()[3] > 1.5 * height, "larger parts")

        self.change(LIGHT, USUAL_FONT)
        wait_for(lambda: [part.box()[2:] for part in parts] == usual, "the former sizes")
        self.close()


if __name__ == "__main__":
    main(__doc__)
