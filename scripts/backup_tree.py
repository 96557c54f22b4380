"""What a backup of a folder has to look like, seen from outside of the program."""
import hashlib
import os
import re
import stat
import struct
import time
from dataclasses import dataclass, field

OWN_FILES = ("Vardeko.dat", "Error.log")
# Not possible in a Windows name. The bytes that are not UTF-8 are surrogates here.
FOREIGN = re.compile(r'[<>:"|?*\\\x00-\x1f\ud800-\udfff]|[. ]$|^(con|prn|aux|nul|com\d|lpt\d)(\.|$)', re.I)


@dataclass
class Source:
    """The files of a folder as the program sees them: paths below the folder, "/" between the names."""
    files: list = field(default_factory=list)
    folders: int = 0
    size: int = 0
    foreign: list = field(default_factory=list)  # names that Windows cannot have, or not tell apart
    dot_folders: int = 0
    special: int = 0  # pipes, sockets, devices, links to nowhere, and folders that must not be read


def walk_source(root):
    """Follows links to folders, as the program does, but not back to where it came from."""
    found = Source()
    spellings = {}

    def walk(folder, relative, ancestors):
        try:
            with os.scandir(folder) as listing:
                entries = sorted(listing, key=lambda entry: entry.name)
        except OSError:
            found.special += 1
            return
        found.folders += 1
        for entry in entries:
            path = relative + entry.name
            try:
                status = entry.stat()
            except OSError:
                found.special += 1
                continue
            if stat.S_ISDIR(status.st_mode):
                identity = status.st_dev, status.st_ino
                if entry.name.startswith("."):
                    found.dot_folders += 1
                elif FOREIGN.search(entry.name):
                    found.foreign.append(path)
                elif identity not in ancestors:
                    walk(entry.path, path + "/", ancestors | {identity})
            elif not stat.S_ISREG(status.st_mode):
                found.special += 1
            elif FOREIGN.search(entry.name):
                found.foreign.append(path)
            else:
                spellings.setdefault(path.upper(), []).append((path, status.st_size))

    status = os.stat(root)
    walk(root, "", {(status.st_dev, status.st_ino)})
    for files in spellings.values():
        if len(files) > 1:
            found.foreign += [path for path, _ in files]
        else:
            path, size = files[0]
            found.files.append(path)
            found.size += size
    return found


def snapshot(folder):
    """Every file of a backup with what changes when it is written: path -> (inode, times, size)."""
    state = {}
    for at, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(at, name)
            status = os.lstat(path)
            state[os.path.relpath(path, folder)] = (
                status.st_ino, status.st_mtime_ns, status.st_ctime_ns, status.st_size)
    return state


def written(before, after):
    """The copies that are new or were replaced between two snapshots."""
    return sorted(path for path, state in after.items()
                  if before.get(path) != state and os.path.basename(path) not in OWN_FILES)


def difference(source, copy):
    """Why a copy does not equal its source; None when it does."""
    try:
        ours = os.stat(copy)
    except OSError:
        return "is missing"
    theirs = os.stat(source)
    if ours.st_size != theirs.st_size:
        return f"has {ours.st_size} bytes, the source {theirs.st_size}"
    # File times are counted in 100 ns on Windows.
    if ours.st_mtime_ns // 100 != theirs.st_mtime_ns // 100:
        return f"is dated {ours.st_mtime_ns // 100}, the source {theirs.st_mtime_ns // 100} (100 ns)"
    with open(source, "rb") as left, open(copy, "rb") as right:
        while block := left.read(1 << 20):
            if block != right.read(1 << 20):
                return "has other bytes"
    return None


def path_hash(windows_path):
    return hashlib.sha256(windows_path.encode("utf-16-le")).hexdigest().upper()


def table_time(nanoseconds):
    """A file's time as the hash table holds it: local milliseconds, 1 January of year 1 being day 1."""
    seconds, rest = divmod(nanoseconds, 10**9)
    local = seconds + time.localtime(seconds).tm_gmtoff
    days_to_1970 = 25569 + 693594
    return float((days_to_1970 * 86400 + local) * 1000 + rest // 10**6)


def read_hash_table(path):
    """The hash table's records as a list of (hash, time)."""
    with open(path, "rb") as file:
        data = file.read()
    header = b"Ver" + struct.pack("<di", 1.91, 2) + struct.pack("<ihh", 64, 1, 5) + b"HASH\0" \
        + struct.pack("<ihh", 8, 11, 6) + b"Datum\0"
    if not data.startswith(header):
        raise ValueError("the header is not that of a hash table")
    records = []
    for has_hash, length, text, has_date, date in struct.iter_unpack("<Bi64sBd", data[len(header):]):
        if (has_hash, length, has_date) != (1, 64, 1):
            raise ValueError(f"record {len(records)} is damaged")
        records.append((text.decode("ascii"), date))
    return records
