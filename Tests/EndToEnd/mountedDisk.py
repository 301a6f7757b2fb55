"""Disks in files, mounted so that only this process and its children see them."""

import contextlib
import errno
import fcntl
import os
import signal
import struct
import subprocess
import unittest

from desktop import wait_for
from janitor import SYSTEM, ends_with_this_process

NEW_MOUNTS = 0x00020000
LOOP_CONFIGURE, LOOP_GET_FREE = 0x4C0A, 0x4C82
AUTOCLEAR, DIRECT_IO = 4, 16
MAKERS = {"ext4": ["mkfs.ext4", "-q", "-F"], "ntfs": ["mkfs.ntfs", "-q", "-Q", "-F"]}


def take_private_view():
    """To be called before anything is started. Skips the test if mounting is not allowed."""
    if SYSTEM.unshare(NEW_MOUNTS) != 0 or subprocess.run(["mount", "--make-rprivate", "/"], check=False).returncode != 0:
        raise unittest.SkipTest("SKIPPED: mounting file systems needs root")


@contextlib.contextmanager
def loop_device(image, flags=0):
    """The path of a block device over a file. The kernel detaches it once neither the `with` block nor a file system
    uses it, however this process ends."""
    with open(image, "r+b") as backing, open("/dev/loop-control", "rb") as control:
        configuration = struct.pack("=I56xI240x", backing.fileno(), AUTOCLEAR | flags)

        def take():
            device = open(f"/dev/loop{fcntl.ioctl(control, LOOP_GET_FREE)}", "r+b", buffering=0)
            try:
                fcntl.ioctl(device, LOOP_CONFIGURE, configuration)
            except OSError as error:
                device.close()
                if error.errno != errno.EBUSY:  # another process has taken it in the meantime
                    raise
                return None
            return device

        with wait_for(take, "a free loop device") as device:
            yield device.name


class MountedDisk:
    """A context manager. The driver of an `ntfs` disk is a program, which can be stopped or killed."""

    def __init__(self, folder, kind, mebibytes=256):
        if not all(os.access(device, os.R_OK | os.W_OK) for device in ("/dev/fuse", "/dev/loop-control")):
            raise unittest.SkipTest("SKIPPED: disks in files need FUSE and loop devices")
        self.kind = kind
        self.image = folder / f"{kind}.image"
        self.place = folder / f"{kind}-disk"
        self.place.mkdir()
        self.program = None
        with open(self.image, "wb") as image:
            image.truncate(mebibytes << 20)
        subprocess.run([*MAKERS[kind], str(self.image)], check=True, stdout=subprocess.DEVNULL)

    def __enter__(self):
        self.mount()
        return self

    def __exit__(self, *_):
        self.resume()
        self.unmount("-l")
        if self.program:
            self.program.wait()

    def mount(self):
        if self.kind == "ntfs":
            # A block device, like a real stick: without one it would count as a disk that other machines may write to.
            with loop_device(self.image) as device:
                self.program = subprocess.Popen(["ntfs-3g", "-o", "no_detach", device, str(self.place)],
                                                preexec_fn=ends_with_this_process())
                wait_for(lambda: os.path.ismount(self.place), "the disk to be mounted")
        else:
            subprocess.run(["mount", "-o", "loop", str(self.image), str(self.place)], check=True)

    def unmount(self, *options):
        """Returns the complaint of `umount`, if any."""
        return subprocess.run(["umount", *options, str(self.place)], capture_output=True, text=True, check=False).stderr

    def pull(self):
        """From now on every call fails."""
        self.program.kill()
        self.program.wait()

    def hang(self):
        """From now on no call returns."""
        self.program.send_signal(signal.SIGSTOP)

    def resume(self):
        if self.program:
            self.program.send_signal(signal.SIGCONT)
