"""File systems that fail, and what a run tells of it, for the cases of a whole run."""
import glob
import os
import shutil
import socket
import subprocess
import tempfile
import time

from fixture import ALL_COPIED, ONLOOKER, PREFIX, ROOT, WholeRun, read
from write_config import SourceFolder, config_folder, map_drive

FAULTY_FS = os.path.join(PREFIX, "faulty_fs")
# The long forms, which ./test leaves out.
LONG = os.environ.get("VARDEKO_LONG")
# What makes a file system, how it is mounted, and how after a power cut, beside the system that failed.
FILE_SYSTEMS = {
    "xfs": (["mkfs.xfs", "-q"], "", "nouuid"),
    "ext4": (["mkfs.ext4", "-q"], "noauto_da_alloc", "noauto_da_alloc"),
    "btrfs": (["mkfs.btrfs", "-q"], "", ""),
    "vfat": (["mkfs.vfat"], "utf8", "utf8"),
}
MEBIBYTE = 1 << 20

mounted = []


class Watcher:
    """Unmounts everything when this program is gone, however it ended: what stays mounted is in everybody's way."""
    process = None

    @classmethod
    def watch(cls, where):
        if cls.process is None:
            script = 'trap "" INT TERM HUP; tac | while IFS= read -r place; do umount -l "$place"; done'
            cls.process = subprocess.Popen(["sh", "-c", script], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                                           stderr=subprocess.DEVNULL, start_new_session=True)
        cls.process.stdin.write(f"{where}\n".encode())
        cls.process.stdin.flush()


def build_faulty_fs():
    flags = subprocess.run(["pkg-config", "--cflags", "--libs", "fuse3"], capture_output=True, text=True, check=True)
    subprocess.run(["g++", "-std=c++20", "-O1", "-Wall", "-Wextra", "-Werror",
                    os.path.join(ROOT, "tests", "faults", "faulty_fs.cpp"), "-o", FAULTY_FS, *flags.stdout.split()],
                   check=True)


def unmount(where):
    mounted.remove(where)
    # A program that has just ended may hold a file of it for a moment.
    for _ in range(50):
        if subprocess.run(["umount", where], capture_output=True, check=False).returncode == 0:
            return
        time.sleep(0.1)
    subprocess.run(["umount", "-l", where], check=False)


def mount(device, where, options=""):
    """Mounts an image; the reason why not, or an empty text."""
    os.makedirs(where, exist_ok=True)
    Watcher.watch(where)
    done = subprocess.run(["mount", "-o", f"loop,{options}".rstrip(","), device, where],
                          capture_output=True, text=True, check=False)
    if done.returncode == 0:
        mounted.append(where)
        return ""
    return done.stderr.partition("\n")[0]


class FaultyFs:
    """A mounted tests/faults/faulty_fs.cpp, which names its commands."""

    def __init__(self, backing, where, kept_seconds=0):
        os.makedirs(where)
        Watcher.watch(where)
        self.where = where
        self.control = os.path.join(PREFIX, f"faulty_fs.{len(mounted)}")
        if os.path.exists(self.control):
            os.unlink(self.control)
        errors = tempfile.TemporaryFile()
        self.process = subprocess.Popen([FAULTY_FS, backing, where, self.control, str(kept_seconds)],
                                        stdin=subprocess.DEVNULL,
                                        stderr=errors)
        while not os.path.exists(self.control):
            if self.process.poll() is not None:
                errors.seek(0)
                raise OSError(errors.read().decode())
            time.sleep(0.01)
        mounted.append(where)

    def tell(self, *words):
        with socket.socket(socket.AF_UNIX) as peer:
            peer.connect(self.control)
            peer.sendall("\t".join(str(word) for word in words).encode())
            answer = b""
            while part := peer.recv(65536):
                answer += part
        if answer.startswith(b"error"):
            raise ValueError(f"{words}: {answer.decode()}")
        return answer.decode()

    def counts(self):
        return {kind: int(number) for kind, number in map(str.split, self.tell("counts").splitlines())}

    def created(self):
        return self.tell("created").splitlines()

    def close(self):
        unmount(self.where)
        try:
            self.process.wait(5)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()


class Disk:
    """A file system in an image on a disk of its own, and copies of the image as power cuts leave it."""

    def __init__(self, folder, kind, mebibytes=320):
        self.folder, self.kind, self.cuts = folder, kind, 0
        make, options, self.after_cut = FILE_SYSTEMS[kind]
        os.makedirs(folder)
        # There an image is copied in one moment, whatever is being written to it.
        outer = os.path.join(folder, "outer.img")
        self.outer = os.path.join(folder, "outer")
        self.where = os.path.join(folder, "inner")
        self.image = os.path.join(self.outer, "image")
        self.problem = self.make(["mkfs.xfs", "-q"], outer, 8 * mebibytes) or mount(outer, self.outer)
        self.problem = self.problem or self.make(make, self.image, mebibytes) or mount(self.image, self.where, options)
        if os.path.isdir(lost := os.path.join(self.where, "lost+found")):
            os.rmdir(lost)

    @staticmethod
    def make(command, image, mebibytes):
        with open(image, "wb") as file:
            file.truncate(mebibytes * MEBIBYTE)
        done = subprocess.run([*command, image], capture_output=True, text=True, check=False)
        return done.stderr.strip() if done.returncode else ""

    def cut(self):
        """The image as it is now, in mid-work."""
        self.cuts += 1
        path = os.path.join(self.outer, f"cut {self.cuts}")
        subprocess.run(["cp", "--reflink=always", self.image, path], check=True)
        return path

    def close(self):
        """Leaves the cuts."""
        if self.where in mounted:
            unmount(self.where)

    def open_cut(self, path):
        """Starts up again: the folder in which the file system is mounted, its log replayed."""
        if problem := mount(path, self.where, self.after_cut):
            raise OSError(problem)
        return self.where

    def remove(self):
        self.close()
        if self.outer in mounted:
            unmount(self.outer)
        shutil.rmtree(self.folder)


