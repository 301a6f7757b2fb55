"""A card of clips that take a while to copy, and a disk for them."""

import filecmp
import os

MEBIBYTE = 1 << 20


class BigClips:
    """Sparse files, so that they take no space on the card; each has its own content and time."""

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
        """The clips that are on the disk under their final names."""
        return [name for name in self.names if (self.disk / name).exists()]

    def growing(self):
        """The size of the file that is being copied; 0 if there is none."""
        try:
            return max((entry.stat().st_size for entry in os.scandir(self.disk / "DCIM") if "reelkeep" in entry.name),
                       default=0)
        except FileNotFoundError:  # Removed in the meantime.
            return 0

    def flaws(self):
        """Files on the disk that are not complete clips with their time."""
        wrong = []
        for folder, _, files in os.walk(self.disk):
            for file in files:
                copy = os.path.join(folder, file)
                original = self.card / os.path.relpath(copy, self.disk)
                if not (original.exists() and filecmp.cmp(original, copy, shallow=False)
                        and original.stat().st_mtime_ns == os.stat(copy).st_mtime_ns):
                    wrong.append(copy)
        return wrong
