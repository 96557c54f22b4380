"""The measurements of ./bench, one group after the other, and one table of what came of them.

usage: scripts/in_wine.sh python3 scripts/bench.py [GROUP...]     or: bench.py --list
"""
import collections
import contextlib
import os
import re
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass

from bench_trees import DATED, Trees
from program import Program
from write_config import SourceFolder, map_drive, write_config

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
NATIVE = os.path.join(ROOT, "build", "native-release", "bin")
WINDOWS = os.path.join(ROOT, "build", "windows-x64-bench", "bin")
PROGRAM = os.path.join(WINDOWS, "Vardeko.exe")
ROUNDS = 5
FAR_ROUNDS = 3
# The longest single measurement takes two minutes on a quiet machine; what takes longer than this hangs.
LONGEST = 400


@dataclass
class Row:
    """One row: our figures against another side's, round by round, and the mark for their ratio."""
    what: str
    unit: str
    ours: list
    against: str = ""
    theirs: list = ()
    mark: float = None  # the most that ours / theirs may be; without the other side, that ours may be

    def cells(self):
        def spread(values):
            return f"{statistics.median(values):.4g} ({min(values):.4g}-{max(values):.4g})"
        judged = [ours / theirs for ours, theirs in zip(self.ours, self.theirs)] if self.theirs else self.ours
        met = "" if self.mark is None else "yes" if statistics.median(judged) <= self.mark else "NO"
        return [self.what, f"{spread(self.ours)} {self.unit}",
                f"{self.against} {spread(self.theirs)}" if self.theirs else self.against,
                spread(judged) if self.theirs else "",
                "" if self.mark is None else f"{self.mark:.4g}", met]


def run(command):
    """Runs a command; its output, and how long it took. What Wine leaves running keeps a pipe open for
    minutes, so the output goes to a file."""
    with tempfile.TemporaryFile() as output:
        began = time.monotonic()
        code = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                              timeout=LONGEST, check=False).returncode
        seconds = time.monotonic() - began
        output.seek(0)
        text = output.read().decode("utf-8", "replace").replace("\r", "")
    if code != 0:
        raise RuntimeError(f"{' '.join(command)} ended with {code}:\n{text}")
    return text, seconds


def samples(command):
    """The values that a measuring program tells, by row and side."""
    text, _ = run(command)
    found = collections.defaultdict(list)
    for row, side, value in re.findall(r"^sample (\S+) (\S+) (\S+)$", text, re.M):
        found[row, side].append(float(value))
    for line in text.splitlines():
        if line and not line.startswith("sample "):
            print("   ", line, flush=True)
    return found


def wine_samples(name, *arguments):
    return samples(["wine", os.path.join(WINDOWS, name + ".exe"), *map(str, arguments)])


def table(trees):
    names = {"load": ("load", "ns/record"), "find": ("look up", "ns"), "update": ("insert or update", "ns"),
             "snapshot": ("snapshot with first change", "ms"), "save": ("save", "ms")}
    for millions in (1, 10):
        found = samples([os.path.join(NATIVE, "hash_table_bench"), str(millions * 10**6), str(ROUNDS),
                         trees.top])
        for row, (text, unit) in names.items():
            for peer in ("unordered_map", "sqlite_memory", "sqlite_disk"):
                yield Row(f"hash table {millions} M: {text}", unit, found[row, "ours"], peer, found[row, peer],
                          1.0)
        for peer in ("unordered_map", "sqlite_memory"):
            yield Row(f"hash table {millions} M: memory", "bytes/record", found["bytes", "ours"], peer,
                      found["bytes", peer])
        yield Row(f"hash table {millions} M: memory", "bytes/record", found["bytes", "ours"], mark=110)


def scan(trees):
    files = 100_000
    trees.make_with_backup(files)
    place = trees.folder(files), trees.backup(files), trees.host
    found = wine_samples("scan_bench", *place, ROUNDS)
    yield Row("no-change scan, 100,000 files", "us/file", found["scan", "ours"], "bare listings",
              found["scan", "floor"], 1.5)
    yield Row("  hashing alone", "us/file", found["scan", "hashing"], "bare listings", found["scan", "floor"])
    ours, xcopy, rsync = [], [], []
    destination = trees.destination(files)
    for _ in range(ROUNDS):
        ours.append(run(["wine", os.path.join(WINDOWS, "scan_bench.exe"), *place, "once"])[1])
        windows_destination = f"{trees.backup(files)}\\{trees.host}\\drive_S\\T{files}"
        xcopy.append(run(["wine", "xcopy", trees.folder(files), windows_destination, "/D", "/S", "/Y"])[1])
        rsync.append(run(["rsync", "-a", os.path.join(trees.source, f"T{files}", ""), destination])[1])
    yield Row("  the same as a program of its own", "s", ours, "xcopy /D /S /Y", xcopy, 1 / 4)
    yield Row("  the same", "s", ours, "native rsync -a", rsync)
    trees.remove(files)


