#!/usr/bin/python3
"""How the desktop sees the program, one test in a process: desktopIdentityTests.py PROGRAM DesktopIdentity.TEST"""

import re
import subprocess

from case import DesktopTest, main
from screen import BUTTON, LABEL
from window import CAMERA, DESTINATION, REVIEW

ID = "org.reelkeep.Reelkeep"


class DesktopIdentity(DesktopTest):
    def property(self, window, name):
        """A property of an X11 window."""
        said = subprocess.run(["xprop", "-notype", "-name", window, name], env=self.desktop.environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True).stdout
        return said.partition(" = ")[2].strip()

    def test_window_and_dialogs_belong_to_the_installed_application(self):
        window = self.start()
        dialog = window.ask(CAMERA)
        for title in ("Reelkeep", CAMERA[1]):
            self.assertEqual(self.property(title, "WM_CLASS"), f'"reelkeep", "{ID}"')
            icons = re.split(r"Icon \((\d+) x \d+\):", self.property(title, "_NET_WM_ICON"))[1:]
            self.assertEqual(icons[::2], ["16", "24", "32", "48", "64", "128"])
            for width, picture in zip(icons[::2], icons[1::2]):  # in characters, a transparent point as a space
                self.assertGreater(len("".join(picture.split())), int(width) ** 2 / 3, "something is drawn")
        dialog.cancel()

    def test_dialogs_speak_spanish_in_any_locale(self):
        window = self.start(LANG="de_DE.UTF-8", LANGUAGE="de:fr")
        for question in (CAMERA, DESTINATION, REVIEW):
            dialog = window.ask(question)
            buttons = {button.name for button in dialog.window.all(BUTTON) if button.name and button.showing}
            self.assertLessEqual({"Seleccionar", "Cancelar", "Carpeta superior", "Atras", "Adelante"}, buttons)
            labels = {label.name for label in dialog.window.all(LABEL) if label.showing}
            self.assertLessEqual({"Ver en:", "Carpeta:"}, labels)
            dialog.cancel()


if __name__ == "__main__":
    main(__doc__)
