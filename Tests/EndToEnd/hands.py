"""Mouse and keyboard as a person uses them: what they do goes to whatever is under the pointer or has the focus.

Nothing here knows whether it had an effect. On a busy machine a click can come before the window takes it, so whoever
uses these looks for the effect: see `until`."""

import subprocess
import time

from desktop import until, wait_for


def xdotool(*words, check=True):
    """What `xdotool` says."""
    return subprocess.run(["xdotool", *(str(word) for word in words)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.DEVNULL, text=True, check=check).stdout


def strike(*keys):
    """Keys by their names, with what is held down before them: "shift+Tab"."""
    xdotool("key", *keys)


def type_text(text):
    xdotool("type", "--delay", "1", "--", text)


def click(x, y, times=1, holding=None):
    """A click of the mouse somewhere on the display, or two in quick succession, while a key is held down."""
    clicks = ["click", "--repeat", times, "--delay", 50, 1]
    if holding:
        clicks = ["keydown", holding, *clicks, "keyup", holding]
    xdotool("mousemove", x, y, *clicks)


def shows_window(title):
    """Whether a window of this title is on the display and takes what is typed."""
    return xdotool("getactivewindow", "getwindowname", check=False).rstrip("\n") == title


def close_window(process):
    """Closes the program's window by the keyboard, as one closes any: how long the program took to end, in seconds."""
    began = 0

    def close():
        nonlocal began
        wait_for(lambda: shows_window("Reelkeep"), "the window to be in front")
        began = time.monotonic()
        strike("alt+F4")

    until(lambda: process.poll() is not None, close, "the program to end", patience=10)
    return time.monotonic() - began