def small_files(trees):
    """A source of 20,000 files of 2 KB; whoever uses it removes it."""
    trees.make(20_000, b"x" * 2048)
    return trees.folder(20_000)


def calls(trees):
    found = wine_samples("run_bench", "calls", small_files(trees), "N:")
    trees.remove(20_000)
    trees.empty_nas()
    yield Row("calls to the destination, no-change run", "per file", found["calls_unchanged", "ours"], mark=0.02)
    yield Row("calls to the destination, copying", "per file", found["calls_copied", "ours"])
    yield Row("far NAS, 1 ms a call, 20,000 unchanged files", "s", found["far", "ours"], "a question per file",
              found["far", "peer"], 1 / 20)


def copy(trees):
    found = wine_samples("run_bench", "copy", small_files(trees), "N:", ROUNDS)
    trees.remove(20_000)
    trees.empty_nas()
    yield Row("copying 20,000 files of 2 KB, window shown", "us/file", found["copy", "ours"],
              "bare calls of a safe copy", found["copy", "floor"], 1.15)


def large(trees):
    path = os.path.join(trees.source, "LARGE.BIN")
    with open(path, "wb") as file:
        for _ in range(1024):
            file.write(os.urandom(1 << 20))
    os.utime(path, (DATED, DATED))
    found = wine_samples("run_bench", "large", "S:\\LARGE.BIN", "N:", ROUNDS)
    os.unlink(path)
    yield Row("copying 1 GiB", "s", found["large", "ours"], "bare calls of a safe copy",
              found["large", "floor"], 1.03)


def verify(trees):
    for files, size in ((10_000, 16 << 10), (100, 4 << 20)):
        trees.make_with_backup(files, b"x" * size)
        found = wine_samples("verify_bench", trees.folder(files), trees.backup(files), trees.host, ROUNDS)
        trees.remove(files)
        yield Row(f"checking {files:,} files of {size >> 10:,} KB, eight at a time", "s", found["check", "ours"],
                  "bare reading of both sides", found["check", "floor"], 1.15)
    files = 400
    trees.make_with_backup(files, b"x" * 2048, per_folder=2)
    found = collections.defaultdict(list)
    for _ in range(FAR_ROUNDS):
        far_away = wine_samples("verify_bench", trees.folder(files), trees.backup(files), trees.host, "slept")
        for key, values in far_away.items():
            found[key] += values
    trees.remove(files)
    yield Row("check of 200 folders of two files, slept 2 ms a call", "s", found["slept_check", "ours"],
              "one at a time", found["slept_check", "one"], 1 / 6)


def peak_memory_of_run(trees, files):
    """A no-change run of the real program: the most of it that was in memory, in MiB, and its seconds."""
    write_config(os.environ["WINEPREFIX"], trees.backup(files), [SourceFolder(trees.folder(files))])
    began = time.monotonic()
    program = Program("/COPY", path=PROGRAM)
    peak = 0
    while program.wait(0.05) is None:
        try:
            with open(f"/proc/{program.process.pid}/status", encoding="ascii", errors="replace") as status:
                found = re.search(r"VmHWM:\s+(\d+) kB", status.read())
            peak = max(peak, int(found.group(1)) if found else 0)
        except OSError:
            pass
        if time.monotonic() - began > LONGEST:
            program.process.kill()
            raise RuntimeError("the program does not end")
    if program.process.returncode != 0:
        raise RuntimeError(f"the program ended with {program.process.returncode}")
    return peak / 1024, time.monotonic() - began


def growth(trees):
    sizes = (10_000, 100_000, 1_000_000)
    for files in sizes:
        trees.make_with_backup(files)
    times = collections.defaultdict(list)
    for _ in range(ROUNDS):
        for files in sizes:
            found = wine_samples("scan_bench", trees.folder(files), trees.backup(files), trees.host, "once")
            times[files] += [microseconds / files for microseconds in found["scan", "ours"]]
    for smaller, files in zip(sizes, sizes[1:]):
        yield Row(f"no-change scan, {files:,} files", "us/file", times[files], f"{smaller:,} files",
                  times[smaller], 1.15)
    peak, seconds = peak_memory_of_run(trees, 1_000_000)
    for files in sizes:
        trees.remove(files)
    yield Row("the program's memory, no-change run of 1,000,000 files", "MiB", [peak], mark=300)
    yield Row("  that run, from start to end", "s", [seconds])


def start(trees):
    write_config(os.environ["WINEPREFIX"], "N:", [SourceFolder("S:\\NONE")])
    found = wine_samples("startup_bench", PROGRAM, 4 * ROUNDS)
    yield Row("from start to a window that answers", "ms", found["start", "ours"])
    yield Row("size of the program", "MiB", [os.path.getsize(PROGRAM) / 2**20])


