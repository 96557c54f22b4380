"""Trees in memory for the measurements: a source, its finished backup and the hash table of it.

Folders hold 100 entries and are spelled as the program asks for them: any other name Wine looks up by
reading the whole folder, which Windows does not.
"""
import os
import shutil
import struct
import time

import backup_tree

PER_FOLDER = 100
DATED = int(time.mktime((2020, 6, 1, 12, 0, 0, 0, 0, -1)))
EMPTY_TABLE = b"Ver" + struct.pack("<di", 1.91, 2) + struct.pack("<ihh", 64, 1, 5) + b"HASH\0" \
    + struct.pack("<ihh", 8, 11, 6) + b"Datum\0"


class Trees:
    """The drives S: and N: of the measurements, in one folder of a memory file system."""

    def __init__(self, top, host):
        self.top = top
        self.source = os.path.join(top, "SOURCE")
        self.nas = os.path.join(top, "NAS")
        self.host = host
        for folder in (self.source, self.nas):
            os.makedirs(folder)

    def folder(self, files):
        """The source folder with so many files, by its Windows path."""
        return f"S:\\T{files}"

    def backup(self, files):
        """The destination of that folder's backup, by its Windows path."""
        return f"N:\\C{files}"

    def destination(self, files):
        """The folder's place in that backup, by its path here."""
        return os.path.join(self.nas, f"C{files}", self.host, "drive_S", f"T{files}")

    def make(self, files, content=b"", per_folder=PER_FOLDER):
        """A source of so many files; its names, as paths below it."""
        names = []
        top = os.path.join(self.source, f"T{files}")
        for folder in range(files // per_folder):
            below = os.path.join(f"GROUP {folder // PER_FOLDER:03}", f"FOLDER {folder % PER_FOLDER:03}")
            os.makedirs(os.path.join(top, below))
            names += [os.path.join(below, f"FILE {number:07}.TXT")
                      for number in range(folder * per_folder, (folder + 1) * per_folder)]
        fill(top, names, content)
        return names

    def make_with_backup(self, files, content=b"", per_folder=PER_FOLDER):
        """A source of so many files with its backup and hash table: nothing is to be copied."""
        names = self.make(files, content, per_folder)
        for folder in {os.path.dirname(name) for name in names}:
            os.makedirs(os.path.join(self.destination(files), folder))
        fill(self.destination(files), names, content)
        prefix = self.folder(files) + "\\"
        date = struct.pack("<Bd", 1, backup_tree.table_time(DATED * 10**9))
        hashes = sorted(backup_tree.path_hash(prefix + name.replace("/", "\\")) for name in names)
        with open(os.path.join(self.nas, f"C{files}", self.host, "Vardeko.dat"), "wb") as table:
            table.write(EMPTY_TABLE)
            table.writelines(struct.pack("<Bi", 1, 64) + text.encode("ascii") + date for text in hashes)

    def remove(self, files):
        for top in (os.path.join(self.source, f"T{files}"), os.path.join(self.nas, f"C{files}")):
            shutil.rmtree(top, ignore_errors=True)

    def empty_nas(self):
        shutil.rmtree(self.nas)
        os.makedirs(self.nas)


def fill(top, names, content):
    for name in names:
        path = os.path.join(top, name)
        with open(path, "wb", buffering=0) as file:
            if content:
                file.write(content)
        os.utime(path, (DATED, DATED))
