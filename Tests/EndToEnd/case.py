"""The base of all tests of the real program: a desktop, the program on it, and proof of what it wrote."""

import functools
import os
import sys
import unittest
from pathlib import Path

from desktop import Desktop
from hands import close_window
from janitor import end_with_the_runner
from window import Window


def snapshot(root):
    """Everything in a folder, hidden entries too: paths, with the time and content of files."""
    entries = {}
    for folder, folders, files in os.walk(root):
        for name in folders + files:
            path = Path(folder) / name
            entries[str(path.relative_to(root))] = (
                "folder" if path.is_dir() and not path.is_symlink() else (path.lstat().st_mtime_ns, path.read_bytes()))
    return entries


def keeping_evidence(test):
    """Makes a failing test save a picture of the display and print the output of the program."""

    @functools.wraps(test)
    def watched(self):
        try:
            test(self)
        except unittest.SkipTest:
            raise
        except BaseException:
            picture = Path.cwd() / f"{test.__name__}-failed.png"
            self.desktop.picture(picture)
            print(f"\nThe display: {picture}\nThe output of the program:\n{self.desktop.said()}", file=sys.stderr)
            raise

    return watched


class DesktopTest(unittest.TestCase):
    """A test with its own desktop. Only one of them can run in a process, see Desktop."""

    program = None
    screen = (1366, 768)

    def __init_subclass__(cls):
        for name, member in list(vars(cls).items()):
            if name.startswith("test_"):
                setattr(cls, name, keeping_evidence(member))

    def setUp(self):
        self.desktop = self.enterContext(Desktop(*self.screen))

    def start(self, **more):
        return Window(self.desktop.run(self.program, **more))

    def close(self):
        """Closes the window; the program must then end without an error."""
        close_window(self.desktop.program)
        self.assertEqual(self.desktop.program.returncode, 0)

    def assert_left_no_trace(self):
        for folder in (self.desktop.home, self.desktop.runtime, self.desktop.temporary):
            self.assertEqual(sorted(snapshot(folder)), [], f"written to {folder.name}")


def main(usage):
    """Runs the test that is named on the command line after the program."""
    if len(sys.argv) != 3:
        sys.exit(usage)
    end_with_the_runner()
    DesktopTest.program = Path(sys.argv.pop(1)).absolute()
    unittest.main(verbosity=2)