def slept(trees):
    """At a NAS's distance: each call to the destination sleeps 2 ms in the thread that makes it."""
    files = 2000
    trees.make_with_backup(files, b"x" * 2048, per_folder=2)
    place = trees.folder(files), trees.backup(files), trees.host
    found = collections.defaultdict(list)
    for _ in range(FAR_ROUNDS):
        for key, values in wine_samples("scan_bench", *place, "slept").items():
            found[key] += values
    found |= wine_samples("run_bench", "slept", trees.folder(files), "N:", FAR_ROUNDS)
    trees.remove(files)
    trees.empty_nas()
    for what, key in (("no-change scan", "slept_scan"), ("first run", "slept_run")):
        yield Row(f"{what}, 2,000 files in 1,000 folders, slept 2 ms a call", "s", found[key, "ours"],
                  "one at a time", found[key, "one"], 1 / 6)


def far(trees, files=200, rounds=FAR_ROUNDS):
    """The same with a file system over the destination whose calls take 2 ms each."""
    sys.path.insert(0, os.path.join(ROOT, "tests", "whole_run"))
    from fault_fixture import FaultyFs, build_faulty_fs  # which wants a prefix to work in
    trees.make_with_backup(files, b"x" * 2048, per_folder=2)
    build_faulty_fs()
    mount = os.path.join(trees.top, "FAR")
    # As long as a client of a network share keeps what it was told.
    system = FaultyFs(trees.nas, mount, kept_seconds=1)
    source = os.path.join(trees.source, f"T{files}", "")
    peers = {"xcopy /D /S /Y": ["wine", "xcopy", trees.folder(files), "N:\\XCOPY{}\\", "/D", "/S", "/Y"],
             "native rsync -a": ["rsync", "-a", source, f"{mount}/RSYNC{{}}"],
             "native rclone copy --transfers 8": ["rclone", "copy", "--transfers", "8", source,
                                                  f"{mount}/RCLONE{{}}"]}
    found = collections.defaultdict(list)
    try:
        map_drive(os.environ["WINEPREFIX"], "n", mount)
        system.tell("delay", 2)
        for turn in range(rounds):
            scans = wine_samples("scan_bench", trees.folder(files), trees.backup(files), trees.host, "far")
            runs = wine_samples("run_bench", "first", trees.folder(files), f"N:\\TURN{turn}", 1)
            for key, values in (scans | runs).items():
                found[key] += values
            for name, command in peers.items():
                found["first_run", name].append(run([word.format(turn) for word in command])[1])
    finally:
        map_drive(os.environ["WINEPREFIX"], "n", trees.nas)
        with contextlib.suppress(OSError):  # who is told to end in the middle finds it gone
            system.tell("delay", 0)
        system.close()
    trees.remove(files)
    trees.empty_nas()
    what = f"{files:,} files in {files // 2:,} folders, a file system of 2 ms a call"
    yield Row(f"no-change scan, {what}", "s", found["far_scan", "ours"], "bare listings, eight at a time",
              found["far_scan", "floor"], 1.5)
    yield Row("  the same", "s", found["far_scan", "ours"], "one at a time", found["far_scan", "one"])
    yield Row(f"first run, {what}", "s", found["first_run", "ours"], "bare safe copies, eight at a time",
              found["first_run", "floor"], 1.3)
    for name in peers:
        yield Row("  the same", "s", found["first_run", "ours"], name, found["first_run", name],
                  1 / 2 if name.startswith("xcopy") else None)


def long_far(trees):
    """The same with ten times as many files, each side once: some ten minutes."""
    yield from far(trees, files=2000, rounds=1)


GROUPS = {group.__name__: group for group in (table, scan, calls, copy, large, verify, growth, start, slept, far)}
LONG_GROUPS = {"long-far": long_far}  # only when asked for by name


def print_table(rows):
    lines = [["row", "ours: median (min-max)", "against", "ratio", "at most", "met"]]
    lines += [row.cells() for row in rows]
    widths = [max(len(line[column]) for line in lines) for column in range(len(lines[0]))]
    for line in lines:
        print("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())


def main(names):
    known = GROUPS | LONG_GROUPS
    unknown = [name for name in names if name not in known]
    if unknown:
        print(f"There is no group {' '.join(unknown)}; the groups are {' '.join(known)}.")
        return 64
    began = time.monotonic()
    top = tempfile.mkdtemp(prefix="VARDEKO-", dir="/dev/shm")
    rows = []
    try:
        trees = Trees(top, socket.gethostname().split(".")[0].upper()[:15])
        map_drive(os.environ["WINEPREFIX"], "s", trees.source)
        map_drive(os.environ["WINEPREFIX"], "n", trees.nas)
        for name in names or GROUPS:
            print(f"-- {name} ({time.monotonic() - began:.0f} s)", flush=True)
            rows += known[name](trees)
    finally:
        shutil.rmtree(top, ignore_errors=True)
        print_table(rows)
        print(f"It took {time.monotonic() - began:.0f} s.")
    return 0


if __name__ == "__main__":
    if sys.argv[1:2] == ["--list"]:
        print("\n".join(GROUPS | LONG_GROUPS))
        sys.exit(0)
    # Whoever ends the measuring shall find no trees left in memory.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    sys.exit(main(sys.argv[1:]))
