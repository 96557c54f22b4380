"""A source, a destination and the real program for the cases of a whole run."""
import contextlib
import os
import shutil
import subprocess
import sys
import time
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path[:0] = [os.path.join(ROOT, "scripts"), os.path.join(ROOT, "tests")]

import backup_tree  # noqa: E402
from program import Program  # noqa: E402
from write_config import SourceFolder, config_folder, map_drive, write_config  # noqa: E402

PREFIX = os.environ["WINEPREFIX"]
WORK = os.path.join(PREFIX, "whole_run")
# Where there is no compiler, one that was built before.
ONLOOKER = os.environ.get("VARDEKO_ONLOOKER") or os.path.join(PREFIX, "onlooker.exe")
# No run here has more to do than some seconds; what takes longer hangs.
RUN_SECONDS = 90
ALL_COPIED, SOME_FAILED, NOT_STARTED, FOLDER_MISSING, BAD_COPIES = 0, 1, 2, 3, 4


def build_onlooker():
    if "VARDEKO_ONLOOKER" in os.environ:
        return
    subprocess.run(["x86_64-w64-mingw32-g++-posix", "-std=c++20", "-O1", "-static", "-municode",
                    os.path.join(ROOT, "tests", "whole_run", "onlooker.cpp"), "-o", ONLOOKER], check=True)


def write(path, content=b"x", modified_ns=None):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.write(content)
    if modified_ns is not None:
        os.utime(path, ns=(modified_ns, modified_ns))


def read(path):
    with open(path, "rb") as file:
        return file.read()


def sparse_file(path, size, end):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as file:
        file.seek(size - len(end))
        file.write(end)


def local_ns(*moment):
    """A moment of this zone's calendar (year, month, day, hour, minute, second) in file-time nanoseconds."""
    return int(time.mktime((*moment, 0, 0, -1))) * 10**9


class WholeRun(unittest.TestCase):
    """Each test has a source Q:\\ and a destination N:\\ of its own."""

    def setUp(self):
        self.work = os.path.join(WORK, self.id().split(".")[-1])
        self.source = os.path.join(self.work, "source")
        self.nas = os.path.join(self.work, "NAS")
        os.makedirs(self.source)
        os.makedirs(self.nas)
        map_drive(PREFIX, "q", self.source)
        map_drive(PREFIX, "n", self.nas)
        shutil.rmtree(config_folder(PREFIX), ignore_errors=True)
        self.configure(SourceFolder("Q:\\Daten"))

    def tearDown(self):
        shutil.rmtree(self.work)

    def configure(self, *rows, destination="N:"):
        write_config(PREFIX, destination, rows)

    def make(self, path, *content):
        write(os.path.join(self.source, path), *content)

    @property
    def host(self):
        """The folder of this computer in the destination."""
        (name,) = os.listdir(self.nas)
        return os.path.join(self.nas, name)

    def copies(self):
        """The files in the backup of drive Q:, without the folder Daten."""
        top = os.path.join(self.host, "drive_Q", "Daten")
        return sorted(os.path.relpath(os.path.join(at, name), top)
                      for at, _, names in os.walk(top) for name in names)

    def copy(self, path):
        return os.path.join(self.host, "drive_Q", path)

    @contextlib.contextmanager
    def held_open(self, path):
        """Another Windows program has the file of that Windows path open and shares it with nobody."""
        holder = subprocess.Popen(["wine", ONLOOKER, "hold", path], stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.assertEqual(holder.stdout.readline().strip(), b"held")
        try:
            yield
        finally:
            holder.communicate(timeout=20)

    @contextlib.contextmanager
    def computer_name(self, name):
        """The computer has that name meanwhile."""
        key = ["HKLM\\System\\CurrentControlSet\\Control\\ComputerName\\ComputerName", "/v", "ComputerName"]

        def rename(to):
            subprocess.run(["wine", "reg", "add", *key, "/d", to, "/f"], capture_output=True, check=True)

        found = subprocess.run(["wine", "reg", "query", *key], capture_output=True, check=True).stdout
        before = found.split()[-1].decode()
        rename(name)
        try:
            yield
        finally:
            rename(before)

    def run_program(self, expected=ALL_COPIED, via=(), switches=("/COPY",)):
        """One run; the copies it wrote, as paths below the folder of drive Q:.

        expected: its exit code; None for any.
        Leaves its exit code in self.code, what it said on its standard error in self.errors."""
        before = backup_tree.snapshot(self.nas)
        program = Program(*switches, via=via)
        code = program.wait(RUN_SECONDS)
        if code is None:
            program.close()
            self.fail(f"the program did not end within {RUN_SECONDS} s")
        self.code = code
        self.errors = program.error_text()
        if expected is not None:
            self.assertEqual(code, expected, f"exit code; {self.errors}")
        written = backup_tree.written(before, backup_tree.snapshot(self.nas))
        return sorted(path.split("drive_Q/", 1)[-1] for path in written)

    def run_that_stays_open(self, seconds=5):
        """A run that cannot begin: the program shows why and waits for its user, who closes the window."""
        program = Program("/COPY")
        self.assertIsNone(program.wait(seconds), "the program ended by itself")
        self.assertIsNotNone(program.window())
        self.assertIsNotNone(program.close(), "the window could not be closed")

    def assert_backed_up(self, files):
        for path in files:
            reason = backup_tree.difference(os.path.join(self.source, path), self.copy(path))
            self.assertIsNone(reason, f"the copy of {path} {reason}")

    def assert_hash_table_names(self, files):
        """The hash table holds exactly these files, each with the date of its source."""
        table = os.path.join(self.host, "Vardeko.dat")
        self.assertEqual(os.path.getsize(table), 42 + 78 * len(files))
        expected = {}
        for path in files:
            date = os.stat(os.path.join(self.source, path)).st_mtime_ns
            expected[backup_tree.path_hash("Q:\\" + path.replace("/", "\\"))] = backup_tree.table_time(date)
        self.assertEqual(dict(backup_tree.read_hash_table(table)), expected)

    def left_beside(self):
        """Files that a run makes for itself and must not leave."""
        return [name for _, _, names in os.walk(self.nas) for name in names
                if name.endswith(".vardeko") or name.endswith(".new")]
