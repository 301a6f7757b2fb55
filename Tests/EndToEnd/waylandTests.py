#!/usr/bin/python3
"""The program on a Wayland desktop, one test in a process: waylandTests.py PROGRAM Wayland.TEST"""

import shutil
import unittest

from bigClips import BigClips
from case import DesktopTest, main
from desktop import wait_for
from screen import BUTTON
from window import ALL_SAVED, CAMERA, COPY, DESTINATION, found

SCREEN_HEIGHT = 640
PANEL_HEIGHT = 32  # of the compositor, at the top
TITLE_BAR_HEIGHT = 33  # with the border at the bottom


@unittest.skipUnless(shutil.which("weston"), "SKIPPED: weston is not installed")
class Wayland(DesktopTest):
    def start_compositor(self):
        """Starts a Wayland desktop in a window on the test's display; returns the environment for the program."""
        socket = self.desktop.folder / "wayland"
        runtime = self.desktop.make("compositor-runtime")
        self.desktop.launch(["weston", "--backend=x11-backend.so", f"--socket={socket}", "--idle-time=0", "--no-config",
                             "--width=1024", f"--height={SCREEN_HEIGHT}"],
                            {**self.desktop.own, "XDG_RUNTIME_DIR": str(runtime)})
        wait_for(socket.exists, "the Wayland desktop")
        return {"WAYLAND_DISPLAY": str(socket), "DISPLAY": None, "QT_QPA_PLATFORM": None}

    def test_a_whole_run(self):
        clips = BigClips(self.desktop.folder / "media", 5, size=1000)
        window = self.start(**self.start_compositor(), WAYLAND_DEBUG="client")
        self.assertIn('set_app_id("org.reelkeep.Reelkeep")', self.desktop.said())
        height = window.element.box()[3]
        self.assertLessEqual(height, SCREEN_HEIGHT - PANEL_HEIGHT - TITLE_BAR_HEIGHT)
        self.assertGreaterEqual(height, SCREEN_HEIGHT - 100)
        dialog = window.ask(CAMERA)
        buttons = {button.name for button in dialog.window.all(BUTTON) if button.name and button.showing}
        self.assertLessEqual({"Seleccionar", "Cancelar", "Carpeta superior", "Atras", "Adelante"}, buttons)
        dialog.cancel()

        window.choose(CAMERA, clips.card)
        window.choose(DESTINATION, clips.disk)
        window.analyse(found(len(clips.names)))
        window.button(COPY).press()
        window.wait_for_status(ALL_SAVED)
        window.wait_until_idle()
        self.assertEqual(clips.copied(), clips.names)
        self.desktop.program.terminate()
        self.assertEqual(self.desktop.program.wait(20), 0)
        self.assert_left_no_trace()


if __name__ == "__main__":
    main(__doc__)
