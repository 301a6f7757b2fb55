"""A slow but healthy stick with a file system in user space."""

import mmap
import os
import struct
import subprocess

from desktop import wait_for
from janitor import ends_with_this_process
from mountedDisk import DIRECT_IO, loop_device

MAKERS = {"exfat": ["mkfs.exfat"], "ntfs": ["mkfs.ntfs", "-q", "-Q", "-F"]}
DRIVERS = {"exfat": ["mount.exfat-fuse", "-d"], "ntfs": ["ntfs-3g", "-o", "no_detach"]}
CONTROL_SIZE = 4096
BYTES_PER_SECOND = 8 * 8  # its offset in the control file of the fault disk


class SlowStick:
    """A context manager, for use after `take_private_view`. `program` is the tests' fault disk. The stick is kept in
    memory that is mounted at `folder`."""

    def __init__(self, program, kind, folder, mebibytes=400):
        self.folder = folder
        folder.mkdir()
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={mebibytes + 1}m", "none", str(folder)], check=True)
        self.program = program
        self.kind = kind
        self.place = self.folder / "stick"
        self.served = self.folder / "served"
        for place in (self.place, self.served):
            place.mkdir()
        for name, size in (("image", mebibytes << 20), ("control", CONTROL_SIZE)):
            with open(self.folder / name, "wb") as file:
                file.truncate(size)
        subprocess.run([*MAKERS[kind], str(self.folder / "image")], check=True, stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)
        with open(self.folder / "control", "r+b") as file:
            self.control = mmap.mmap(file.fileno(), CONTROL_SIZE)
        self.processes = []

    def __enter__(self):
        self.launch([self.program, *(str(self.folder / name) for name in ("image", "served", "control"))])
        wait_for((self.served / "disk").exists, "the stick to be served")
        with loop_device(self.served / "disk", DIRECT_IO) as device:
            self.launch([*DRIVERS[self.kind], device, str(self.place)])
            wait_for(lambda: os.path.ismount(self.place), "the stick to be mounted")
        return self

    def launch(self, command):
        self.processes.append(subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                               stderr=subprocess.DEVNULL, preexec_fn=ends_with_this_process()))

    def __exit__(self, *_):
        self.limit(0)
        subprocess.run(["umount", str(self.place)], check=False)
        self.processes.pop().wait()
        subprocess.run(["umount", "-l", str(self.served)], check=False)
        self.processes.pop().wait()
        self.control.close()
        subprocess.run(["umount", "-l", str(self.folder)], check=False)

    def limit(self, megabytes_per_second):
        """Limits its speed from now on; 0 means no limit."""
        self.control[BYTES_PER_SECOND:BYTES_PER_SECOND + 8] = struct.pack("=Q", megabytes_per_second * 1_000_000)