class Run:
    """What came of a run: the exit code, the files it wrote, and every line it told somewhere."""

    def __init__(self, code, written, lines):
        self.code, self.written, self.lines = code, written, lines


def told(run, *needles):
    """Whether one row of the window, or one line of a log, names them all."""
    return any(all(needle in line for needle in needles) for line in run.lines)


class FaultRun(WholeRun):
    """Where self.nas or self.source is behind a faulty file system, these name the folder behind it."""
    def setUp(self):
        super().setUp()
        self.disks, self.systems = [], []

    def tearDown(self):
        for system in self.systems:
            system.close()
        for disk in self.disks:
            disk.remove()
        super().tearDown()

    def faulty(self, letter):
        """A faulty file system over what that drive is now."""
        if not os.access("/dev/fuse", os.W_OK) or os.geteuid() != 0:
            self.skipTest("no file system with faults can be mounted here: that takes root and /dev/fuse")
        if not os.path.exists(FAULTY_FS):
            build_faulty_fs()
        folder = {"n": self.nas, "q": self.source}[letter]
        try:
            self.systems.append(FaultyFs(folder, os.path.join(self.work, f"mount {letter}")))
        except OSError as error:
            self.skipTest(f"no file system with faults can be mounted here: {error}")
        map_drive(PREFIX, letter, self.systems[-1].where)
        return self.systems[-1]

    def disk(self, kind):
        """A file system of that kind as drive N:."""
        if os.geteuid() != 0:
            self.skipTest("no file system can be mounted here: that takes root")
        # In memory, where that is to be had: scripts/wine.sh puts that folder there.
        (temporary,) = glob.glob(os.path.join(PREFIX, "drive_c", "users", "*", "Temp"))
        disk = Disk(os.path.join(os.path.realpath(temporary), f"{self._testMethodName[:40]} {len(self.disks)}"), kind)
        self.disks.append(disk)
        if disk.problem:
            self.skipTest(f"{kind} cannot be mounted here: {disk.problem}")
        self.forget()
        self.nas = disk.where
        map_drive(PREFIX, "n", self.nas)
        return disk

    def empty_folder(self, name):
        path = os.path.join(self.work, name)
        os.makedirs(path)
        return path

    def forget(self):
        """The program has never run here: what it remembers of destinations is gone, too."""
        shutil.rmtree(config_folder(PREFIX), ignore_errors=True)
        self.configure(SourceFolder("Q:\\Daten"))

    def empty_nas(self):
        self.forget()
        for name in os.listdir(self.nas):
            shutil.rmtree(os.path.join(self.nas, name))

    def make_many(self, number, folders=1, content="first", age=3600, start=0):
        """Files of some KB, dated an age in seconds ago; their paths."""
        modified = time.time_ns() - age * 10**9
        files = [f"Daten/{index % folders}/{index:03}.txt" for index in range(start, start + number)]
        for path in files:
            self.make(path, f"{content} {path} ".encode() * 200, modified)
        return files

    def log_files(self):
        return set(glob.glob(os.path.join(config_folder(PREFIX), "Log", "*.txt")))

    def error_log(self):
        lines = []
        for path in glob.glob(os.path.join(self.nas, "*", "Error.log")):
            lines += read(path).decode().splitlines()
        return lines

    def listen(self, expected=ALL_COPIED, via=()):
        """One run, with an onlooker at its window. expected: the exit code; None for any."""
        logs, errors = self.log_files(), len(self.error_log())
        onlooker = subprocess.Popen(["wine", ONLOOKER, "rows"], stdin=subprocess.DEVNULL,
                                    stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        try:
            written = self.run_program(None, via)
        finally:
            lines = onlooker.communicate(timeout=60)[0].decode().replace("\r", "").splitlines()
        for path in self.log_files() - logs:
            lines += read(path).decode("utf-8-sig").splitlines()
        lines += self.error_log()[errors:]
        if expected is not None:
            self.assertEqual(self.code, expected, "exit code; told: " + " | ".join(lines[-12:]))
        return Run(self.code, written, lines)

    def assert_told(self, run, *needles):
        self.assertTrue(told(run, *needles), f"{needles} in no line of {run.lines[-30:]}")

    def is_backed_up(self, path):
        copy = self.copy(path)
        return os.path.exists(copy) and read(copy) == read(os.path.join(self.source, path))

    def versions(self):
        return [path for path in self.copies() if " #" in path]
