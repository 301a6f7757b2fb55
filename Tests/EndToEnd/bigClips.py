"""A card of clips that take a while to copy, and a disk for them."""

import filecmp
import os

MEBIBYTE = 1 << 20


class BigClips:
    """Holes for the most part, so that they cost no room on the card; yet each has a content and a time of its own."""

    def __init__(self, folder, count, size=24 * MEBIBYTE, card=None, disk=None):
        self.card = card or folder / "card"
        self.disk = disk or folder / "disk"
        self.size = size
        (self.card / "DCIM").mkdir(parents=True)
        self.disk.mkdir(parents=True, exist_ok=True)
        self.names = [f"DCIM/C{number:04}.MOV" for number in range(count)]
        for number, name in enumerate(self.names):
            with open(self.card / name, "wb") as clip:
                clip.write(name.encode())
                clip.seek(size - len(name))
                clip.write(name.encode())
            os.utime(self.card / name, (1_600_000_000, 1_600_000_000 + number))

    def copied(self):
        """The clips that stand on the disk under their names."""
        return [name for name in self.names if (self.disk / name).exists()]

    def growing(self):
        """How many bytes the file has that is just being copied; 0 while there is none."""
        try:
            return max((entry.stat().st_size for entry in os.scandir(self.disk / "DCIM") if "reelkeep" in entry.name),
                       default=0)
        except FileNotFoundError:  # Gone while we were looking.
            return 0

    def flaws(self):
        """What is wrong on the disk: what is neither a whole clip with its time nor a folder for it."""
        wrong = []
        for folder, _, files in os.walk(self.disk):
            for file in files:
                copy = os.path.join(folder, file)
                original = self.card / os.path.relpath(copy, self.disk)
                if not (original.exists() and filecmp.cmp(original, copy, shallow=False)
                        and original.stat().st_mtime_ns == os.stat(copy).st_mtime_ns):
                    wrong.append(copy)
        return wrong
