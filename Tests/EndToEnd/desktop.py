"""A private desktop for one run of the program: display, window manager, session bus and accessibility bus.

Nothing of the caller's desktop is used or touched. The services have another home than the program, so that everything
in the program's home was written by the program.
"""

import os
import secrets
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import gi

gi.require_version("Atspi", "2.0")
gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from janitor import clean_up_after_this_process, ends_with_this_process  # noqa: E402

TIMEOUT = int(os.environ.get("REELKEEP_PATIENCE", 30))  # seconds

# The same fonts everywhere, so that pictures can be compared, and no font cache in the program's home.
FONTS = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig>
  <dir>/usr/share/fonts</dir>
  <cachedir>/var/cache/fontconfig</cachedir>
  <cachedir>{cache}</cachedir>
  <alias binding="strong"><family>Sans Serif</family><prefer><family>Inter</family></prefer></alias>
  <alias binding="strong"><family>sans-serif</family><prefer><family>Inter</family></prefer></alias>
  <alias binding="strong"><family>monospace</family><prefer><family>JetBrains Mono</family></prefer></alias>
  <include ignore_missing="yes">/etc/fonts/conf.d</include>
</fontconfig>
"""

def wait_for(condition, what, timeout=TIMEOUT):
    """Returns the condition's first true value, or fails and names what it waited for. While a part of the window is
    being built or torn down a query may raise an error, which counts as not yet."""
    end = time.monotonic() + timeout
    trouble = None
    while True:
        try:
            value = condition()
            if value:
                return value
            trouble = None
        except GLib.Error as error:
            trouble = error
        if time.monotonic() > end:
            raise AssertionError(f"Waited {timeout} s in vain for {what}" + (f" ({trouble.message})" if trouble else ""))
        time.sleep(0.01)


def until(condition, act, what, patience=3):
    """Acts until the condition holds; returns its first true value. A busy program may lose a click or a key, so the
    action is repeated: `act` must do no harm if only its effect is late."""
    end = time.monotonic() + TIMEOUT
    while True:
        try:
            act()
            return wait_for(condition, what, patience)
        except (AssertionError, GLib.Error):
            if time.monotonic() > end:
                raise


class Desktop:
    """A context manager, to be used once in a process, since a process can use only one accessibility bus. `home` is
    the program's home, empty at first; `folder` is for everything else."""

    def __init__(self, width=1366, height=768):
        self.size = f"{width}x{height}x24"
        self.processes = []
        self.program = None

    def __enter__(self):
        signal.signal(signal.SIGTERM, lambda *_: sys.exit("Stopped by a signal."))
        self.folder = Path(tempfile.gettempdir()).absolute() / f"reelkeep-desktop-{secrets.token_hex(4)}"
        clean_up_after_this_process(self.folder)
        self.folder.mkdir(mode=0o700)
        os.environ["TMPDIR"] = str(self.folder)  # what this process starts leaves nothing elsewhere, even if it is killed
        try:
            self.start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            stop(process)
        shutil.rmtree(self.folder, ignore_errors=True)

    def start(self):
        self.home = self.make("home")
        self.runtime = self.make("program-runtime")
        self.temporary = self.make("program-temporary")
        services = self.make("services")
        fonts = self.folder / "fonts.conf"
        fonts.write_text(FONTS.format(cache=services / "fontconfig"), encoding="ascii")
        # Only what every login has: results must not depend on the caller's settings.
        self.environment = {"PATH": "/usr/local/bin:/usr/bin:/bin", "LANG": "es_ES.UTF-8", "TZ": "Europe/Madrid",
                            "FONTCONFIG_FILE": str(fonts)}
        self.own = own = {**self.environment, "HOME": str(services), "XDG_RUNTIME_DIR": str(self.make("services-runtime")),
               "GSETTINGS_BACKEND": "memory", "LANG": "C.UTF-8"}

        own["DISPLAY"] = self.environment["DISPLAY"] = self.launch_display()
        bus = self.launch(["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address={fd}",
                           f"--address=unix:path={self.folder}/bus"], own)
        own["DBUS_SESSION_BUS_ADDRESS"] = self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus
        self.launch(["openbox"], own)
        # A window that opens before the window manager runs would never get the focus.
        wait_for(lambda: subprocess.run(["xdotool", "get_num_desktops"], env=own, stdin=subprocess.DEVNULL,
                                        capture_output=True).returncode == 0, "the window manager")
        self.join_accessibility_bus(bus)

    def make(self, name):
        folder = self.folder / name
        folder.mkdir(mode=0o700)
        return folder

    def launch_display(self):
        """Starts a display in memory; returns its name."""
        return ":" + self.launch(["Xvfb", "-displayfd", "{fd}", "-screen", "0", self.size, "-nolisten", "tcp", "-noreset"],
                                 self.own)

    def launch(self, command, environment):
        """Starts a service of this desktop. If its command contains {fd}, waits for a line there and returns it."""
        reading, writing = os.pipe()
        log = open(self.folder / f"{Path(command[0]).name}.log", "wb")
        process = subprocess.Popen([word.format(fd=writing) for word in command], env=environment, pass_fds=[writing],
                                   stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True,
                                   preexec_fn=ends_with_this_process())
        log.close()
        os.close(writing)
        self.processes.append(process)
        with open(reading, encoding="ascii") as answer:
            if not any("{fd}" in word for word in command):
                return None
            line = answer.readline().strip()
        if not line:
            raise RuntimeError(f"{command[0]} did not start: {(self.folder / log.name).read_text()}")
        return line

    def join_accessibility_bus(self, bus):
        """Connects this process to the desktop as its screen reader. The query for the bus starts it."""
        connection = Gio.DBusConnection.new_for_address_sync(
            bus, Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

        def address():
            answer = connection.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                          Gio.DBusCallFlags.NONE, 5000, None)
            return answer.unpack()[0]

        os.environ["AT_SPI_BUS_ADDRESS"] = wait_for(address, "the accessibility bus")
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus
        os.environ["DISPLAY"] = self.environment["DISPLAY"]

    def run(self, program, output=None, **more):
        """Starts the program as a desktop session would, in the home folder. Its output goes to a file, see `said`, or
        to the descriptor `output`. `more` is added to its environment; a name whose value is None is removed."""
        environment = {**self.environment, "HOME": str(self.home), "XDG_RUNTIME_DIR": str(self.runtime),
                       "TMPDIR": str(self.temporary), "QT_QPA_PLATFORM": "xcb", "QT_ACCESSIBILITY": "1",
                       "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", **more}
        environment = {name: value for name, value in environment.items() if value is not None}
        with open(self.folder / "program.log", "wb") as log:
            self.program = subprocess.Popen([str(program)], env=environment, cwd=self.home, stdin=subprocess.DEVNULL,
                                            stdout=output or log, stderr=output or log, start_new_session=True,
                                            preexec_fn=ends_with_this_process())
        self.processes.append(self.program)
        return self.program

    def said(self):
        """The program's standard output and error so far."""
        log = self.folder / "program.log"
        return log.read_text(encoding="utf-8", errors="replace") if log.exists() else ""

    def colour(self, x, y):
        """The colour of a pixel of the display."""
        return subprocess.run(["import", "-window", "root", "-crop", f"1x1+{x}+{y}", "-depth", "8", "rgb:-"], check=True,
                              stdin=subprocess.DEVNULL, capture_output=True,
                              env={**self.environment, "HOME": str(self.folder)}).stdout

    def picture(self, path):
        """Saves a picture of the display."""
        subprocess.run(["import", "-window", "root", str(path)], check=True, stdin=subprocess.DEVNULL,
                       env={**self.environment, "HOME": str(self.folder)})


def stop(process):
    """Ends a process and its group."""
    for blow in (signal.SIGTERM, signal.SIGKILL):
        try:
            os.killpg(process.pid, blow)
        except ProcessLookupError:
            pass
        try:
            process.wait(5)
        except subprocess.TimeoutExpired:
            continue
        if blow == signal.SIGKILL:
            return
