"""A desktop session that programs join and that can end, as at a logout."""

import subprocess
from pathlib import Path

from desktop import stop, wait_for


class SessionManager:
    """A context manager. A program joins if it is started with `address` as its SESSION_MANAGER."""

    def __init__(self, desktop):
        self.desktop = desktop
        self.log = desktop.folder / "session.log"
        self.program = desktop.folder / "sessionManager"
        subprocess.run(["c++", "-std=c++20", "-o", str(self.program), str(Path(__file__).with_name("sessionManager.cpp")),
                        "-lSM", "-lICE"], check=True, stdin=subprocess.DEVNULL)

    def __enter__(self):
        with open(self.log, "wb") as log:
            self.process = subprocess.Popen([str(self.program)], env=self.desktop.own, stdin=subprocess.PIPE, stdout=log,
                                            start_new_session=True, text=True)
        self.address = wait_for(self.events, "the session manager")[0]
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        stop(self.process)

    def events(self):
        """The address of the session manager, then what the programs have done."""
        return self.log.read_text(encoding="utf-8").splitlines()

    def send_all(self, step):
        """Sends all programs "save" or "die"."""
        self.process.stdin.write(f"{step}\n")
        self.process.stdin.flush()

    def wait_for_event(self, event):
        wait_for(lambda: event in self.events(), f"{event!r}, not only {self.events()}")
