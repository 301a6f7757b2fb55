"""Disks to measure on, and caches to empty. Needs root."""

import contextlib
import dataclasses
import os
import pathlib
import subprocess
import tempfile
from collections.abc import Iterator


def drop_caches(*folders: str) -> None:
    """Only what is written can be dropped, so the file systems of the folders are synced first."""
    subprocess.run(["sync", "-f", *folders], check=True)
    pathlib.Path("/proc/sys/vm/drop_caches").write_text("3\n", encoding="ascii")


@contextlib.contextmanager
def mounted(*arguments: str) -> Iterator[str]:
    with tempfile.TemporaryDirectory() as place:
        subprocess.run(["mount", *arguments, place], check=True)
        try:
            yield place
        finally:
            subprocess.run(["umount", place], check=True)


@contextlib.contextmanager
def disk_image(folder: str, gibibytes: int, kind: str, make: list[str], *loop_options: str) -> Iterator[str]:
    """The mount point of a disk in a file, on which the command `make` makes the file system."""
    with tempfile.NamedTemporaryFile(dir=folder) as image:
        os.truncate(image.name, gibibytes << 30)
        subprocess.run([*make, image.name], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        device = subprocess.run(["losetup", "--find", "--show", *loop_options, image.name], check=True,
                                capture_output=True, text=True).stdout.strip()
        try:
            with mounted("-t", kind, device) as place:
                yield place
        finally:
            subprocess.run(["losetup", "--detach", device], check=True)


@dataclasses.dataclass
class Speed:
    """What a disk does in a second, reading and writing each; 0 is unlimited."""
    bytes_per_second: int = 0
    requests_per_second: int = 0


@contextlib.contextmanager
def throttled(mount_point: str, speed: Speed) -> Iterator[None]:
    """Slows down the disk that is mounted there. OSError if the kernel lacks the first version of the block controller."""
    number = os.stat(mount_point).st_dev
    device = f"{os.major(number)}:{os.minor(number)}"
    controls = {f"blkio.throttle.{way}_{unit}_device": limit for way in ("read", "write")
                for unit, limit in (("bps", speed.bytes_per_second), ("iops", speed.requests_per_second))}

    def set_limits(lifted: bool) -> None:
        for control, limit in controls.items():
            if limit:
                pathlib.Path("/sys/fs/cgroup/blkio", control).write_text(f"{device} {0 if lifted else limit}\n",
                                                                         encoding="ascii")
    try:
        set_limits(lifted=False)
        yield
    finally:
        set_limits(lifted=True)
