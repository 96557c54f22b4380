"""Writes the program's two configuration files into a Wine prefix.

It shares no code with the program, and so checks the program's reading of both formats.

usage: write_config.py PREFIX DESTINATION SOURCE...
       both as the program shall see them, for instance N: and Z:\\home\\me
"""
import os
import struct
import sys
from dataclasses import dataclass

FIELDS = (  # name, type code, size
    ("Aktive", 5, 2),
    ("Directory", 1, 255),
    ("Rekursiv", 5, 2),
    ("Extensions", 1, 255),
    ("ExtensionMode", 1, 5),
    ("History", 5, 2),
    ("Hidden", 5, 2),
)


@dataclass
class SourceFolder:
    Directory: str
    Aktive: bool = True
    Rekursiv: bool = True
    Extensions: str = ""
    ExtensionMode: str = "NO"
    History: bool = False
    Hidden: bool = False


def table_header():
    data = b"Ver" + struct.pack("<di", 1.91, len(FIELDS))
    for name, kind, size in FIELDS:
        data += struct.pack("<ihh", size, kind, len(name) + 1) + name.encode("ascii") + b"\0"
    return data


def table_file(rows):
    data = table_header()
    for row in rows:
        for name, kind, _ in FIELDS:
            value = getattr(row, name)
            if kind == 1:
                text = value.encode("cp1252")
                data += struct.pack("<Bi", 1, len(text)) + text
            else:
                data += struct.pack("<BH", 1, value)
    return data


def settings_file(destination):
    return f"[CONFIG]\r\nNASDIR={destination}\r\nCONNECT=0\r\n".encode("cp1252")


def config_folder(prefix):
    return os.path.join(prefix, "drive_c", "ProgramData", "Vardeko")


def write_config(prefix, destination, rows):
    """rows: SourceFolder each; None leaves "NASConf.Dat" away."""
    folder = config_folder(prefix)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, "NASConf.ini"), "wb") as file:
        file.write(settings_file(destination))
    table = os.path.join(folder, "NASConf.Dat")
    if rows is not None:
        with open(table, "wb") as file:
            file.write(table_file(rows))
    elif os.path.exists(table):
        os.unlink(table)


def map_drive(prefix, letter, folder):
    """Makes a folder a drive of the prefix."""
    link = os.path.join(prefix, "dosdevices", letter.lower() + ":")
    if os.path.lexists(link):
        os.unlink(link)
    os.symlink(folder, link)


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    write_config(sys.argv[1], sys.argv[2], [SourceFolder(name) for name in sys.argv[3:]])
