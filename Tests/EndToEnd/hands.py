"""Mouse and keyboard: events go to whatever is under the pointer or has the focus, as when a person uses them.

Nothing here checks the effect. On a busy machine a click may come before the window accepts it, so callers repeat it
until they see the effect: see `until`."""

import subprocess
import time

from desktop import until, wait_for


def xdotool(*words, check=True):
    """The output of `xdotool`."""
    return subprocess.run(["xdotool", *(str(word) for word in words)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True, check=check).stdout


def strike(*keys):
    """Presses keys, given by name and with modifiers: "shift+Tab"."""
    xdotool("key", *keys)


def type_text(text):
    xdotool("type", "--delay", "1", "--", text)


def click(x, y, times=1, holding=None):
    """Clicks a point of the display, or double-clicks it, optionally while a key is held down."""
    clicks = ["click", "--repeat", times, "--delay", 50, 1]
    if holding:
        clicks = ["keydown", holding, *clicks, "keyup", holding]
    xdotool("mousemove", x, y, *clicks)


def shows_window(title):
    """Whether a window with this title is active."""
    return xdotool("getactivewindow", "getwindowname", check=False).rstrip("\n") == title


def close_window(process):
    """Closes the program's window with the keyboard; returns how many seconds the program took to end."""
    began = 0

    def close():
        nonlocal began
        wait_for(lambda: shows_window("Reelkeep"), "the window to be in front")
        began = time.monotonic()
        strike("alt+F4")

    until(lambda: process.poll() is not None, close, "the program to end", patience=10)
    return time.monotonic() - began
