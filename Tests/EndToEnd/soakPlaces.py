"""Cards, disks and folders for a soak, with footage that comes and goes. `World` follows every change."""

import contextlib
import hashlib
import os
import shutil

from mountedDisk import MountedDisk
from soakModel import FOLDER, HIDDEN_COPIES, Failure, File, World

FOLDERS = ("", "DCIM/100CANON", "DCIM/101CANON", "PRIVATE/AVCHD", ".Trashes", "$RECYCLE.BIN")
NAMES = ("MVI_{:04}.MOV", "C{:04}.MP4", "mvi_{:04}.mov", "GX{:06}.mp4", "Ñu {}.mkv", "<b>{}.mts", "100%2 {}.avi")
JUNK = ("MVI_{:04}.THM", "nota {}.txt", ".C{:04}.MP4")
MANY = 40  # videos in a store


def entry_of(path):
    status = os.lstat(path)
    with open(path, "rb") as file:
        return File(status.st_size, status.st_mtime_ns, hashlib.file_digest(file, "sha1").digest())


class Places:
    """`enter` is a function that enters a context."""

    def __init__(self, folder, dice, enter):
        self.dice = dice
        self.number = 0
        self.folder = folder
        self.time = 1_600_000_000
        disks = []
        for name, kind in (("eos", "ntfs"), ("archivo", "ntfs"), ("viejo", "ext4")):
            (folder / name).mkdir(parents=True)
            disks.append(enter(MountedDisk(folder / name, kind, mebibytes=96)))
        self.card, self.archive, self.old = disks
        self.pullable = [self.card, self.archive]
        self.projects = folder / "Proyectos"
        self.cameras = [str(place) for place in (self.card.place, self.card.place / "DCIM", folder / "Movil")]
        self.pair = ["100% <b>lista", "Boda Marta"]  # adjacent in a folder dialog
        self.stores = [str(place) for place in (self.archive.place / "Archivo 2026", self.old.place / "Disco B",
                                                *(self.projects / name for name in self.pair), folder / "Movil")]
        for place in (*self.cameras, *self.stores):
            os.makedirs(place, exist_ok=True)
        self.world = World({})
        self.allowed, self.leftovers = {}, False
        self.world.entries = self.look()
        for _ in range(20):
            self.add_video(fresh=True)

    def look(self):
        """Everything that can be read: files with their content, and folders."""
        entries = {}
        for here, folders, files in os.walk(self.folder):
            folders[:] = [name for name in folders if not self.world.is_dead(os.path.join(here, name))]
            entries.update((os.path.join(here, name), FOLDER) for name in folders)
            paths = [os.path.join(here, name) for name in files]
            entries.update((path, entry_of(path)) for path in paths if not path.endswith(".image"))
        return entries

    def expected(self):
        """The same, as it must be."""
        return {path: entry for path, entry in self.world.entries.items()
                if path.startswith(f"{self.folder}/") and not self.world.is_dead(path)}

    def disk_of(self, path):
        return next((disk for disk in self.pullable if path.startswith(f"{disk.place}")), None)

    def alive(self, places):
        """Those that exist and can be read."""
        return [place for place in places if not self.world.is_dead(place) and place in self.world.entries]

    def write(self, path, size):
        self.time += 1
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(self.dice.randbytes(min(size, 50_000)))
            file.truncate(size)
            os.utime(file.fileno(), (self.time, self.time))
            os.fsync(file.fileno())
        self.world.make_folder(os.path.dirname(path))
        self.world.entries[path] = entry_of(path)
        return f"write {path} of {size} bytes"

    def remove(self, path):
        os.unlink(path)
        del self.world.entries[path]
        return f"remove {path}"

    def size(self):
        size = self.dice.choice((0, 1, 999, self.dice.randrange(2, 60_000), self.dice.randrange(2, 60_000), 3_217_000))
        return size + (size > 1 and size % 500 == 0)  # between two whole kilobytes rounding is a matter of taste

    def fresh_name(self, patterns):
        self.number += 1
        return self.dice.choice(patterns).format(self.number)

    def files(self, roots):
        return [path for root in self.alive(roots) for path in self.world.files() if path.startswith(root + "/")]

    def add_video(self, fresh=False):
        """To a camera, sometimes with a name that is there already, in another folder or with another size."""
        roots = self.alive([self.cameras[0], self.cameras[2]])
        folder = os.path.join(self.dice.choice(roots), self.dice.choice(FOLDERS)).rstrip("/")
        known = [os.path.basename(path) for path in self.files(self.cameras)]
        reuse = self.dice.random() < 0.3 and known and not fresh
        path = f"{folder}/{self.dice.choice(known) if reuse else self.fresh_name(NAMES)}"
        return self.write(path, self.size())

    def add_junk(self):
        root = self.dice.choice(self.alive(self.cameras + self.stores))
        return self.write(f"{root}/{self.fresh_name(JUNK)}", self.size())

    def add_extra(self):
        """A video that is on no camera."""
        return self.write(f"{self.dice.choice(self.alive(self.stores))}/Extra/{self.fresh_name(NAMES)}", self.size())

    def remove_video(self):
        files = self.files([self.dice.choice((self.cameras[0], *self.stores))])
        return self.remove(self.dice.choice(files)) if files else None

    def change_copy(self):
        """Another program writes to a file in a store."""
        files = self.files(self.stores)
        return self.write(self.dice.choice(files), self.size()) if files else None

    def remove_folder(self):
        """A chosen folder goes, or comes back."""
        folder = str(self.projects / self.pair[1])
        if folder not in self.world.entries:
            os.makedirs(folder)
            self.world.make_folder(folder)
            return f"make {folder}"
        shutil.rmtree(folder)
        self.forget(folder)
        return f"remove {folder}"

    def forget(self, folder):
        for path in [path for path in self.world.entries if path == folder or path.startswith(folder + "/")]:
            del self.world.entries[path]

    def thin_out(self):
        """Empties what has become full; returns what it has emptied."""
        full = [place for place in self.alive(self.stores + self.cameras[:1]) if len(self.files([place])) > MANY]
        for path in self.files(full):
            if path in self.world.entries:
                self.remove(path)
        return full and f"empty {full}"

    def pull(self, disk):
        disk.pull()
        self.world.dead.add(str(disk.place))

    def insert(self, disk):
        disk.unmount("-l")
        disk.mount()
        self.world.dead.discard(str(disk.place))
        self.settle()

    def would_copy(self, plan):
        """Whether it would write any file."""
        trial = World(dict(self.world.entries))
        trial.dead = self.world.dead
        with contextlib.suppress(Failure):
            trial.copy(plan)
        return len(trial.files()) > len(self.world.files())

    def allow(self, entries, destination):
        """A copy that was interrupted may have left any of these files. Once its destination can be read again, it has
        left them or not; a disk that was pulled may also hold a copy that was under way."""
        self.allowed = entries
        self.leftovers = self.world.is_dead(destination)
        if not self.leftovers:
            self.settle()

    def settle(self):
        """Takes over what is there of the files that are allowed. All others must be there, unchanged."""
        real, expected = self.look(), self.expected()
        assert not expected.keys() - real.keys(), f"lost: {sorted(expected.keys() - real.keys())}"
        for path, entry in real.items():
            known = entry in (expected.get(path), self.allowed.get(path))
            assert known or self.leftovers and path.endswith(HIDDEN_COPIES), f"changed: {path}"
        self.world.entries.update(real)
        if not self.leftovers or not self.world.dead:
            self.allowed, self.leftovers = {}, False
