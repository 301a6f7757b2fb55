"""Cleans up after a test however it ends, SIGKILL included."""

import ctypes
import os
import shutil
import signal
import time
from pathlib import Path

SYSTEM = ctypes.CDLL(None)
SET_PARENT_DEATH_SIGNAL = 1
DETACH, NO_LINK = 2, 8
PATIENCE = 3  # seconds that processes get to end by themselves
GIVE_UP = 60  # seconds


def ends_with_this_process():
    """A `preexec_fn`: the new process gets SIGTERM when this one ends, and ignores no signals."""
    parent = os.getpid()

    def prepare():
        SYSTEM.prctl(SET_PARENT_DEATH_SIGNAL, signal.SIGTERM)
        if os.getppid() != parent:
            os._exit(1)
        for number in (signal.SIGHUP, signal.SIGINT):  # ignored under nohup and in the background of a script
            signal.signal(number, signal.SIG_DFL)

    return prepare


def end_with_the_runner():
    """This process is killed when the one that started it ends."""
    SYSTEM.prctl(SET_PARENT_DEATH_SIGNAL, signal.SIGKILL)


def clean_up_after_this_process(folder):
    """When this process has ended, ends all processes that have the path of the folder in their environment, and
    removes the folder with what is mounted in it. The folder need not exist yet."""
    reading, writing = os.pipe()  # `writing` stays open here until the end; no program that is started inherits it
    between = os.fork()
    if between == 0:
        if os.fork() == 0:  # not a child of the test: what kills a test may kill its children too
            watch(reading, folder)
        os._exit(0)
    os.close(reading)
    os.waitpid(between, 0)


def watch(end_of_test, folder):
    os.setsid()
    os.chdir("/")
    nowhere = os.open(os.devnull, os.O_RDWR)
    for output in (0, 1, 2):
        os.dup2(nowhere, output)  # the runner waits until every process has closed the test's output
    os.dup2(end_of_test, 3)
    os.closerange(4, os.sysconf("SC_OPEN_MAX"))
    os.read(3, 1)
    began = time.monotonic()
    while (processes := processes_of(folder)) or os.path.lexists(folder):
        waited = time.monotonic() - began
        if waited > GIVE_UP:
            break
        for process in processes:
            for blow in (signal.SIGCONT, signal.SIGTERM if waited < PATIENCE else signal.SIGKILL):
                send(process, blow)
        for place in mounted_in(folder):
            SYSTEM.umount2(os.fsencode(place), DETACH | NO_LINK)
        shutil.rmtree(folder, ignore_errors=True)
        time.sleep(0.05)
    os._exit(0)


def processes_of(folder):
    """Processes that have the path of the folder in their environment: the desktop's services, the program, and what
    they have started."""
    found = []
    for process in Path("/proc").iterdir():
        if process.name.isdigit() and int(process.name) != os.getpid():
            try:
                if os.fsencode(folder) in (process / "environ").read_bytes():
                    found.append(int(process.name))
            except OSError:  # it has ended, or is another user's
                pass
    return found


def mounted_in(folder):
    """The mount points in the folder, the innermost first."""
    with open("/proc/self/mounts", encoding="utf-8", errors="surrogateescape") as mounts:
        places = [line.split()[1] for line in mounts]
    return [place for place in reversed(places) if place.startswith(f"{folder}/")]


def send(process, number):
    try:
        os.kill(process, number)
    except OSError:
        pass
