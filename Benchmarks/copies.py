"""Our copy, which is durable and proven, beside other programs: used by compare."""

import contextlib
import dataclasses
import os
import pathlib
import statistics
import subprocess
import tempfile
import time

from disks import Speed, disk_image, drop_caches, throttled
from results import Results

MEBIBYTE = 1 << 20
CARD, SYNCED_CP, COMPARED_CP, RSYNC = "reading the card", "cp + sync", "cp + sync + cold compare", "rsync --fsync"
COMMANDS = {
    "ours": '"$3" "$1" "$2"',
    SYNCED_CP: 'cp -r "$1/." "$2" && sync -f "$2"',
    # What others do to prove a copy: read both sides again, past the caches.
    COMPARED_CP: 'cp -r "$1/." "$2" && sync -f "$2" && echo 3 > /proc/sys/vm/drop_caches && diff -rq "$1" "$2"',
    RSYNC: 'rsync -r --fsync "$1/" "$2"',
    "rclone + sync": 'rclone --config "" copy "$1" "$2" && sync -f "$2"',
    CARD: 'find "$1" -type f | sort | xargs cat > /dev/null',
}
EVERYONE = [SYNCED_CP, COMPARED_CP, RSYNC, "rclone + sync"]


@dataclasses.dataclass
class Load:
    """Videos of one size, and what ours may take at most as a multiple of other programs."""
    count: int
    size: int
    goals: dict[str, str]

    def name(self) -> str:
        size = f"{self.size // 1_000_000} MB" if self.size >= 1_000_000 else f"{self.size // 1000} KB"
        return f"{self.count:,} x {size}"


PROVEN = {COMPARED_CP: "<= 0.6"}
RAW = [Load(5000, 200_000, {SYNCED_CP: "<= 1.1", RSYNC: "<= 0.4", **PROVEN}),
       Load(100, 20_000_000, {SYNCED_CP: "<= 0.85", **PROVEN}),
       Load(20, 200_000_000, {SYNCED_CP: "<= 0.5", **PROVEN})]
USB_DISK = [Load(300, 200_000, {RSYNC: "<= 0.4", **PROVEN}),
            Load(40, 20_000_000, {SYNCED_CP: "<= 1.15", **PROVEN}),
            Load(5, 200_000_000, {SYNCED_CP: "<= 0.95", **PROVEN})]
SLOW_CARD = [Load(40, 20_000_000, {CARD: "<= 1.05", **PROVEN})]


def ext4_disk(folder: str, gibibytes: int):
    """Read and written past the memory of the file system that holds it, as a real disk is."""
    return disk_image(folder, gibibytes, "ext4", ["mkfs.ext4", "-q", "-F"], "--direct-io=on")


def make_card(folder: str, load: Load) -> None:
    """Videos whose bytes no disk can compress or leave out."""
    block = os.urandom(MEBIBYTE)
    for number in range(load.count):
        target = pathlib.Path(folder) / "DCIM" / f"{100 + number // 500}CANON" / f"MVI_{number:04}.MOV"
        target.parent.mkdir(parents=True, exist_ok=True)
        with target.open("wb") as file:
            for offset in range(0, load.size, MEBIBYTE):
                file.write(block[: min(MEBIBYTE, load.size - offset)])


def timed(program: str, card: str, disk: str, probe: str) -> float:
    """Seconds of a copy to a new folder, with cold caches."""
    with tempfile.TemporaryDirectory(dir=disk) as target:
        drop_caches(card, disk)
        begin = time.perf_counter()
        subprocess.run(["sh", "-ec", COMMANDS[program], "sh", card, target, probe], check=True,
                       stdout=subprocess.DEVNULL)
        return time.perf_counter() - begin


def compare_on(results: Results, place: str, speeds: tuple[Speed, Speed], disks: tuple[str, str], probe: str,
               loads: list[Load], others: list[str], rounds: int) -> None:
    """Between two disks of these speeds. The noise of a row is how far the rounds of cp + sync lie apart."""
    card_disk, disk = disks
    present = [name for name in others if results.installed([COMMANDS[name].split()[0]])]
    for load in loads:
        with tempfile.TemporaryDirectory(dir=card_disk) as card:
            make_card(card, load)
            with throttled(card_disk, speeds[0]), throttled(disk, speeds[1]):
                times = [{name: timed(name, card, disk, probe) for name in ["ours", *present]} for _ in range(rounds)]
        work = f"copy {load.name()}, {place}"
        median = {name: statistics.median(taken[name] for taken in times) for name in ["ours", *present]}
        for name in present:
            ratio = statistics.median(taken["ours"] / taken[name] for taken in times)
            results.row(work, f"ours ({median['ours']:.2f} s) against {name} ({median[name]:.2f} s)", f"{ratio:.2f}",
                        load.goals.get(name, ""))
        for name in present[:1]:
            taken = [round_[name] for round_ in times]
            results.row(work, f"noise: the slowest round of {name} against its fastest",
                        f"{max(taken) / min(taken):.2f}", "")


def compare_copies(results: Results, probe: pathlib.Path, disks: str, rounds: int, quick: bool) -> None:
    """Between two ext4 disks in the folder `disks`: as fast as they are, as a USB disk, and behind a slow card."""
    unlimited, card, usb = Speed(), Speed(bytes_per_second=90_000_000), Speed(130_000_000, 120)
    share = 10 if quick else 1

    def scaled(loads: list[Load]) -> list[Load]:
        return [Load(max(load.count // share, 2), load.size, load.goals) for load in loads]

    with ext4_disk(disks, 2 if quick else 6) as one, ext4_disk(disks, 2 if quick else 6) as other:
        compare_on(results, "ext4", (unlimited, unlimited), (one, other), str(probe), scaled(RAW), EVERYONE, rounds)
        try:
            with contextlib.ExitStack() as check:
                check.enter_context(throttled(other, usb))
        except OSError as error:
            results.left_out["copies to throttled disks"] = f"the kernel cannot throttle here ({error})"
            return
        compare_on(results, "USB disk", (card, usb), (one, other), str(probe), scaled(USB_DISK), EVERYONE,
                   min(rounds, 3))
        compare_on(results, "slow card", (card, unlimited), (one, other), str(probe), scaled(SLOW_CARD),
                   [CARD, COMPARED_CP], min(rounds, 3))
