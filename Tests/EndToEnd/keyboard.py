"""Keys as a person strikes them: they go to whatever has the focus."""

import subprocess


def strike_keys(*keys):
    """Keys by their names, with what is held down before them: "shift+Tab"."""
    subprocess.run(["xdotool", "key", *keys], check=True, stdin=subprocess.DEVNULL)


def type_text(text):
    subprocess.run(["xdotool", "type", "--delay", "1", "--", str(text)], check=True, stdin=subprocess.DEVNULL)


def shows_window(title):
    """Whether a window of this title is on the display and takes what is typed."""
    front = subprocess.run(["xdotool", "getactivewindow", "getwindowname"], stdin=subprocess.DEVNULL,
                           capture_output=True, text=True, check=False).stdout
    return front.rstrip("\n") == title
