"""Our durable copy beside other programs: used by compare."""

import os
import pathlib
import shutil
import statistics
import subprocess
import tempfile
import time

from disks import disk_image, drop_caches

MEBIBYTE = 1 << 20
SYNCED_CP, RSYNC = "cp + sync", "rsync --fsync"
COMMANDS = {
    "ours": '"$3" "$1" "$2"',
    SYNCED_CP: 'cp -r "$1/." "$2" && sync -f "$2"',
    RSYNC: 'rsync -r --fsync "$1/" "$2"',
    "rclone + sync": 'rclone --config "" copy "$1" "$2" && sync -f "$2"',
}
# What ours may take at most, as a multiple of the other.
LOADS = {
    "20 x 200 MB": (20, 200_000_000, {SYNCED_CP: "<= 1.0", RSYNC: "<= 0.6"}),
    "5,000 x 200 KB": (5000, 200_000, {RSYNC: "<= 0.9"}),
}
QUICK_LOADS = {
    "20 x 20 MB": (20, 20_000_000, LOADS["20 x 200 MB"][2]),
    "500 x 200 KB": (500, 200_000, LOADS["5,000 x 200 KB"][2]),
}


def ext4_disk(folder: str, gibibytes: int):
    """Read and written past the memory of the file system that holds it, as a real disk is."""
    return disk_image(folder, gibibytes, "ext4", ["mkfs.ext4", "-q", "-F"], "--direct-io=on")


def make_card(folder: str, count: int, size: int) -> None:
    """Videos of one size whose bytes no disk can compress or leave out."""
    block = os.urandom(MEBIBYTE)
    for number in range(count):
        target = pathlib.Path(folder) / "DCIM" / f"{100 + number // 500}CANON" / f"MVI_{number:04}.MOV"
        target.parent.mkdir(parents=True, exist_ok=True)
        with target.open("wb") as file:
            for offset in range(0, size, MEBIBYTE):
                file.write(block[: min(MEBIBYTE, size - offset)])


def timed(program: str, card: str, disk: str, probe: str) -> float:
    """Seconds of a copy to a new folder, with cold caches where this user may drop them."""
    with tempfile.TemporaryDirectory(dir=disk) as target:
        if os.geteuid() == 0:
            drop_caches(card, disk)
        begin = time.perf_counter()
        subprocess.run(["sh", "-ec", COMMANDS[program], "sh", card, target, probe], check=True,
                       stdout=subprocess.DEVNULL)
        return time.perf_counter() - begin


def compare_on(place: str, card_disk: str, disk: str, probe: str, loads: dict, rounds: int, row) -> None:
    programs = [name for name, command in COMMANDS.items() if name == "ours" or shutil.which(command.split()[0])]
    for load, (count, size, goals) in loads.items():
        with tempfile.TemporaryDirectory(dir=card_disk) as card:
            make_card(card, count, size)
            times = [{name: timed(name, card, disk, probe) for name in programs} for _ in range(rounds)]
        median = {name: statistics.median(taken[name] for taken in times) for name in programs}
        for name in programs[1:]:
            ratio = statistics.median(taken["ours"] / taken[name] for taken in times)
            row(f"copy {load}, {place}", f"ours ({median['ours']:.2f} s) against {name} ({median[name]:.2f} s)",
                f"{ratio:.2f}", goals.get(name, ""))


def compare_copies(probe: pathlib.Path, folder: str, disks: str, rounds: int, quick: bool, row) -> None:
    """Within the memory file system `folder`, and between two ext4 disks in the folder `disks`, which needs root.

    `row` takes what was done, by whom, the ratio and the goal.
    """
    loads = QUICK_LOADS if quick else LOADS
    compare_on("memory", folder, folder, str(probe), loads, rounds, row)
    if os.geteuid() != 0:
        row("copy, ext4", "left out: only root can mount disks", "", "")
        return
    with ext4_disk(disks, 2 if quick else 6) as card_disk, ext4_disk(disks, 2 if quick else 6) as disk:
        compare_on("ext4", card_disk, disk, str(probe), loads, rounds, row)
