"""A process whose allocations fail when they are told to."""

import mmap
import os
import struct

LIBRARY = "tests/failing_memory.so"
FORM = "<4i"  # as in tests/prove/failing_memory.cc
NEVER = 0x7FFFFFFF


class Memory:
    def __init__(self, build, directory):
        self.path = os.path.join(directory, "shortage")
        self.library = os.path.join(build, LIBRARY)
        with open(self.path, "wb") as file:
            file.write(bytes(struct.calcsize(FORM)))
        self.file = open(self.path, "r+b")
        self.page = mmap.mmap(self.file.fileno(), 0)

    def close(self):
        self.page.close()
        self.file.close()

    def environment(self):
        return {"LD_PRELOAD": self.library, "MEMORY_SHORTAGE": self.path}

    def begin(self, number, for_good=False):
        """The allocation of this number fails, from 1 on."""
        struct.pack_into("<i", self.page, 8, 0)
        struct.pack_into("<i", self.page, 4, for_good)
        struct.pack_into("<i", self.page, 0, number)

    def end(self):
        """How many have failed."""
        struct.pack_into("<i", self.page, 0, 0)
        return struct.unpack_from("<i", self.page, 8)[0]

    def count(self):
        """Counts from here on; see counted()."""
        self.begin(NEVER)

    def counted(self):
        (left,) = struct.unpack_from("<i", self.page, 0)
        self.end()
        return NEVER - left

    def live(self):
        return struct.unpack_from("<i", self.page, 12)[0]
