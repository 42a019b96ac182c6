"""A disk whose power can be cut: memory behind a loop device. It takes writes as the kernel hands them
on, one after the other; from one moment on it takes none, and what it has taken is what it keeps.

A disk may also lose what it was not asked to flush; see the states that are made of traces for that."""

import ctypes
import errno
import fcntl
import os
import shutil
import struct
import subprocess

SIZE = 16 << 20
BLOCK = 4096
TOOLS = ("mkfs.ext4", "mkfs.ext2", "e2fsck", "mount", "umount", "sync")
CLONE_NEWNS = 0x00020000  # unshare(2)
LOOP_CONFIGURE, LOOP_CTL_GET_FREE, LO_FLAGS_AUTOCLEAR = 0x4C0A, 0x4C82, 4  # linux/loop.h
LOOP_CONFIG = "<II QQQQQ IIII 64s64s32s QQ 64x"  # struct loop_config
F_ADD_SEALS, F_SEAL_FUTURE_WRITE = 1033, 0x0010  # fcntl(2)
ATTEMPTS = 100
CORRECTED = 1  # exit status of e2fsck(8)


class NoDisk(Exception):
    """This machine can have no such disk; says why."""


def keep_mounts_private():
    """From now on all that this thread, its threads and its children mount is gone with them, and so
    are the loop devices. Raises NoDisk."""
    for tool in TOOLS:
        if not shutil.which(tool):
            raise NoDisk(f"there is no {tool}")
    if ctypes.CDLL(None, use_errno=True).unshare(CLONE_NEWNS) != 0:
        raise NoDisk("no mounts of its own: " + os.strerror(ctypes.get_errno()))
    try:
        command(["mount", "--make-rprivate", "/"])
        os.close(Disk().attach()[0])
    except (OSError, RuntimeError) as error:
        raise NoDisk(f"no loop device: {error}") from None


def command(words, accepted=(0,)):
    done = subprocess.run(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode not in accepted:
        raise RuntimeError(f"{' '.join(words)}: {done.stdout.strip()}")


class Disk:
    def __init__(self, content=None):
        """`content`: another one's."""
        self.memory = os.memfd_create("disk", os.MFD_CLOEXEC | os.MFD_ALLOW_SEALING)
        os.ftruncate(self.memory, SIZE)
        if content:
            os.pwrite(self.memory, content, 0)

    def attach(self):
        """A loop device that is free again as soon as nobody has it open: the descriptor, and its
        path."""
        for _ in range(ATTEMPTS):
            control = os.open("/dev/loop-control", os.O_RDWR | os.O_CLOEXEC)
            number = fcntl.ioctl(control, LOOP_CTL_GET_FREE)
            os.close(control)
            device = os.open(f"/dev/loop{number}", os.O_RDWR | os.O_CLOEXEC)
            try:
                fcntl.ioctl(device, LOOP_CONFIGURE, struct.pack(
                    LOOP_CONFIG, self.memory, BLOCK, 0, 0, 0, 0, 0, 0, 0, 0, LO_FLAGS_AUTOCLEAR,
                    b"", b"", b"", 0, 0))
                return device, f"/dev/loop{number}"
            except OSError as error:
                os.close(device)
                if error.errno != errno.EBUSY:  # somebody was faster
                    raise
        raise OSError(errno.EBUSY, "all loop devices are taken at once")

    def format(self, kind):
        device, path = self.attach()
        try:
            command(["mkfs." + kind, "-q", "-b", str(BLOCK), path])
        finally:
            os.close(device)

    def mount(self, kind, place):
        """Looks after the file system first, as a machine does when it starts."""
        device, path = self.attach()
        try:
            command(["e2fsck", "-y", path], (0, CORRECTED))
            command(["mount", "-t", kind, path, place])
        finally:
            os.close(device)

    def cut(self):
        """The power: no write that has not begun is taken any more."""
        fcntl.fcntl(self.memory, F_ADD_SEALS, F_SEAL_FUTURE_WRITE)

    def content(self):
        return os.pread(self.memory, SIZE, 0)

    def close(self):
        os.close(self.memory)
