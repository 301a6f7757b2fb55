#!/usr/bin/python3
"""How the program starts, or fails to, one test in a process: startTests.py PROGRAM Start.TEST"""

import subprocess

from case import DesktopTest, main

SENTENCE = b"Reelkeep no ha podido abrir ninguna pantalla. Inicialo desde un escritorio grafico.\n"


class Start(DesktopTest):
    def test_without_a_display_fails_with_a_sentence(self):
        plain = {name: value for name, value in self.desktop.environment.items() if name != "DISPLAY"}
        plain |= {"HOME": str(self.desktop.home), "XDG_RUNTIME_DIR": str(self.desktop.runtime)}
        for surroundings in ({}, {"DISPLAY": ":987"}, {"DISPLAY": "nonsense"}, {"WAYLAND_DISPLAY": "wayland-987"},
                             {"XDG_SESSION_TYPE": "wayland"}, {"QT_QPA_PLATFORM": "xcb"},
                             {"DISPLAY": self.desktop.environment["DISPLAY"], "XAUTHORITY": "/nowhere",
                              "QT_QPA_PLATFORM": "no-such-platform"}):
            with self.subTest(surroundings):
                result = subprocess.run([str(self.program)], env={**plain, **surroundings}, stdin=subprocess.DEVNULL,
                                        capture_output=True, timeout=60)
                self.assertEqual((result.returncode, result.stdout, result.stderr), (1, b"", SENTENCE))
        self.assert_left_no_trace()

    def test_opens_on_the_second_display_if_the_first_fails(self):
        self.start(QT_QPA_PLATFORM="no-such-platform;xcb")
        self.close()
        self.assertIn("no-such-platform", self.desktop.said())

    def test_ignores_arguments(self):
        # A script adds them, since Desktop.run takes none.
        start = self.desktop.folder / "start"
        start.write_text(f"#!/bin/sh\nexec '{self.program}' -platform no-such-platform --help -stylesheet x /etc\n",
                         encoding="utf-8")
        start.chmod(0o755)
        self.program = start
        self.start()
        self.close()
        self.assert_left_no_trace()


if __name__ == "__main__":
    main(__doc__)
