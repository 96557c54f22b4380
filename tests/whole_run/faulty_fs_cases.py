"""The file system with faults keeps what it promises: cases that rest on it would show nothing else."""
import errno
import os

from fault_fixture import FaultRun
from fixture import read, write


class FaultyFsCases(FaultRun):
    def setUp(self):
        super().setUp()
        self.system = self.faulty("n")
        self.file = os.path.join(self.system.where, "Ordner", "ä.txt")
        write(self.file, b"x" * 9000, 1_700_000_001_500_000_000)

    def error_of(self, action, *arguments):
        try:
            action(*arguments)
        except OSError as error:
            return error.errno
        return 0

    def write_and_flush(self, path):
        with open(path, "wb", 0) as file:
            file.write(b"y" * 100)
            os.fsync(file.fileno())

    def test_times_names_and_attributes(self):
        self.assertEqual(os.stat(self.file).st_mtime_ns, 1_700_000_001_500_000_000)
        for step, seconds in ((1, 1_700_000_001), (2, 1_700_000_000)):
            self.system.tell("times", step)
            self.assertEqual(os.stat(self.file).st_mtime_ns, seconds * 10**9)
        self.system.tell("apart", 1)
        self.assertEqual(os.listdir(os.path.dirname(self.file)), ["a\u0308.txt"])
        self.assertEqual(read(os.path.join(self.system.where, "Ordner", "a\u0308.txt")), read(self.file))

    def test_calls_that_fail(self):
        self.system.tell("fail", "open", 2, 1, errno.EACCES, "ä")
        self.assertEqual([self.error_of(read, self.file) for _ in range(3)], [0, errno.EACCES, 0])
        self.system.tell("down", errno.ENODEV, 0, "/Ordner")
        self.assertEqual(self.error_of(os.stat, self.file), errno.ENODEV)
        self.assertEqual(self.error_of(os.stat, self.system.where), 0)
        self.system.tell("up")
        self.system.tell("when", "open", 1, "/", "down", errno.EIO, 50, "/")
        self.assertEqual(self.error_of(read, self.file), errno.EIO)
        while self.error_of(read, self.file):
            pass
        self.system.tell("bad", "/Ordner/ä.txt", 4096)
        with open(self.file, "rb", 0) as file:
            self.assertEqual(len(file.read(9000)), 4096)
            self.assertEqual(self.error_of(file.read, 1), errno.EIO)
        self.assertGreater(self.system.counts()["open"], 4)

    def test_space_listings_and_lost_writes(self):
        new = os.path.join(self.system.where, "Ordner", "neu.txt")
        self.system.tell("room", 0)
        self.assertEqual(self.error_of(self.write_and_flush, new), errno.ENOSPC)
        self.system.tell("room", -1)
        self.assertEqual(self.error_of(self.write_and_flush, new), 0)
        self.system.tell("cut", "/Ordner", 1, errno.EIO)
        self.assertEqual(self.error_of(os.listdir, os.path.dirname(new)), errno.EIO)
        self.system.tell("lose", 1)
        self.assertEqual(self.error_of(self.write_and_flush, self.file), errno.EIO)
        self.assertEqual(self.error_of(write, self.file, b"z" * 50), errno.EIO)
        self.system.tell("lose", 0)
        self.assertEqual(read(self.file), bytes(50))
        self.system.tell("backing", self.source)
        self.assertEqual(os.listdir(self.system.where), [])
