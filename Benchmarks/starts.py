"""Our start up to the first frame beside that of an empty window: used by compare."""

import contextlib
import os
import pathlib
import statistics
import subprocess
import tempfile
import time

OUR_FONTS = 15  # families, weights and sizes in the first frame


@contextlib.contextmanager
def display():
    """The name of a display in memory."""
    reading, writing = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1366x768x24", "-nolisten", "tcp",
                               "-noreset"], pass_fds=[writing], stderr=subprocess.DEVNULL)
    os.close(writing)
    try:
        with os.fdopen(reading) as told:
            yield ":" + told.readline().strip()
    finally:
        server.terminate()
        server.wait()


def compare_starts(build: pathlib.Path, rounds: int, row) -> None:
    """`row` takes what was done, by whom, the ratio and the goal."""
    empty = str(build / "Benchmarks/EmptyWindow")
    commands = {"ours": [str(build / "reelkeep")], "an empty window": [empty],
                "a window with a text": [empty, "Reelkeep"],
                "a window with texts in as many fonts": [empty, "Reelkeep", str(OUR_FONTS)]}
    with display() as name, tempfile.TemporaryDirectory() as runtime:
        environment = {**os.environ, "DISPLAY": name, "XDG_RUNTIME_DIR": runtime, "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                       "LD_PRELOAD": str(build / "Benchmarks/libfirstFrame.so")}

        def seconds(command: list[str]) -> float:
            begin = time.perf_counter()
            subprocess.run(command, check=True, env=environment)  # a time limit would make it poll
            return time.perf_counter() - begin

        times = [{what: seconds(command) for what, command in commands.items()} for _ in range(rounds + 1)][1:]
    own = statistics.median(taken["ours"] for taken in times)
    for what in list(commands)[1:]:
        ratio = statistics.median(taken["ours"] / taken[what] for taken in times)
        row("start to first frame", f"ours ({own * 1000:.0f} ms) against {what}", f"{ratio:.2f}",
            "<= 1.3" if what == "an empty window" else "")
